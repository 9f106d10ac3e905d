// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// A plain socket client of the daemon stand-in, and the fixture of its tests. The client uses only
// bytes, so that an error in the stand-in is not hidden by the same error in the library.

#pragma once

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "Recorder.h"
#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"
#include "orbsim/Daemon.h"

namespace orbsimtest {

using orbsim::Blob;
using orbsim::Daemon;
using orbsim::Frame;
using orbsim::Header;
using orbsim::Options;

constexpr uint32_t kLcePid = 105;
constexpr uint32_t kLlePid = 106;
constexpr uint32_t kLliPid = 107;

// The parts of the requests that depend on the service.
template <class Request>
struct Wire;
template <>
struct Wire<LceProto::ServiceMsg> {
  using Answer = LceProto::ClientMsg;
  static constexpr uint32_t kSdkType = 7;
  static constexpr uint32_t kPid = kLcePid;
};
template <>
struct Wire<LleProto::ServiceMsg> {
  using Answer = LleProto::ClientMsg;
  static constexpr uint32_t kSdkType = 8;
  static constexpr uint32_t kPid = kLlePid;
};
template <>
struct Wire<LliProto::ServiceMsg> {
  using Answer = LliProto::ClientMsg;
  static constexpr uint32_t kSdkType = 9;
  static constexpr uint32_t kPid = kLliPid;
};

template <class Request>
Blob serialize(const Request& message) {
  Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

template <class Request = LceProto::ServiceMsg>
typename Wire<Request>::Answer parse(const Frame& frame) {
  typename Wire<Request>::Answer message;
  const Blob blob = frame.blob();
  EXPECT_EQ(Wire<Request>::kSdkType, frame.sdkType());
  EXPECT_TRUE(message.ParseFromArray(blob.data(), static_cast<int>(blob.size())));
  return message;
}

// A client with plain bytes. Reads block: if the daemon does not answer, the test reaches its time
// limit; if it closes, the read is short.
class Client {
 public:
  explicit Client(const std::string& path, uint32_t processId = kLcePid)
      : mFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)), mProcessId(processId) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    mConnected = ::connect(mFd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    if (!mConnected) mError = errno;
  }
  ~Client() { close(); }
  Client(const Client&) = delete;
  Client& operator=(const Client&) = delete;

  bool connected() const { return mConnected; }
  int error() const { return mError; }  // why it is not
  uint32_t sessionId() const { return mSessionId; }
  void close() {
    if (mFd >= 0) ::close(mFd);
    mFd = -1;
  }

  // The result of one recv, as clients read a handshake record.
  Blob readOnce() {
    Blob bytes(1023);
    const ssize_t got = ::recv(mFd, bytes.data(), bytes.size(), 0);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return bytes;
  }
  Blob readExactly(size_t size) {
    Blob bytes(size);
    const ssize_t got = ::recv(mFd, bytes.data(), size, MSG_WAITALL);
    bytes.resize(got > 0 ? static_cast<size_t>(got) : 0);
    return bytes;
  }
  void write(const Blob& bytes) {
    for (size_t sent = 0; sent < bytes.size();) {
      const ssize_t result = ::send(mFd, bytes.data() + sent, bytes.size() - sent, MSG_NOSIGNAL);
      ASSERT_LT(0, result);
      sent += static_cast<size_t>(result);  // less than all when a signal comes
    }
  }
  // False if the other side has disconnected.
  bool tryWrite(const Blob& bytes) {
    return ::send(mFd, bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
           static_cast<ssize_t>(bytes.size());
  }
  bool atEnd() { return readOnce().empty(); }
  bool hasInput() {
    pollfd input = {mFd, POLLIN, 0};
    return ::poll(&input, 1, 0) > 0;
  }

  static Blob reply(uint32_t sessionId, uint32_t processId = kLcePid) {
    const uint32_t words[3] = {2, sessionId, processId};
    Blob bytes(sizeof(words));
    std::memcpy(bytes.data(), words, sizeof(words));
    return bytes;
  }
  void handshake() {
    const Blob init = readOnce();
    ASSERT_EQ(8u, init.size());
    std::memcpy(&mSessionId, init.data() + 4, sizeof(mSessionId));
    write(reply(mSessionId, mProcessId));
    ASSERT_EQ(8u, readOnce().size());
  }

  template <class Request>
  void send(const Request& message) {
    sendPayload(orbsim::encodeBlobPayload(Wire<Request>::kSdkType, serialize(message)));
  }
  void sendPayload(const Blob& payload, uint64_t messageId = orbsim::kSendBlobMessageId) {
    write(orbsim::encodeFrame(header(messageId, payload.size()), payload));
  }
  Header header(uint64_t messageId, size_t length) const {
    return {mProcessId, orbsim::kDaemonProcessId, messageId, 0, mSessionId, length};
  }

  Frame readFrame() {
    Frame frame;
    const Blob header = readExactly(Header::kSize);
    EXPECT_EQ(Header::kSize, header.size());
    if (header.size() != Header::kSize) return frame;
    std::memcpy(&frame.header, header.data(), Header::kSize);
    frame.payload = readExactly(frame.header.payloadLength);
    return frame;
  }
  template <class Request>
  typename Wire<Request>::Answer answerTo(const Request& request) {
    send(request);
    return parse<Request>(readFrame());
  }

 private:
  int mFd;
  uint32_t mProcessId;
  bool mConnected = false;
  int mError = 0;
  uint32_t mSessionId = 0;
};

// ENABLE is 0 in every service, which is also the value of an event that was not set.
template <class Request = LceProto::ServiceMsg>
Request enable(bool on) {
  Request message;
  message.mutable_data()->mutable_enable_msg()->set_enable(on);
  return message;
}

inline LceProto::ServiceMsg criteria(uint64_t transaction, std::vector<uint32_t> first,
                                     uint32_t firstCount) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA);
  message.set_transaction_id(transaction);
  auto* body = message.mutable_data()->mutable_set_reporting_criteria();
  for (const uint32_t value : first) body->add_first_list(value);
  body->set_first_list_count(firstCount);
  return message;
}

inline LceProto::ServiceMsg getLast() {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT);
  message.mutable_data()->mutable_get_last_estination_report();
  return message;
}

inline LceProto::ServiceMsg action(LceProto::ReportingAction what) {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::PERFORM_REPORTING_ACTION);
  message.mutable_data()->mutable_perform_reporting_action()->set_action(what);
  return message;
}

inline LleProto::ServiceMsg lleCriteria(uint32_t value) {
  LleProto::ServiceMsg message;
  message.set_event_id(LleProto::SET_REPORTING_CRITERIA);
  message.mutable_data()->mutable_set_reporting_criteria()->set_reporting_criteria(value);
  return message;
}

inline LleProto::ServiceMsg lleGetLast() {
  LleProto::ServiceMsg message;
  message.set_event_id(LleProto::GET_LAST_ESTIMATION_REPORT);
  message.mutable_data()->mutable_get_last_estination_report();
  return message;
}

inline LliProto::ServiceMsg lliRegister(bool on) {
  LliProto::ServiceMsg message;
  message.set_event_id(LliProto::REG_LINK_INTERRUPT_IND);
  message.mutable_data()->mutable_reg_link_interrupt_ind()->set_register_ind(on);
  return message;
}

// The lines of a daemon's log. Created before the daemon and destroyed after it.
class LogLines {
 public:
  std::function<void(const std::string&)> sink() {
    return [this](const std::string& line) { mLines.add(line); };
  }
  std::vector<std::string> lines() { return mLines.all(); }

 private:
  Recorder<std::string> mLines;
};

// The start of log lines about the first session: this process is its client.
inline std::string sessionOf(uint32_t endpoint) {
  return "session 1 pid " + std::to_string(::getpid()) + " endpoint " + std::to_string(endpoint) +
         " ";
}

class OrbdSimTest : public ::testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/orbd-sim-test-XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    mDirectory = pattern;
    startDaemon({});
  }
  void TearDown() override {
    mDaemon.reset();
    std::filesystem::remove_all(mDirectory);
  }

  void startDaemon(Options options) {
    mDaemon.reset();
    options.socketPath = path();
    mDaemon = std::make_unique<Daemon>(options);
    ASSERT_TRUE(mDaemon->start()) << mDaemon->error();
  }
  std::string path() const { return mDirectory + "/orb"; }
  Daemon& daemon() { return *mDaemon; }

  std::string mDirectory;
  std::unique_ptr<Daemon> mDaemon;
};

}  // namespace orbsimtest
