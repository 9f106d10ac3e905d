// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Protobuf messages without memory.
#include <gtest/gtest.h>

#include <array>
#include <cstdio>
#include <new>
#include <string>

#include "FailingNew.h"
#include "OnArena.h"
#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"

namespace {

constexpr std::array<uint32_t, 20> kFullList{};

// Whether @p bytes can be parsed without any memory; then @p check gets the message.
template <class Message, class Check>
void readWithoutMemory(const Message& original, const Check& check) {
  const std::string bytes = original.SerializeAsString();
  const memory::NoMemory none;
  OnArena<Message> message;
  ASSERT_TRUE(message->ParseFromString(bytes));
  check(*message);
}

TEST(OnArenaMemory, LongestRequestNeedsNone) {
  const memory::NoMemory none;
  OnArena<LceProto::ServiceMsg> message;
  message->set_transaction_id(UINT64_MAX);
  auto* request = message->mutable_data()->mutable_set_reporting_criteria();
  request->mutable_second_list()->Add(kFullList.begin(), kFullList.end());
  request->mutable_first_list()->Add(kFullList.begin(), kFullList.end());
  EXPECT_EQ(20, message->data().set_reporting_criteria().first_list_size());
}

TEST(OnArenaMemory, AnswersNeedNone) {
  LceProto::ClientMsg lce;
  lce.mutable_data()->mutable_estimation_reports_resp()->set_error_string("NONE");
  readWithoutMemory(lce, [](const LceProto::ClientMsg& message) {
    EXPECT_EQ("NONE", message.data().estimation_reports_resp().error_string());
  });
  LleProto::ClientMsg lle;
  lle.mutable_data()->mutable_ind_report_resp()->set_dl_latency_estimation(7);
  readWithoutMemory(lle, [](const LleProto::ClientMsg& message) {
    EXPECT_EQ(7u, message.data().ind_report_resp().dl_latency_estimation());
  });
  LliProto::ClientMsg lli;
  lli.mutable_data()->mutable_lli_ind_resp()->set_estimated_time_to_interruption(7);
  readWithoutMemory(lli, [](const LliProto::ClientMsg& message) {
    EXPECT_EQ(7u, message.data().lli_ind_resp().estimated_time_to_interruption());
  });
}

// Two answers in sequence are parsed as one, and the second member replaces the first. So this many
// of them need more than the first block.
TEST(OnArenaMemory, MemberThatCannotBeHadIsNotDestroyed) {
  const std::string text(100, 'x');
  LceProto::ClientMsg status;
  status.mutable_data()->mutable_status_msg()->set_status(LceProto::SUCCESS);
  LceProto::ClientMsg report;
  report.mutable_data()->mutable_estimation_reports_resp()->set_error_string(text);
  std::string bytes;
  for (int i = 0; i < 20; ++i) bytes += status.SerializeAsString() + report.SerializeAsString();
  bool thrown = false;
  bool read = false;
  const size_t failed = memory::failEach(
      memory::Caller::Anybody,
      [&] {
        thrown = read = false;
        try {
          OnArena<LceProto::ClientMsg> message;
          read = message->ParseFromString(bytes) &&
                 message->data().estimation_reports_resp().error_string() == text;
        } catch (const std::bad_alloc&) {
          thrown = true;
        }
      },
      [&](size_t nth) { EXPECT_TRUE(thrown) << nth; });
  std::printf("%zu allocations failed\n", failed);
  EXPECT_GT(failed, 20u);
  EXPECT_TRUE(read);
}

}  // namespace
