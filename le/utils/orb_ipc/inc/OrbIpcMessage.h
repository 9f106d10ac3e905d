// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

class OrbIpcSession;
class Semaphore;

// A message of an IPC session. The id selects what the session does with it: 1 to 4 are the
// session's own, every other id is sent as the payload of a frame with that id. Always held by
// shared_ptr.
class OrbIpcMessage {
 public:
  // @p name is a constant of the program.
  OrbIpcMessage(std::string_view name, unsigned int id) : mName(name), mId(id) {}
  OrbIpcMessage(const OrbIpcMessage&) = delete;
  OrbIpcMessage& operator=(const OrbIpcMessage&) = delete;
  virtual ~OrbIpcMessage() = default;

  virtual std::vector<unsigned char> serialize() = 0;
  virtual void deserialize(std::vector<unsigned char> bytes) = 0;
  // What serialize() returns, behind @p room bytes for the frame's header. A message that is sent
  // often writes itself there at once.
  virtual std::vector<unsigned char> serializeBehind(size_t room) {
    std::vector<unsigned char> bytes = serialize();
    bytes.insert(bytes.begin(), room, 0);
    return bytes;
  }

  unsigned int id() const { return mId; }
  std::string_view name() const { return mName; }
  // The session a received message came on; empty in messages made to be sent.
  const std::shared_ptr<OrbIpcSession>& session() const { return mSession; }
  void setSession(std::shared_ptr<OrbIpcSession> session) { mSession = std::move(session); }

 private:
  std::shared_ptr<OrbIpcSession> mSession;
  const std::string_view mName;
  const unsigned int mId;
};

// What the three local events share: they never reach the wire.
class OrbIpcLocalMessage : public OrbIpcMessage {
 public:
  using OrbIpcMessage::OrbIpcMessage;
  std::vector<unsigned char> serialize() override { return {}; }
  void deserialize(std::vector<unsigned char>) override {}
};

class OrbIpcConnectToServerMessage : public OrbIpcLocalMessage {
 public:
  static constexpr unsigned int ID = 1;
  OrbIpcConnectToServerMessage() : OrbIpcLocalMessage("OrbIpcConnectToServerMessage", ID) {}
};

// A frame that was received.
class OrbIpcIncomingRawMessage : public OrbIpcLocalMessage {
 public:
  static constexpr unsigned int ID = 2;
  OrbIpcIncomingRawMessage(unsigned int subsystemId, unsigned int msgId,
                           std::vector<unsigned char> payload)
      : OrbIpcLocalMessage("OrbIpcIncomingRawMessage", ID),
        mSubsystemId(subsystemId),
        mMsgId(msgId),
        mPayload(std::move(payload)) {}

  const unsigned int mSubsystemId;
  const unsigned int mMsgId;
  std::vector<unsigned char> mPayload;
};

// A payload to be sent as it is.
class OrbIpcRawMessage : public OrbIpcMessage {
 public:
  static constexpr unsigned int ID = 3;
  OrbIpcRawMessage(unsigned int subsystemId, unsigned int msgId, std::vector<unsigned char> payload)
      : OrbIpcMessage("OrbIpcRawMessage", ID),
        mPayload(std::move(payload)),
        mMsgId(msgId),
        mSubsystemId(subsystemId) {}
  std::vector<unsigned char> serialize() override { return mPayload; }
  std::vector<unsigned char> serializeBehind(size_t room) override {
    std::vector<unsigned char> bytes(room + mPayload.size());
    std::copy(mPayload.begin(), mPayload.end(), bytes.begin() + static_cast<ptrdiff_t>(room));
    return bytes;
  }
  void deserialize(std::vector<unsigned char>) override {}

  const std::vector<unsigned char> mPayload;
  const unsigned int mMsgId;
  const unsigned int mSubsystemId;
};

// The end of a session's connection: of the one whose receiver signals @p receiver, which need not
// be the latest any more, or of the present one without it.
class OrbIpcSessionEndMessage : public OrbIpcLocalMessage {
 public:
  static constexpr unsigned int ID = 4;
  explicit OrbIpcSessionEndMessage(unsigned int sessionId,
                                   std::shared_ptr<Semaphore> receiver = nullptr)
      : OrbIpcLocalMessage("OrbIpcSessionEndMessage", ID),
        mSessionId(sessionId),
        mReceiver(std::move(receiver)) {}

  const unsigned int mSessionId;
  const std::shared_ptr<Semaphore> mReceiver;
};
