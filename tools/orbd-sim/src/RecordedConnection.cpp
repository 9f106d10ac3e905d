// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "RecordedConnection.h"

#include <algorithm>
#include <cstring>
#include <map>

#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"
#include "orbsim/Handshake.h"

namespace orbsim {
namespace {

constexpr size_t kDaemonRecordSize = 8;
// An event number that answers no request.
constexpr uint64_t kNoAnswer = ~uint64_t{0};

template <class Message>
bool readKey(const Blob& blob, MessageKey& key) {
  Message message;
  if (!message.ParseFromArray(blob.data(), static_cast<int>(blob.size()))) return false;
  key.event = static_cast<uint64_t>(message.event_id());
  key.transaction = message.transaction_id();
  return true;
}

template <class Request, class Answer>
bool readKey(Direction direction, const Blob& blob, MessageKey& key) {
  return direction == Direction::kToDaemon ? readKey<Request>(blob, key)
                                           : readKey<Answer>(blob, key);
}

// The event of the normal answer to a request.
uint64_t answerTo(const MessageKey& request) {
  switch (request.sdkType) {
    case kSdkTypeLce:
      if (request.event == LceProto::ENABLE) return LceProto::STATUS_IND;
      if (request.event == LceProto::SET_REPORTING_CRITERIA)
        return LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT;
      if (request.event == LceProto::GET_LAST_ESTIMATION_REPORT)
        return LceProto::GET_LAST_ESTIMATION_REPORT_IND;
      return kNoAnswer;
    case kSdkTypeLle:
      return request.event == LleProto::GET_LAST_ESTIMATION_REPORT ? LleProto::GET_REPORT_RESP
                                                                   : LleProto::STATUS_IND;
    case kSdkTypeLli:
      return LliProto::STATUS_IND;
    default:
      return kNoAnswer;
  }
}

// Sorts the events of one connection.
class Reader {
 public:
  explicit Reader(RecordedConnection& connection) : mConnection(connection) {
    mConnection.requests.emplace_back();
    mTimes.emplace_back(0);
  }

  void read(const RecordedEvent& event) {
    const bool toDaemon = event.direction == Direction::kToDaemon;
    switch (event.kind) {
      case RecordedEvent::Kind::kOpen:
        mTimes.front() = event.time;
        break;
      case RecordedEvent::Kind::kBytes:
        if (toDaemon) {
          readRequests(event);
        } else {
          readAnswers(event);
        }
        break;
      case RecordedEvent::Kind::kEnd:
        if (toDaemon) {
          mClientEnded = true;
        } else if (!mClientEnded && !mConnection.endedByDaemon) {
          mConnection.endedByDaemon = true;
          endAt(event.time);
        }
        break;
      case RecordedEvent::Kind::kClosed:
        break;
    }
  }

 private:
  // Removes the bytes of a handshake record from the front when all of them are there.
  static bool takeRecord(Blob& bytes, size_t size, Blob& record) {
    if (bytes.size() < size) return false;
    const auto end = bytes.begin() + static_cast<std::ptrdiff_t>(size);
    record.assign(bytes.begin(), end);
    bytes.erase(bytes.begin(), end);
    return true;
  }
  static uint32_t wordAt(const Blob& bytes, size_t offset) {
    uint32_t word = 0;
    std::memcpy(&word, bytes.data() + offset, sizeof(word));
    return word;
  }

  void readRequests(const RecordedEvent& event) {
    const Blob& bytes = event.bytes;
    if (mConnection.endpoint != 0) {
      mRequests.feed(bytes.data(), bytes.size());
    } else {
      mResponse.insert(mResponse.end(), bytes.begin(), bytes.end());
      Blob record;
      if (!takeRecord(mResponse, HandshakeReply::kSize, record)) return;
      mConnection.endpoint = wordAt(record, 8);
      mRequests.feed(mResponse.data(), mResponse.size());
    }
    Frame frame;
    while (mRequests.next(frame.header, frame.payload) == FrameReader::Result::kFrame) {
      RecordedRequest request;
      request.key = keyOf(frame, Direction::kToDaemon);
      mConnection.requests.push_back(std::move(request));
      mTimes.push_back(event.time);
    }
  }

  void readAnswers(const RecordedEvent& event) {
    const Blob& bytes = event.bytes;
    if (mConnection.established) {
      mAnswers.feed(bytes.data(), bytes.size());
    } else {
      Blob& records = mConnection.records;
      records.insert(records.end(), bytes.begin(), bytes.end());
      if (records.size() >= kDaemonRecordSize) mConnection.session = wordAt(records, 4);
      if (records.size() < 2 * kDaemonRecordSize) return;
      mConnection.established =
          mConnection.endpoint != 0 &&
          wordAt(records, 0) == static_cast<uint32_t>(kHandshakeInit) &&
          wordAt(records, kDaemonRecordSize) == static_cast<uint32_t>(kHandshakeComplete) &&
          wordAt(records, kDaemonRecordSize + 4) == mConnection.session;
      if (!mConnection.established) return;
      mTimes.front() = event.time;
      mAnswers.feed(records.data() + 2 * kDaemonRecordSize, records.size() - 2 * kDaemonRecordSize);
    }
    Frame frame;
    FrameReader::Result result;
    while ((result = mAnswers.next(frame.header, frame.payload)) == FrameReader::Result::kFrame)
      addAnswer(frame, event.time);
  }

  // An answer belongs to the oldest waiting request of its kind; every other message belongs to the
  // latest request.
  void addAnswer(const Frame& frame, std::chrono::microseconds time) {
    const MessageKey key = keyOf(frame, Direction::kToClient);
    size_t owner = mConnection.requests.size() - 1;
    bool isAnswer = false;
    for (size_t i = 1; i < mConnection.requests.size() && !isAnswer; ++i) {
      RecordedRequest& request = mConnection.requests[i];
      isAnswer = !request.answered && request.key.sdkType == key.sdkType &&
                 answerTo(request.key) == key.event &&
                 (key.transaction == 0 || key.transaction == request.key.transaction);
      if (!isAnswer) continue;
      request.answered = true;
      owner = i;
    }
    RecordedStep step;
    step.after = time - mTimes[owner];
    step.frame = frame;
    step.takesTransaction = isAnswer && key.transaction != 0;
    mConnection.requests[owner].steps.push_back(std::move(step));
  }

  // Remaining bytes are a frame that was cut off by the end.
  void endAt(std::chrono::microseconds time) {
    RecordedStep step;
    step.after = time - mTimes.back();
    step.bytes = mAnswers.rest();
    step.end = true;
    mConnection.requests.back().steps.push_back(std::move(step));
  }

  RecordedConnection& mConnection;
  std::vector<std::chrono::microseconds> mTimes;  // of the requests
  Blob mResponse;
  FrameReader mRequests;
  FrameReader mAnswers;
  bool mClientEnded = false;
};

}  // namespace

MessageKey keyOf(const Frame& frame, Direction direction) {
  MessageKey key;
  key.sdkType = frame.sdkType();
  const Blob blob = frame.blob();
  bool read = false;
  switch (key.sdkType) {
    case kSdkTypeLce:
      read = readKey<LceProto::ServiceMsg, LceProto::ClientMsg>(direction, blob, key);
      break;
    case kSdkTypeLle:
      read = readKey<LleProto::ServiceMsg, LleProto::ClientMsg>(direction, blob, key);
      break;
    case kSdkTypeLli:
      read = readKey<LliProto::ServiceMsg, LliProto::ClientMsg>(direction, blob, key);
      break;
    default:
      break;
  }
  if (!read) key = {0, frame.header.messageId, 0};
  return key;
}

std::string nameOf(const Frame& frame) {
  TraceMessage message;
  std::string reason;
  const char* const service = traceServiceName(frame.sdkType());
  if (service == nullptr ||
      !decodeTraceMessage(frame.sdkType(), Direction::kToDaemon, frame.blob(), message, reason))
    return "message " + std::to_string(frame.header.messageId);
  const auto& event = std::get<TraceEnumerator>(message.fields.front().values.front());
  return std::string(service) + " " +
         (event.name.empty() ? std::to_string(event.number) : event.name);
}

// Only LCE has different events for its answers.
Frame withTransaction(const Frame& frame, uint64_t transaction) {
  LceProto::ClientMsg message;
  const Blob blob = frame.blob();
  if (frame.sdkType() != kSdkTypeLce ||
      !message.ParseFromArray(blob.data(), static_cast<int>(blob.size())) ||
      message.transaction_id() == transaction)
    return frame;
  message.set_transaction_id(transaction);
  Blob changed(message.ByteSizeLong());
  message.SerializeToArray(changed.data(), static_cast<int>(changed.size()));
  Frame result = frame;
  result.payload = encodeBlobPayload(kSdkTypeLce, changed);
  result.header.payloadLength = result.payload.size();
  return result;
}

std::vector<std::unique_ptr<RecordedConnection>> connectionsOf(
    const std::vector<RecordedEvent>& events) {
  std::vector<std::unique_ptr<RecordedConnection>> connections;
  std::map<uint32_t, Reader> readers;
  for (const RecordedEvent& event : events) {
    if (event.kind == RecordedEvent::Kind::kOpen) {
      connections.push_back(std::make_unique<RecordedConnection>());
      readers.erase(event.connection);
      readers.emplace(event.connection, Reader(*connections.back()));
    }
    const auto reader = readers.find(event.connection);
    if (reader != readers.end()) reader->second.read(event);
  }
  return connections;
}

}  // namespace orbsim
