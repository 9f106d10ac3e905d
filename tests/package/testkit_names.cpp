// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A program with the same names as inside the test kit: its own messages and daemon, and a message
// runtime of another version. It must link, and each part must use its own names.
#include <orbsim/testkit.h>

#include <cstdio>
#include <string>

namespace google::protobuf {
class MessageLite {
 public:
  virtual ~MessageLite();
  std::string InitializationErrorString() const;
};
MessageLite::~MessageLite() = default;
std::string MessageLite::InitializationErrorString() const { return "mine"; }
namespace internal {
void VerifyVersion(int, int, const char*);
void VerifyVersion(int, int, const char*) { std::puts("mine"); }
}  // namespace internal
}  // namespace google::protobuf

namespace LceProto {
class ClientMsg : public google::protobuf::MessageLite {
 public:
  ClientMsg();
};
ClientMsg::ClientMsg() { std::puts("my message"); }
}  // namespace LceProto

namespace orbsim {
class Daemon {
 public:
  bool start();
};
bool Daemon::start() { return false; }
}  // namespace orbsim

int main() {
  const LceProto::ClientMsg mine;
  orbsim::Daemon own;
  orbsim::testkit::TestDaemon daemon;
  if (own.start() || mine.InitializationErrorString() != "mine") return 2;
  if (!daemon.start()) {
    std::fprintf(stderr, "%s\n", daemon.error().c_str());
    return 1;
  }
  daemon.stop();
  return 0;
}
