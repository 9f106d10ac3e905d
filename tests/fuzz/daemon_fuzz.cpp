// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The C API with a hostile daemon. Input: a script of steps of the application and of the daemon,
// see kSteps. At its end everything is disabled. Then no thread, descriptor or socket of the
// library may be left. A call that does not return is a finding, too, see Watchdog.
#include <google/protobuf/stubs/logging.h>

#include <iterator>

#include "Application.h"
#include "ByteReader.h"
#include "Check.h"
#include "FuzzTarget.h"
#include "HostileDaemon.h"
#include "IpcFrame.h"
#include "ProcessState.h"
#include "RegisteredSockets.h"
#include "Watchdog.h"

namespace {

using Bytes = hostile::Bytes;
using Timeout = HostileDaemon::Timeout;

constexpr size_t kMostSteps = 64;
constexpr Timeout kMoment(10);  // for events that may never come
constexpr Timeout kAWhile(50);  // for events that usually come

struct Run {
  ByteReader input;
  HostileDaemon daemon;
  Application& application = Application::get();

  size_t service() { return input.byte() % Application::kServices; }
  Application::Action action(Application::Verb verb) {
    const size_t number = service();
    return {verb, number, verb == Application::Verb::Request ? input.byte() : uint8_t{0}};
  }
};

template <Application::Verb Verb>
void perform(Run& run) {
  run.application.perform(run.action(Verb));
}

// Repeats one request, more often than the buffer of a socket holds if the daemon does not read.
void burst(Run& run) {
  const Application::Action action = run.action(Application::Verb::Request);
  for (int left = 2 * run.input.byte(); left > 0; --left) run.application.perform(action);
}

void arm(Run& run) {
  const size_t service = run.service();
  const auto verb = static_cast<Application::Verb>(run.input.byte() % 5);
  run.application.arm(service, run.action(verb));
}

void awaitCallback(Run& run) { run.application.awaitCallback(run.service(), kMoment); }

Timeout patience(const Run& run) { return run.application.anyEnabled() ? kAWhile : Timeout(0); }
void serve(Run& run) { run.daemon.serve(patience(run)); }
void accept(Run& run) { run.daemon.accept(patience(run)); }

// A handshake record; most are complete.
void sendRecord(Run& run) {
  const uint8_t connection = run.input.byte();
  const int32_t type = run.input.byte() % 8;
  const int32_t id = static_cast<int8_t>(run.input.byte());
  Bytes bytes = hostile::record(type, id);
  const uint8_t size = run.input.byte();
  if (size >= 128) bytes.resize(size % 32);
  run.daemon.send(connection, bytes);
}

// One of the numbers that often cause faults.
uint64_t oddNumber(uint8_t choice) {
  constexpr uint64_t kNumbers[] = {0,
                                   1,
                                   3,
                                   4,
                                   5,
                                   47,
                                   48,
                                   105,
                                   0x7FFF,
                                   0x10000,
                                   0x7FFFFFFF,
                                   0x80000000,
                                   0xFFFFFFFF,
                                   0x100000005,
                                   0x7FFFFFFFFFFFFFFF,
                                   0x8000000000000000,
                                   0xFFFFFFFFFFFFFFD0,
                                   0xFFFFFFFFFFFFFFFF};
  return kNumbers[choice % std::size(kNumbers)];
}

Bytes frame(const ipcMsg_t& header, const Bytes& payload) {
  Bytes bytes(sizeof header);
  std::memcpy(bytes.data(), &header, sizeof header);
  bytes.insert(bytes.end(), payload.begin(), payload.end());
  return bytes;
}

// A frame. Each bit of a byte of the input makes one word of its header wrong.
void sendFrame(Run& run) {
  const uint8_t connection = run.input.byte();
  const uint8_t wrong = run.input.byte();
  ipcMsg_t header = {1, 105, 5, 0, 1, 0};
  if (wrong & 1) header.srcProcessId = oddNumber(run.input.byte());
  if (wrong & 2) header.dstProcessId = oddNumber(run.input.byte());
  if (wrong & 4) header.msgId = oddNumber(run.input.byte());
  if (wrong & 8) header.subsystemId = static_cast<int64_t>(oddNumber(run.input.byte()));
  if (wrong & 16) header.sessionId = oddNumber(run.input.byte());
  const Bytes payload = run.input.block();
  header.payloadLength = wrong & 32 ? oddNumber(run.input.byte()) : payload.size();
  run.daemon.send(connection, frame(header, payload));
}

// A frame with a service's blob. Only the content of the blob may be wrong.
void sendBlob(Run& run) {
  const uint8_t connection = run.input.byte();
  const uint8_t service = run.input.byte();
  Bytes payload{static_cast<uint8_t>(service < 128 ? 7 + service % 3 : service), 0, 0, 0};
  const Bytes blob = run.input.block();
  payload.insert(payload.end(), blob.begin(), blob.end());
  run.daemon.send(connection, frame({1, 105, 5, 0, 1, payload.size()}, payload));
}

void sendBytes(Run& run) {
  const uint8_t connection = run.input.byte();
  run.daemon.send(connection, run.input.block());
}
void drain(Run& run) { run.daemon.drain(run.input.byte(), kMoment); }
void closeOne(Run& run) { run.daemon.close(run.input.byte()); }
void shutDown(Run& run) {
  const uint8_t connection = run.input.byte();
  run.daemon.shutDown(connection, run.input.byte() % 3);
}

// The daemon stops listening, and removes its socket's file or not; or it listens again.
void changeListener(Run& run) {
  const uint8_t how = run.input.byte() % 4;
  if (how < 2) {
    run.daemon.stopListening(how == 0);
  } else {
    run.daemon.listen();
  }
  if (how % 2 == 1) run.daemon.closeAll();
}

// A step's number in a script is its index here. make_corpus.py has the same list.
void (*const kSteps[])(Run&) = {
    perform<Application::Verb::Enable>,
    perform<Application::Verb::Create>,
    perform<Application::Verb::Disable>,
    perform<Application::Verb::Destroy>,
    perform<Application::Verb::Request>,
    burst,
    arm,
    awaitCallback,
    serve,
    accept,
    sendRecord,
    sendFrame,
    sendBlob,
    sendBytes,
    drain,
    closeOne,
    shutDown,
    changeListener,
};

void play(const uint8_t* data, size_t size) {
  Run run{ByteReader(data, size), {}};
  run.daemon.listen();
  for (size_t count = 0; count < kMostSteps && !run.input.empty(); ++count)
    kSteps[run.input.byte() % std::size(kSteps)](run);
  // With a silent daemon, disable waits. Half of the inputs avoid that.
  if (size % 2 == 0) {
    run.daemon.stopListening(true);
    run.daemon.closeAll();
  }
  run.application.finish();
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  Watchdog::replaceAlarm();
  google::protobuf::SetLogHandler(nullptr);  // it would report each invalid text
  // The first use of the library starts the log's threads, which do not end.
  const uint8_t script[] = {0, 0};
  play(script, sizeof script);
  const Watchdog::Step step("the first end");
  FUZZ_CHECK(processstate::libraryThreadsEnd());
  Application::get().forget();
  return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const size_t descriptors = processstate::descriptors();
  play(data, size);
  const Watchdog::Step step("the library's end");
  FUZZ_CHECK(processstate::libraryThreadsEnd());
  FUZZ_CHECK(comesTo([] { return !processstate::socketsRegistered(); }));
  FUZZ_CHECK(processstate::descriptorsComeBackTo(descriptors));
  Application::get().forget();
  return 0;
}
