// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include <cstring>
#include <utility>

#include "orbsim/Handshake.h"
#include "orbsim/Trace.h"

namespace orbsim {
namespace {

constexpr size_t kDaemonRecordSize = 8;
constexpr int kRecords = 2;  // from the daemon; the client sends one

struct Step {
  const char* name;
  int32_t type;
};
constexpr Step kToClientSteps[] = {{"init", kHandshakeInit}, {"complete", kHandshakeComplete}};
constexpr Step kToDaemonSteps[] = {{"response", kHandshakeResp}};

uint32_t wordAt(const Blob& bytes, size_t offset) {
  uint32_t word = 0;
  std::memcpy(&word, bytes.data() + offset, sizeof(word));
  return word;
}

void dropFirst(Blob& bytes, size_t count) {
  bytes.erase(bytes.begin(), bytes.begin() + static_cast<std::ptrdiff_t>(count));
}

void keepUndecoded(TraceItem& item, std::string reason, Blob bytes) {
  item.reason = std::move(reason);
  item.size = bytes.size();
  item.bytes = std::move(bytes);
}

// Decodes the payload of a frame.
void decodePayload(TraceItem& item, const Blob& payload) {
  // The upper half of the word is ignored.
  if (static_cast<uint32_t>(item.header.messageId) != kSendBlobMessageId) {
    keepUndecoded(item, "no such message", payload);
  } else if (payload.size() < sizeof(uint32_t)) {
    keepUndecoded(item, "shorter than the number of a service", payload);
  } else {
    item.sdkType = wordAt(payload, 0);
    const Blob blob(payload.begin() + sizeof(uint32_t), payload.end());
    std::string reason;
    if (!decodeTraceMessage(*item.sdkType, item.direction, blob, item.message, reason))
      keepUndecoded(item, reason, blob);
  }
}

}  // namespace

Tracer::Tracer(uint32_t connection, int process, TraceSink sink)
    : mConnection(connection), mProcess(process), mSink(std::move(sink)) {}

void Tracer::take(Direction direction, const uint8_t* data, size_t size) {
  const std::lock_guard<std::mutex> lock(mLock);
  Stream& fed = stream(direction);
  fed.bytes.insert(fed.bytes.end(), data, data + size);
  while (takeOne(direction, fed)) {
  }
}

// If no thread is passing items, this thread passes all items, also those that other threads add
// meanwhile.
void Tracer::tell() {
  std::unique_lock<std::mutex> lock(mLock);
  if (mTelling) return;
  mTelling = true;
  while (!mItems.empty()) {
    const std::vector<TraceItem> items = std::exchange(mItems, {});
    lock.unlock();
    for (const TraceItem& each : items) mSink(each);
    lock.lock();
  }
  mTelling = false;
}

void Tracer::skipHandshake() {
  const std::lock_guard<std::mutex> lock(mLock);
  for (Stream& each : mStreams) each.records = kRecords;
}

void Tracer::end(Direction direction) {
  {
    const std::lock_guard<std::mutex> lock(mLock);
    Stream& ended = stream(direction);
    if (ended.bytes.empty() && ended.toSkip == 0) return;
    TraceItem last = item(direction, TraceItem::Kind::kBytes);
    keepUndecoded(last, "the connection ended within a record or frame",
                  std::exchange(ended.bytes, Blob{}));
    ended.toSkip = 0;
    mItems.push_back(std::move(last));
  }
  tell();
}

bool Tracer::takeOne(Direction direction, Stream& from) {
  skip(from);
  const int records = direction == Direction::kToClient ? kRecords : kRecords - 1;
  return from.records < records ? takeRecord(direction, from) : takeFrame(direction, from);
}

void Tracer::skip(Stream& from) {
  if (from.toSkip == 0) return;
  const size_t count =
      from.toSkip < from.bytes.size() ? static_cast<size_t>(from.toSkip) : from.bytes.size();
  dropFirst(from.bytes, count);
  from.toSkip -= count;
}

bool Tracer::takeRecord(Direction direction, Stream& from) {
  const bool response = direction == Direction::kToDaemon;
  const size_t size = response ? HandshakeReply::kSize : kDaemonRecordSize;
  if (from.bytes.size() < size) return false;
  const Step& step = response ? kToDaemonSteps[0] : kToClientSteps[from.records];
  ++from.records;
  const auto type = static_cast<int32_t>(wordAt(from.bytes, 0));
  if (type == step.type) {
    mSession = wordAt(from.bytes, 4);
    if (response) mEndpoint = wordAt(from.bytes, 8);
  }
  TraceItem record = item(direction, TraceItem::Kind::kHandshake);
  record.step = step.name;
  if (type != step.type) {
    record.kind = TraceItem::Kind::kBytes;
    keepUndecoded(record,
                  "a record of type " + std::to_string(type) + " where the handshake's " +
                      step.name + " (" + std::to_string(step.type) + ") was expected",
                  Blob(from.bytes.begin(), from.bytes.begin() + static_cast<std::ptrdiff_t>(size)));
  }
  dropFirst(from.bytes, size);
  mItems.push_back(std::move(record));
  return true;
}

bool Tracer::takeFrame(Direction direction, Stream& from) {
  if (from.bytes.size() < Header::kSize) return false;
  Header header;
  std::memcpy(&header, from.bytes.data(), Header::kSize);
  const bool tooLong = header.payloadLength > kMaxPayload;
  const size_t length = tooLong ? 0 : static_cast<size_t>(header.payloadLength);
  if (from.bytes.size() < Header::kSize + length) return false;
  TraceItem frame = item(direction, TraceItem::Kind::kFrame);
  frame.header = header;
  frame.session = header.sessionId;
  frame.endpoint = direction == Direction::kToDaemon ? header.source : header.destination;
  if (tooLong) {
    frame.reason = "too long to be decoded";
    frame.size = header.payloadLength;
    from.toSkip = header.payloadLength;
  } else {
    const auto start = from.bytes.begin() + static_cast<std::ptrdiff_t>(Header::kSize);
    decodePayload(frame, Blob(start, start + static_cast<std::ptrdiff_t>(length)));
  }
  dropFirst(from.bytes, Header::kSize + length);
  mItems.push_back(std::move(frame));
  return true;
}

TraceItem Tracer::item(Direction direction, TraceItem::Kind kind) const {
  TraceItem made;
  made.time = std::chrono::system_clock::now();
  made.direction = direction;
  made.connection = mConnection;
  made.process = mProcess;
  made.endpoint = mEndpoint;
  made.session = mSession;
  made.kind = kind;
  return made;
}

}  // namespace orbsim
