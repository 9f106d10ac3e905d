// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// orbctl status with daemons in all states.
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>

#include "OrbctlProgram.h"
#include "lce.pb.h"
#include "lli.pb.h"
#include "orbctl/PendingConnection.h"
#include "orbsim/Daemon.h"
#include "orbsim/Faults.h"
#include "orbsim/Handshake.h"

using namespace orbctltest;

namespace {

class OrbctlStatus : public testing::Test {
 protected:
  ~OrbctlStatus() override {
    mDaemon.stop();
    chmod(orbsim::kSocketDirectory, 0755);
    remove(orbsim::kSocketPath);
  }
  // Starts the daemon in that state; the words are those of orbd-sim --faults.
  void startDaemon(const std::string& list = "") {
    orbsim::Faults faults;
    std::string error;
    if (!list.empty()) {
      ASSERT_TRUE(faults.parse(list, error)) << error;
    }
    faults.prepare(mDaemon);
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    faults.apply(mDaemon);
  }
  void startWithHandshake(orbsim::HandshakeScript script) {
    mDaemon.setHandshake(std::move(script));
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
  }
  // Answers the enable of a service with another status.
  template <class Message, class Status>
  void answerWith(uint32_t service, Status status) {
    Message answer;
    answer.mutable_data()->mutable_status_msg()->set_status(status);
    const std::string text = answer.SerializeAsString();
    mDaemon.setFrameHandler([=](orbsim::Session& session, const orbsim::Frame& frame) {
      if (frame.sdkType() != service) return false;
      session.sendBlob(service, orbsim::Blob(text.begin(), text.end()));
      return true;
    });
  }
  // The text must begin with this, and its last line must have the next step.
  static void expect(const Result& result, int status, const std::string& begin,
                     const std::string& part = "") {
    EXPECT_EQ(status, result.status) << result.out << result.error;
    EXPECT_EQ("daemon  " + begin, result.out.substr(0, 8 + begin.size()));
    EXPECT_TRUE(contains(result.out, part)) << result.out;
    const auto lines = linesOf(result.out);
    ASSERT_FALSE(lines.empty());
    EXPECT_EQ("next: ", lines.back().substr(0, 6));
    EXPECT_GT(lines.back().size(), 10u);
    EXPECT_EQ("", result.error);
  }
  static Result status(const std::string& timeout = "20") {
    return runOrbctl({"status", "--timeout", timeout});
  }
  // For a state in which the program waits until its timeout.
  static Result shortStatus() { return status("2"); }

  orbsim::Daemon mDaemon;
};

TEST_F(OrbctlStatus, DaemonThatIsWell) {
  startDaemon();
  const Result result = status();
  expect(result, 0, "well: handshake done on /dev/socket/orb, session 1\nlce     enabled after ");
  const auto lines = linesOf(result.out);
  ASSERT_EQ(5u, lines.size());
  EXPECT_EQ("lle     enabled after ", lines[2].substr(0, 22));
  EXPECT_EQ("lli     enabled after ", lines[3].substr(0, 22));
  EXPECT_EQ("next: nothing to do", lines[4]);
}

TEST_F(OrbctlStatus, NoFolder) {
  const Result result = runOrbctl({"status", "--socket", "/tmp/no/such/orb"});
  expect(result, 3, "no-folder: /tmp/no/such does not exist\nservices not asked: ");
}

TEST_F(OrbctlStatus, FileInThePlaceOfTheFolder) {
  std::ofstream("/tmp/orbctl-file") << "x";
  expect(runOrbctl({"status", "--socket", "/tmp/orbctl-file/orb"}), 3,
         "no-folder: /tmp/orbctl-file is no folder");
  remove("/tmp/orbctl-file");
}

TEST_F(OrbctlStatus, NoSocket) {
  expect(status(), 3, "no-socket: /dev/socket/orb does not exist\nservices not asked: ");
}

TEST_F(OrbctlStatus, FileInThePlaceOfTheSocket) {
  std::ofstream(orbsim::kSocketPath) << "x";
  expect(status(), 4, "not-a-socket: /dev/socket/orb is no socket");
}

TEST_F(OrbctlStatus, FolderInThePlaceOfTheSocket) {
  ASSERT_EQ(0, mkdir(orbsim::kSocketPath, 0755));
  expect(status(), 4, "not-a-socket: /dev/socket/orb is no socket");
}

TEST_F(OrbctlStatus, SocketOfAnotherType) {
  const UniqueFd fd(socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = {AF_UNIX, "/dev/socket/orb"};
  ASSERT_EQ(0, bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
  expect(status(), 4, "not-a-socket: /dev/socket/orb is a socket of another type");
}

TEST_F(OrbctlStatus, NoPermissionForTheSocket) {
  startDaemon();
  ASSERT_EQ(0, chmod(orbsim::kSocketPath, 0));
  expect(status(), 5, "no-permission: no permission for /dev/socket/orb\n");
}

TEST_F(OrbctlStatus, NoPermissionForTheFolder) {
  startDaemon();
  ASSERT_EQ(0, chmod(orbsim::kSocketDirectory, 0));
  expect(status(), 5, "no-permission: no permission for /dev/socket\n");
}

TEST_F(OrbctlStatus, SocketThatNobodyListensOn) {
  const UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = {AF_UNIX, "/dev/socket/orb"};
  ASSERT_EQ(0, bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
  expect(status(), 6, "refused: nobody listens on /dev/socket/orb\n");
}

TEST_F(OrbctlStatus, DaemonThatRefusesConnections) {
  startDaemon("refuse");
  expect(status(), 6, "refused: nobody listens on /dev/socket/orb\n");
}

TEST_F(OrbctlStatus, ConnectionThatIsNotAccepted) {
  startDaemon("no-accept");
  const UniqueFd waiting(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = {AF_UNIX, "/dev/socket/orb"};
  ASSERT_EQ(0, connect(waiting.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
  // If the kernel cannot list waiting connections, only one result is possible.
  if (orbctl::isPending(waiting.get()) == orbctl::Pending::kUnknown) {
    expect(shortStatus(), 8, "silent: ");
  } else {
    expect(shortStatus(), 7, "not-accepting: the connection waits in the queue");
  }
}

TEST_F(OrbctlStatus, QueueThatIsFull) {
  const UniqueFd fd(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  const sockaddr_un address = {AF_UNIX, "/dev/socket/orb"};
  ASSERT_EQ(0, bind(fd.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address));
  ASSERT_EQ(0, listen(fd.get(), 0));
  std::vector<UniqueFd> waiting;
  for (int result = 0; result == 0;) {
    waiting.emplace_back(socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
    result =
        connect(waiting.back().get(), reinterpret_cast<const sockaddr*>(&address), sizeof address);
    ASSERT_TRUE(result == 0 || errno == EAGAIN);
  }
  expect(shortStatus(), 7, "not-accepting: the queue of connections is full\n");
}

TEST_F(OrbctlStatus, SilentFromTheBeginning) {
  startDaemon("silent");
  expect(shortStatus(), 8,
         "silent: the connection was accepted, but the first record (init) does not come\n");
}

TEST_F(OrbctlStatus, SilentAfterTheFirstRecord) {
  startDaemon("stop-after-init");
  expect(shortStatus(), 8,
         "silent: the connection was accepted, but the last record (complete) does not come\n");
}

TEST_F(OrbctlStatus, ClosedAtOnce) {
  startWithHandshake([](int, uint32_t) { return false; });
  expect(status(), 9,
         "closed: the daemon closed the connection instead of sending the first record (init)\n");
}

TEST_F(OrbctlStatus, ClosedAfterTheFirstRecord) {
  startDaemon("die-after-init");
  expect(
      status(), 9,
      "closed: the daemon closed the connection instead of sending the last record (complete)\n");
}

TEST_F(OrbctlStatus, ClosedAfterTheResponse) {
  startDaemon("die-after-response");
  expect(
      status(), 9,
      "closed: the daemon closed the connection instead of sending the last record (complete)\n");
}

TEST_F(OrbctlStatus, HalfARecord) {
  startDaemon("half-record");
  expect(status(), 10, "wrong-handshake: the first record (init) has 4 bytes, not 8",
         "\ncame    01 00 00 00 (words 1)\n");
}

TEST_F(OrbctlStatus, RecordOfAnotherType) {
  startWithHandshake(
      [](int fd, uint32_t) { return orbsim::sendHandshakeRecord(fd, 9, 7) && false; });
  expect(status(), 10, "wrong-handshake: the first record (init) is of type 9, not 1",
         "\ncame    09 00 00 00 07 00 00 00 (words 9, 7)\n");
}

TEST_F(OrbctlStatus, TextInThePlaceOfARecord) {
  startWithHandshake([](int fd, uint32_t) { return send(fd, "HTTP/1.1 400\r\n", 14, 0) < 0; });
  expect(status(), 10, "wrong-handshake: the first record (init) has 14 bytes, not 8",
         "\ncame    48 54 54 50 2f 31 2e 31 20 34 30 30 0d 0a (words ");
}

TEST_F(OrbctlStatus, LastRecordForAnotherSession) {
  startDaemon("wrong-id");
  expect(status(), 10,
         "wrong-handshake: the last record (complete) is for session 2, the first "
         "was for session 1",
         "\ncame    03 00 00 00 02 00 00 00 (words 3, 2)\n");
}

TEST_F(OrbctlStatus, ServiceThatIsRefused) {
  answerWith<LceProto::ClientMsg>(orbsim::kSdkTypeLce, LceProto::NOT_SUPPORTED);
  startDaemon();
  expect(status(), 11, "well: ", "\nlce     refused with status NOT_SUPPORTED\nlle     enabled ");
}

TEST_F(OrbctlStatus, ServiceThatIsDown) {
  answerWith<LliProto::ClientMsg>(orbsim::kSdkTypeLli, LliProto::SERVICE_DOWN);
  startDaemon();
  expect(status(), 12, "well: ", "\nlli     SERVICE_DOWN\n");
}

TEST_F(OrbctlStatus, DaemonThatEndsTheConnectionInItsAnswer) {
  startDaemon("cut-frame");
  expect(status(), 12, "well: ", "\nlce     SERVICE_DOWN\nlle     SERVICE_DOWN\n");
}

TEST_F(OrbctlStatus, ServiceWithoutAnAnswer) {
  startDaemon();
  mDaemon.setAutoAnswer(orbsim::kSdkTypeLle, false);
  expect(status("8"), 13, "well: ", "\nlle     no answer within 8 s\nlli     enabled ");
}

TEST_F(OrbctlStatus, DaemonThatDoesNotRead) {
  startDaemon("no-read");
  expect(shortStatus(), 13, "well: ", "\nlce     no answer within 2 s\n");
}

TEST_F(OrbctlStatus, AnswersThatAreNoMessages) {
  startDaemon("garbage");
  expect(shortStatus(), 13, "well: ", "\nlce     no answer within 2 s\n");
}

TEST_F(OrbctlStatus, AnotherSocketIsLookedAtWithoutItsServices) {
  orbsim::Options options;
  options.socketPath = "/tmp/orbctl-other";
  orbsim::Daemon other(options);
  ASSERT_TRUE(other.start()) << other.error();
  const Result result = runOrbctl({"status", "-s", "/tmp/orbctl-other", "-t", "20"});
  expect(result, 0, "well: handshake done on /tmp/orbctl-other",
         "\nservices not asked: the library uses /dev/socket/orb only\n");
  other.stop();
  EXPECT_EQ(0u, other.totals().frames);
}

TEST_F(OrbctlStatus, JsonOfADaemonThatIsWell) {
  startDaemon();
  const Result result = runOrbctl({"status", "--json", "-t20"});
  EXPECT_EQ(0, result.status);
  EXPECT_EQ(0u,
            result.out.find(
                "{\"socket\":\"/dev/socket/orb\",\"state\":\"well\",\"reason\":\"handshake done\","
                "\"session\":1,\"services\":[{\"service\":\"lce\",\"state\":\"enabled\","
                "\"status\":\"SUCCESS\",\"ms\":"))
      << result.out;
  EXPECT_TRUE(contains(result.out, ",\"next\":\"nothing to do\",\"exit\":0}\n")) << result.out;
}

TEST_F(OrbctlStatus, JsonOfAWrongRecord) {
  startDaemon("half-record");
  const Result result = runOrbctl({"status", "-j"});
  EXPECT_EQ(10, result.status);
  EXPECT_TRUE(contains(result.out, "\"state\":\"wrong-handshake\"")) << result.out;
  EXPECT_TRUE(contains(result.out,
                       "\"came\":\"01 00 00 00 (words 1)\",\"services\":[],"
                       "\"not_asked\":\"the socket has a problem\",\"next\":\""))
      << result.out;
}

TEST_F(OrbctlStatus, LogOfTheLibraryIsKeptAway) {
  startDaemon();
  const Result result = runOrbctl({"status", "-t20"}, settingOf({"ORB_LOG_LEVEL"}));
  EXPECT_EQ(0, result.status);
  EXPECT_EQ("", result.error);
}

TEST_F(OrbctlStatus, FullDiskIsTold) {
  const Result result = runOrbctl({"status", "-s", "/tmp/no/such/orb"}, settingOf({}, "/dev/full"));
  EXPECT_EQ(3, result.status);  // the result of the check is more important than the output error
  EXPECT_TRUE(contains(result.error, "orbctl: standard output: ")) << result.error;
}

}  // namespace
