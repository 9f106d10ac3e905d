// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "RecordingPlatform.h"

#include <android/log.h>
#include <cutils/properties.h>
#include <diag/diag.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <condition_variable>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <mutex>

namespace {

constexpr size_t kDiagHeaderSize = 12;

struct State {
  std::mutex mutex;  // guards all members below
  std::condition_variable changed;
  std::vector<recording::Line> lines;
  std::map<std::string, std::string> properties;
  bool diagListening = false;
  bool diagAllocFails = false;
  std::vector<recording::Packet> packets;
  const diagpkt_user_table_type* table = nullptr;
  size_t tableRegistrations = 0;
  size_t diagInitCalls = 0;
};

State& state() {
  static State* const instance = new State;
  return *instance;
}

using Lock = std::unique_lock<std::mutex>;

thread_local unsigned workDepth = 0;

struct Work {
  Work() { ++workDepth; }
  Work(const Work&) = delete;
  Work& operator=(const Work&) = delete;
  ~Work() { --workDepth; }
};

std::string formatText(const char* format, va_list args) {
  va_list again;
  va_copy(again, args);
  const int size = std::vsnprintf(nullptr, 0, format, args);
  std::string text(size > 0 ? static_cast<size_t>(size) : 0, '\0');
  std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

// A packet that is not sent yet: the header as the diagnostic library fills it, then the caller's
// body.
struct PendingPacket {
  uint16_t length;
  uint16_t code;
  uint8_t timestamp[8];
};
static_assert(sizeof(PendingPacket) == kDiagHeaderSize, "the header of a diagnostic packet");

}  // namespace

namespace recording {

void clear() {
  State& s = state();
  Lock lock(s.mutex);
  s.lines.clear();
  s.packets.clear();
}

std::vector<Line> lines() {
  Lock lock(state().mutex);
  return state().lines;
}

std::vector<std::string> texts() {
  std::vector<std::string> result;
  for (Line& line : lines()) result.push_back(std::move(line.text));
  return result;
}

bool has(const std::string& text) { return count(text) > 0; }

bool hasEndingWith(const std::string& tail) {
  const std::vector<std::string> all = texts();
  return std::any_of(all.begin(), all.end(), [&tail](const std::string& text) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
  });
}

size_t count(const std::string& text) {
  const std::vector<std::string> all = texts();
  return static_cast<size_t>(std::count(all.begin(), all.end(), text));
}

bool waitFor(const std::function<bool(const Line&)>& predicate, std::chrono::milliseconds timeout) {
  State& s = state();
  Lock lock(s.mutex);
  return s.changed.wait_until(lock, std::chrono::system_clock::now() + timeout, [&] {
    return std::any_of(s.lines.begin(), s.lines.end(), predicate);
  });
}

void setProperty(const std::string& key, const std::string& value) {
  Lock lock(state().mutex);
  state().properties[key] = value;
}

void clearProperties() {
  Lock lock(state().mutex);
  state().properties.clear();
}

void setDiagListening(bool listening) {
  Lock lock(state().mutex);
  state().diagListening = listening;
}

void setDiagAllocFails(bool fails) {
  Lock lock(state().mutex);
  state().diagAllocFails = fails;
}

std::vector<Packet> packets() {
  Lock lock(state().mutex);
  return state().packets;
}

bool waitForPackets(size_t count, std::chrono::milliseconds timeout) {
  State& s = state();
  Lock lock(s.mutex);
  return s.changed.wait_until(lock, std::chrono::system_clock::now() + timeout,
                              [&] { return s.packets.size() >= count; });
}

DiagTable diagTable() {
  State& s = state();
  Lock lock(s.mutex);
  DiagTable copy{};
  copy.registrations = s.tableRegistrations;
  if (s.table == nullptr) return copy;
  copy.delayFlag = s.table->delay_flag;
  copy.commandCode = s.table->cmd_code;
  copy.subsystemId = s.table->subsys_id;
  copy.entryCount = s.table->count;
  copy.processorId = s.table->proc_id;
  copy.firstCode = s.table->user_table[0].cmd_code_lo;
  copy.lastCode = s.table->user_table[0].cmd_code_hi;
  return copy;
}

size_t diagInitCalls() {
  Lock lock(state().mutex);
  return state().diagInitCalls;
}

int callDiagCommand(const std::vector<uint8_t>& request) {
  void* (*handler)(void*, uint16_t) = nullptr;
  {
    Lock lock(state().mutex);
    if (state().table != nullptr) handler = state().table->user_table[0].func_ptr;
  }
  if (handler == nullptr) return -1;
  std::vector<uint8_t> copy(request);
  void* const data = copy.empty() ? nullptr : copy.data();
  return handler(data, static_cast<uint16_t>(copy.size())) == nullptr ? 0 : 1;
}

bool isWorking() { return workDepth > 0; }

}  // namespace recording

extern "C" {

int __android_log_print(int prio, const char* tag, const char* fmt, ...) {
  const Work work;
  va_list args;
  va_start(args, fmt);
  recording::Line line{prio, tag != nullptr, tag != nullptr ? tag : "", formatText(fmt, args),
                       static_cast<pid_t>(syscall(SYS_gettid))};
  va_end(args);
  const int size = static_cast<int>(line.text.size());
  State& s = state();
  Lock lock(s.mutex);
  s.lines.push_back(std::move(line));
  s.changed.notify_all();
  return size;
}

int property_get(const char* key, char* value, const char* default_value) {
  const Work work;
  Lock lock(state().mutex);
  const auto found = state().properties.find(key);
  const std::string text = found != state().properties.end() ? found->second
                           : default_value != nullptr        ? default_value
                                                             : "";
  return std::snprintf(value, PROPERTY_VALUE_MAX, "%s", text.c_str());
}

int8_t property_get_bool(const char* key, int8_t default_value) {
  const Work work;
  char value[PROPERTY_VALUE_MAX];
  property_get(key, value, "");
  const std::string text(value);
  for (const char* yes : {"1", "y", "yes", "on", "true"})
    if (text == yes) return 1;
  for (const char* no : {"0", "n", "no", "off", "false"})
    if (text == no) return 0;
  return default_value;
}

boolean Diag_LSM_Init(unsigned char*) {
  Lock lock(state().mutex);
  ++state().diagInitCalls;
  return 1;
}

void diagpkt_tbl_reg(const diagpkt_user_table_type* table) {
  Lock lock(state().mutex);
  state().table = table;
  ++state().tableRegistrations;
}

boolean log_status(log_code_type) {
  Lock lock(state().mutex);
  return state().diagListening ? 1 : 0;
}

void* log_alloc(log_code_type code, unsigned int length) {
  Lock lock(state().mutex);
  if (state().diagAllocFails || length < kDiagHeaderSize) return nullptr;
  void* const packet = std::malloc(length);
  const PendingPacket header{static_cast<uint16_t>(length), code, {}};
  std::memcpy(packet, &header, sizeof header);
  // Not zeroed on purpose: the caller must fill every byte of its body.
  std::memset(static_cast<uint8_t*>(packet) + sizeof header, 0xA5, length - sizeof header);
  return packet;
}

void log_commit(void* packet) {
  const Work work;
  PendingPacket header;
  std::memcpy(&header, packet, sizeof header);
  const uint8_t* const body = static_cast<const uint8_t*>(packet) + sizeof header;
  recording::Packet copy{header.code, {body, body + header.length - sizeof header}};
  std::free(packet);
  State& s = state();
  Lock lock(s.mutex);
  s.packets.push_back(std::move(copy));
  s.changed.notify_all();
}

}  // extern "C"
