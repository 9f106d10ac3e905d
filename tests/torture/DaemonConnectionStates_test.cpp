// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Disable and destroy while the daemon misbehaves on an established connection.
#include "DaemonStatesFixture.h"

namespace torture {
namespace {

using orbsim::Blob;
using orbsim::Frame;
using orbsim::Header;
using orbsim::Session;
using Test = DaemonStatesTest;

// More requests than a socket's buffer holds.
constexpr int kFlood = 3000;

Blob frameOfZeros(Session& session) {
  const Header header = session.headerFor(orbsim::kSendBlobMessageId, 100);
  return orbsim::encodeFrame(header, Blob(100));
}
void sendHead(Session& session, size_t bytes) {
  Blob frame = frameOfZeros(session);
  frame.resize(bytes);
  session.send(std::move(frame));
}
constexpr size_t kHalfHeader = 20;
constexpr size_t kHalfPayload = Header::kSize + 50;

// Sends a status; its bytes are the same for every service.
void answer(Session& session, const Frame& frame) {
  session.sendBlob(frame.sdkType(), {0x1a, 0x04, 0x0a, 0x02, 0x08, 0x01});
}
bool isDisableMessage(const Frame& frame) { return frame.blob() == Blob{0x1a, 0x02, 0x0a, 0x00}; }

void allReached(Test& test) { test.waitReached(test.services().size()); }
void enabled(Test& test) { awaitSuccesses(test.services().size()); }
void flood(Test& test) {
  enabled(test);
  test.daemon().setReading(false);
  for (int i = 0; i < kFlood; ++i) {
    for (const Service service : test.services()) EXPECT_EQ(0, request(hearing(), service));
  }
}

class DisableOnConnection : public DaemonStatesTest {
  void SetUp() override {
    DaemonStatesTest::SetUp();
    heard().clear();
  }
};

TEST_P(DisableOnConnection, IsInTimeAndLeavesNothing) { disableEach(); }

void startAndForget(Test& test) {
  heard().clear();
  test.start();
}

const DaemonState kStates[] = {
    {"HalfAHeader",
     [](Test& test) { test.afterTheFirstFrame([](Session& s) { sendHead(s, kHalfHeader); }); },
     allReached},
    {"HalfAPayload",
     [](Test& test) { test.afterTheFirstFrame([](Session& s) { sendHead(s, kHalfPayload); }); },
     allReached},
    {"DiesAfterTheFirstFrame",
     [](Test& test) { test.afterTheFirstFrame([](Session& s) { s.close(); }); }, allReached},
    {"DiesInTheHeader",
     [](Test& test) {
       test.afterTheFirstFrame([](Session& s) {
         sendHead(s, kHalfHeader);
         s.close();
       });
     },
     allReached},
    {"DiesInThePayload",
     [](Test& test) {
       test.afterTheFirstFrame([](Session& s) {
         sendHead(s, kHalfPayload);
         s.close();
       });
     },
     allReached},
    {"DoesNotRead", startAndForget, flood},
    {"DiesDuringSend", startAndForget,
     [](Test& test) {
       flood(test);
       test.daemon().closeAll();
     }},
    {"DiesOverTheDisableMessage",
     [](Test& test) {
       heard().clear();
       test.daemon().setFrameHandler([](Session& session, const Frame& frame) {
         if (isDisableMessage(frame)) {
           session.close();
         } else {
           answer(session, frame);
         }
         return true;
       });
       test.start();
     },
     enabled},
    {"AnswersAfterDisable",
     [](Test& test) {
       heard().clear();
       test.daemon().setFrameHandler([](Session& session, const Frame& frame) {
         // At the end every request has its answer, and there are more messages.
         for (int i = isDisableMessage(frame) ? 0 : 199; i < 200; ++i) answer(session, frame);
         return true;
       });
       test.start();
     },
     enabled},
    {"AnswersWithoutEnd",
     [](Test& test) {
       heard().clear();
       test.daemon().setFrameHandler([](Session& session, const Frame& frame) {
         answer(session, frame);
         return true;
       });
       test.start();
     },
     [](Test& test) {
       enabled(test);
       for (int i = 0; i < kFlood; ++i) {
         for (const Service service : test.services()) EXPECT_EQ(0, request(hearing(), service));
       }
     }},
};

INSTANTIATE_TEST_SUITE_P(Daemon, DisableOnConnection, ::testing::ValuesIn(kStates),
                         [](const auto& state) { return state.param.name; });

}  // namespace
}  // namespace torture
