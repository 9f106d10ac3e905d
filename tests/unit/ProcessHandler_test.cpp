// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ProcessHandler.h"

#include <gtest/gtest.h>

#include "IpcTestSupport.h"

namespace {

using namespace ipctest;

class ProcessHandlerTest : public ::testing::Test {
 protected:
  void SetUp() override { recording::clear(); }
  ProcessHandler mHandler;
};

TEST_F(ProcessHandlerTest, NullFrameIsAnError) {
  mHandler.handleMsg(nullptr);
  EXPECT_EQ((Entries{{kError, "msg null"}}), logged());
}

TEST_F(ProcessHandlerTest, FrameIsDroppedWithDestinationThenSource) {
  ipcMsg_t frame = {1, 105, 5, 0, 7, 0};
  mHandler.handleMsg(&frame);
  EXPECT_EQ((Entries{{kDebug, "105: dropping IPC from 1"}}), logged());
}

TEST_F(ProcessHandlerTest, SourceIsShownUnsignedAndDestinationAsInt) {
  ipcMsg_t frame = {~uint64_t{0}, ~uint64_t{0}, 5, 0, 7, 0};
  mHandler.handleMsg(&frame);
  EXPECT_EQ((Entries{{kDebug, "-1: dropping IPC from 18446744073709551615"}}), logged());
}

TEST_F(ProcessHandlerTest, EndsAreIgnored) {
  mHandler.handleSessionEnd(7);
  mHandler.handleReceiverEnd(3);
  EXPECT_TRUE(logged().empty());
  EXPECT_FALSE(mHandler.threadSemaphore()->decreaseFor(std::chrono::milliseconds(0)));
}

}  // namespace
