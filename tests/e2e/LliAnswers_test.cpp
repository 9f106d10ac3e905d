// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The daemon's messages to LLI in the callback of the application and in the log.
#include "LliFixture.h"
#include "ServiceAnswersSuite.h"

namespace llitest {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(Lli, ServiceAnswers, LliNames, ServiceName);

// The daemon's indication, the callback's arguments, and the number of error lines of the
// conversions.
struct IndicationRow {
  Phase phase;
  int type;
  int preState;
  int handoffState;
  int source, target;
  LogLines complaints;
};

const LogLine kUnknownType{"protoHandoffInfoToClient", "Unknown HandoffInfo!"};
const LogLine kUnknownState{"protoHandoffStateToClient", "Unknown HandoffInfo!"};
const LogLine kUnknownPreState{"protoPreHandoffStateToClient", "Unknown PreHandoffState!"};
const LogLine kUnknownRat{"protoRatToClient", "Unknown LliRatType!"};

const IndicationRow kRows[] = {
    // The phase before a handoff is not one of its stages.
    {{0, 0, 0, 0, 0, 0}, 0, 0, 0, 0, 0, {kUnknownState}},
    {{0, 1, 3, 6, 1, 2}, 0, 1, 0, 3, 6, {kUnknownState}},
    // One value selects the kind of indication and the stage.
    {{1, 0, 1, 2, 500, 40}, 1, 0, 0, 1, 2, {}},
    {{2, 0, 4, 5, 0, 0}, 1, 0, 1, 4, 5, {}},
    {{3, 1, 7, 8, 0, 0}, 1, 1, 2, 7, 8, {}},
    {{4, 0, 9, 10, 20, 40}, 1, 0, 3, 9, 10, {}},
    {{4, 0, 11, 0, 4294967296, UINT64_MAX}, 1, 0, 3, 11, 0, {}},
    {{1, 0, 0, 11, UINT64_MAX, (uint64_t{1} << 63) + 7}, 1, 0, 0, 0, 11, {}},
    // Unknown values.
    {{5, 2, 12, -1, 3, 4},
     0,
     0,
     0,
     0,
     0,
     {kUnknownType, kUnknownState, kUnknownPreState, kUnknownRat, kUnknownRat}},
    {{-1, -1, 6, 100, 0, 0},
     0,
     0,
     0,
     6,
     0,
     {kUnknownType, kUnknownState, kUnknownPreState, kUnknownRat}},
};

class LliAnswers : public LliTest {
 protected:
  static LogLine at(int number, const std::string& text) { return {kBlobListener, number, text}; }
  static LogLine values(const IndicationRow& row) {
    return at(233, "LLI_IND_RESP handoffIndType: " + std::to_string(row.type) +
                       ", handoffState: " + std::to_string(row.handoffState) +
                       ", preHandoffState: " + std::to_string(row.preState) + ", sourceRat: " +
                       std::to_string(row.source) + ", targetRat: " + std::to_string(row.target) +
                       ", estimatedTimeToInterruption: " + std::to_string(row.phase.time) +
                       ", estimatedInterruptionDuration: " + std::to_string(row.phase.duration));
  }
};

TEST_F(LliAnswers, IndicationReachesItsCallbackWithAllValues) {
  enableQuietly();
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  CallList expected;
  LogLines lines;
  LogLines complaints;
  for (const IndicationRow& row : kRows) {
    send(indication(row.phase));
    expected.push_back({"interrupt", row.type,
                        interruption(row.preState, row.handoffState, row.source, row.target,
                                     row.phase.time, row.phase.duration)});
    lines.push_back(at(193, "Lli::blobListener"));
    lines.push_back(at(214, "LLI_IND_RESP"));
    lines.push_back(values(row));
    lines.push_back(at(251, "LLI_IND_RESP cb sent"));
    complaints.insert(complaints.end(), row.complaints.begin(), row.complaints.end());
  }
  EXPECT_EQ(settle(), expected);
  EXPECT_EQ(listenerLines(), lines);
  EXPECT_EQ(linesOfUnit("OrbSdk", "ClientLliUtils"), complaints);
}

TEST_F(LliAnswers, IndicationWithoutCallbackIsDropped) {
  enableQuietly();
  send(indication(kRows[2].phase));
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(), (LogLines{at(193, "Lli::blobListener"), at(214, "LLI_IND_RESP"),
                                       values(kRows[2]), at(253, "LLI_IND_RESP no cb")}));
}

TEST_F(LliAnswers, MissingMembersAreNamedAtTheirLines) {
  enableQuietly();
  for (const uint8_t event : Blob{0, 1}) sendRaw({0x08, event});
  EXPECT_TRUE(settle().empty());
  EXPECT_EQ(listenerLines(),
            (LogLines{at(193, "Lli::blobListener"), at(202, "STATUS_IND"),
                      at(210, "Status IND message data not filled"), at(193, "Lli::blobListener"),
                      at(214, "LLI_IND_RESP"), at(257, "LLI_IND_RESP message data not filled")}));
}

TEST_F(LliAnswers, TransactionIdIsNotRead) {
  enableQuietly();
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterrupt));
  LliProto::ClientMsg message = indication({1, 0, 0, 0, 0, 0});
  message.set_transaction_id(UINT64_MAX);
  send(message);
  EXPECT_EQ(settle(), (CallList{{"interrupt", 1, {}}}));
}

}  // namespace
}  // namespace llitest
