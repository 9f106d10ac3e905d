// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// The daemon stand-in's control socket: one line of JSON per order and per answer.

#include <sys/stat.h>
#include <sys/syscall.h>

#include <atomic>
#include <cerrno>
#include <chrono>

#include "OrbdSimClient.h"
#include "orbsim/ControlSocket.h"
#include "orbsim/World.h"

namespace orbsimtest {
namespace {

// The number of the next connections for which there is no descriptor.
std::atomic<int> exhausted{0};

}  // namespace
}  // namespace orbsimtest

// Replaces the function of the C library.
extern "C" int accept4(int fd, sockaddr* address, socklen_t* size, int flags) {
  if (orbsimtest::exhausted.load() > 0) {
    --orbsimtest::exhausted;
    errno = EMFILE;
    return -1;
  }
  return static_cast<int>(::syscall(SYS_accept4, fd, address, size, flags));
}

namespace orbsimtest {
namespace {

using namespace std::chrono_literals;

// A client of a control socket, with plain bytes.
class Orders {
 public:
  explicit Orders(const std::string& path) : mFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    EXPECT_EQ(0, ::connect(mFd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)));
  }
  ~Orders() { ::close(mFd); }
  Orders(const Orders&) = delete;
  Orders& operator=(const Orders&) = delete;

  void write(const std::string& text) {
    EXPECT_EQ(static_cast<ssize_t>(text.size()),
              ::send(mFd, text.data(), text.size(), MSG_NOSIGNAL));
  }
  // Empty at the end of the connection.
  std::string read() {
    std::string line;
    char letter = 0;
    while (::recv(mFd, &letter, 1, 0) == 1) {
      if (letter == '\n') return line;
      line += letter;
    }
    return line;
  }
  std::string give(const std::string& order) {
    write(order + "\n");
    return read();
  }

 private:
  int mFd;
};

class OrbdSimControlTest : public OrbdSimTest {
 protected:
  void SetUp() override {
    OrbdSimTest::SetUp();
    Options options;
    options.reportInterval = 0ms;
    options.record = false;
    options.model.handoffs = false;
    startDaemon(options);
    mControl = std::make_unique<orbsim::ControlSocket>(daemon());
    ASSERT_TRUE(mControl->open(control())) << mControl->error();
    mOrders = std::make_unique<Orders>(control());
  }
  void TearDown() override {
    mOrders.reset();
    mControl.reset();
    OrbdSimTest::TearDown();
  }
  std::string control() const { return mDirectory + "/control"; }
  std::string give(const std::string& order) { return mOrders->give(order); }

  std::unique_ptr<orbsim::ControlSocket> mControl;
  std::unique_ptr<Orders> mOrders;
};

constexpr char kDone[] = R"({"ok":true})";

TEST_F(OrbdSimControlTest, OnlyTheOwnerMayUseTheSocketAndItGoesAtTheEnd) {
  struct stat status = {};
  ASSERT_EQ(0, ::stat(control().c_str(), &status));
  EXPECT_EQ(0600u, status.st_mode & 07777u);
  mControl->close();
  EXPECT_NE(0, ::stat(control().c_str(), &status));
}

TEST_F(OrbdSimControlTest, PathThatIsTakenIsRefused) {
  orbsim::ControlSocket second(daemon());
  EXPECT_FALSE(second.open(control()));
  EXPECT_NE(std::string::npos, second.error().find("somebody listens there already"));
}

TEST_F(OrbdSimControlTest, WhatIsNoOrderIsWrong) {
  EXPECT_EQ(R"({"error":"line 1, column 1)", give("what").substr(0, 26));
  EXPECT_NE(std::string::npos, give("what").find(R"("wrong":true)"));
  EXPECT_NE(std::string::npos, give(R"({"dance":true})").find(R"("wrong":true)"));
  EXPECT_NE(std::string::npos, give(R"({"rat":"6g"})").find(R"("error":"/rat: )"));
  EXPECT_NE(std::string::npos, give("{}").find(R"("ok":false)"));
  EXPECT_EQ(kDone, give(R"({"delay":0})")) << "and the next one is done";
}

TEST_F(OrbdSimControlTest, WhatCannotBeDoneNowIsRefused) {
  EXPECT_EQ(R"({"error":"no session uses lce","ok":false})", give(R"({"send":{"service":"lce"}})"));
  EXPECT_EQ(R"({"error":"no session 9","ok":false})", give(R"({"drop":9})"));
  EXPECT_EQ(kDone, give(R"({"vanish":3600})"));
  EXPECT_EQ(R"({"error":"the daemon is gone already","ok":false})", give(R"({"vanish":1})"));
}

TEST_F(OrbdSimControlTest, OrdersChangeTheDevice) {
  Client client(path());
  client.handshake();
  client.answerTo(criteria(1, {}, 0));
  const auto rate = [&client] {
    return client.answerTo(getLast()).data().get_last_estimation_report_resp().rate();
  };
  rate();
  EXPECT_EQ(kDone, give(R"({"rate":5})"));
  EXPECT_EQ(5000u, rate());
  EXPECT_EQ(kDone, give(R"({"rate":{"from":9,"to":9}})"));
  EXPECT_EQ(9000u, rate());
  EXPECT_EQ(kDone, give(R"({"latency":70})"));
  EXPECT_EQ(kDone, give(R"({"rat":"wcdma"})"));
  rate();
  const auto view = daemon().world().view();
  EXPECT_EQ("wcdma", view.rat);
  EXPECT_EQ(70000u, view.estimate.latency.dlLatency);
  EXPECT_EQ(kDone, give(R"({"handoff":{"to":"5g","notice":3600}})"));
  // The order takes effect at the next access.
  daemon().world().view();
  EXPECT_EQ(R"({"error":"a handoff is under way","ok":false})",
            give(R"({"handoff":{"to":"lte"}})"));
  EXPECT_EQ(kDone, give(R"({"rate":"wander"})"));
}

TEST_F(OrbdSimControlTest, MessagesAreSentNowAndConnectionsDropped) {
  Client client(path());
  client.handshake();
  client.answerTo(enable(true));
  EXPECT_EQ(kDone, give(R"({"send":{"service":"lce","fields":{"rate":77,"direction":"up"}}})"));
  const auto report = parse(client.readFrame()).data().estimation_reports_resp();
  EXPECT_EQ(77u, report.rate());
  EXPECT_EQ(LceProto::UP_LINK, report.link_direction());
  EXPECT_EQ(kDone, give(R"({"refuse":{"service":"lce","with":"INTERNAL_ERROR"}})"));
  EXPECT_EQ(LceProto::INTERNAL_ERROR, client.answerTo(enable(true)).data().status_msg().status());
  EXPECT_EQ(kDone, give(R"({"drop":1})"));
  EXPECT_TRUE(client.atEnd());
  Client second(path());
  second.handshake();
  EXPECT_EQ(kDone, give(R"({"drop":true})"));
  EXPECT_TRUE(second.atEnd());
}

TEST_F(OrbdSimControlTest, FaultsComeAndGo) {
  EXPECT_EQ(kDone, give(R"({"fault":{"words":"die-after-init"}})"));
  Client client(path());
  EXPECT_EQ(8u, client.readOnce().size());
  EXPECT_TRUE(client.atEnd());
  EXPECT_EQ(kDone, give(R"({"fault":{"words":"none"}})"));
  Client proper(path());
  proper.handshake();
  EXPECT_EQ(LceProto::SUCCESS, proper.answerTo(enable(true)).data().status_msg().status());
}

TEST_F(OrbdSimControlTest, StatusTellsSessionsAndTheDevice) {
  Client client(path(), kLlePid);
  client.handshake();
  client.answerTo(enable<LleProto::ServiceMsg>(true));
  client.answerTo(lleCriteria(4));
  EXPECT_EQ(kDone, give(R"({"pause":true})"));
  const std::string status = give(R"({"status":true})");
  for (const std::string& part :
       {std::string(R"("begun":true)"), std::string(R"("ok":true)"),
        std::string(R"("paused":true)"), std::string(R"("rat":"lte")"),
        std::string(R"("handoff":false)"), "\"pid\":" + std::to_string(::getpid()),
        std::string(R"("endpoint":106)"),
        std::string(R"("lle":{"criteria":4,"enabled":true,"reports":0})"),
        R"("socket":")" + path() + "\""}) {
    EXPECT_NE(std::string::npos, status.find(part)) << part << " in " << status;
  }
  EXPECT_EQ(kDone, give(R"({"resume":true})"));
  EXPECT_NE(std::string::npos, give(R"({"status":true})").find(R"("paused":false)"));
}

TEST_F(OrbdSimControlTest, SeveralLinesAtOnceAreAnsweredInTheirOrderAndALineMayComeInPieces) {
  mOrders->write("{\"delay\":0}\n{\"drop\":9}\n{\"del");
  EXPECT_EQ(kDone, mOrders->read());
  EXPECT_EQ(R"({"error":"no session 9","ok":false})", mOrders->read());
  mOrders->write("ay\":0}\n");
  EXPECT_EQ(kDone, mOrders->read());
  Orders other(control());
  EXPECT_EQ(kDone, other.give(R"({"resume":true})"));
}

TEST_F(OrbdSimControlTest, ListIsDoneWholeOrNotAtAll) {
  EXPECT_NE(std::string::npos, give(R"([{"rat":"5g"},{"rat":"6g"}])").find(R"("wrong":true)"));
  daemon().world().wanted(orbsim::kSdkTypeLce);
  EXPECT_EQ("lte", daemon().world().view().rat);
  EXPECT_EQ(kDone, give(R"([{"rat":"5g"},{"delay":0}])"));
  EXPECT_EQ("5g", daemon().world().view().rat);
  EXPECT_NE(std::string::npos, give("[]").find(R"("wrong":true)"));
}

TEST_F(OrbdSimControlTest, HandoffToWhereTheDeviceIsIsRefused) {
  EXPECT_EQ(R"({"error":"the device is on lte already","ok":false})",
            give(R"({"handoff":{"to":"lte"}})"));
  EXPECT_EQ(kDone, give(R"({"handoff":{"to":"5g"}})"));
}

// After an access to the device, its first moment is already fixed.
TEST_F(OrbdSimControlTest, BeforeTheTimeBeginsOrdersFollowEachOtherAsWell) {
  EXPECT_NE(std::string::npos, give(R"({"status":true})").find(R"("begun":false)"));
  EXPECT_EQ(kDone, give(R"({"rat":"5g"})"));
  EXPECT_EQ(R"({"error":"the device is on 5g already","ok":false})",
            give(R"({"handoff":{"to":"5g"}})"));
  EXPECT_EQ(kDone, give(R"({"handoff":{"to":"lte"}})"));
  EXPECT_EQ(R"({"error":"a handoff is under way","ok":false})",
            give(R"({"handoff":{"to":"wcdma"}})"));
}

TEST_F(OrbdSimControlTest, ConnectionWithoutADescriptorIsTriedAgainALittleLater) {
  const auto before = std::chrono::steady_clock::now();
  exhausted = 10;
  Orders other(control());
  EXPECT_EQ(kDone, other.give(R"({"delay":0})"));
  EXPECT_EQ(0, exhausted.load());
  EXPECT_GE(std::chrono::steady_clock::now() - before, 100ms) << "asked all the time";
}

TEST_F(OrbdSimControlTest, LineWithoutAnEndEndsTheConnection) {
  const std::string part(4096, 'x');
  for (int i = 0; i < 16; ++i) mOrders->write(part);
  mOrders->write("x");
  EXPECT_EQ("", mOrders->read());
  EXPECT_EQ(kDone, Orders(control()).give(R"({"delay":0})"));
}

}  // namespace
}  // namespace orbsimtest
