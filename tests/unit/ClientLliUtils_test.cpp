// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ClientLliUtils.h"

#include "StatusConversionSuite.h"

namespace {

struct Lli {
  using Utils = ClientLliUtils;
  using Status = LliProto::Status;
  static constexpr const char* kName = "ClientLliUtils";
};

INSTANTIATE_TYPED_TEST_SUITE_P(Lli, StatusConversion, Lli, UtilsName);

// One conversion: results[i] is the result for the number i, or "unknown" if it logs and gives 0.
struct Conversion {
  const char* function;
  int (*convert)(int);
  std::vector<int> results;
  const char* complaint;
};

constexpr int kUnknown = -1;

const Conversion kConversions[] = {
    {"protoHandoffInfoToClient",
     [](int value) -> int {
       return ClientLliUtils::protoHandoffInfoToClient(static_cast<LliProto::HandoffInfo>(value));
     },
     {0, 1, 1, 1, 1},
     "Unknown HandoffInfo!"},
    // Before a handoff there is no stage; the line is the same as for an unknown number.
    {"protoHandoffStateToClient",
     [](int value) -> int {
       return ClientLliUtils::protoHandoffStateToClient(static_cast<LliProto::HandoffInfo>(value));
     },
     {kUnknown, 0, 1, 2, 3},
     "Unknown HandoffInfo!"},
    {"protoPreHandoffStateToClient",
     [](int value) -> int {
       return ClientLliUtils::protoPreHandoffStateToClient(
           static_cast<LliProto::PreHandoffState>(value));
     },
     {0, 1},
     "Unknown PreHandoffState!"},
    {"protoRatToClient",
     [](int value) -> int {
       return ClientLliUtils::protoRatToClient(static_cast<LliProto::LliRatType>(value));
     },
     {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11},
     "Unknown LliRatType!"},
};

class ClientLliUtilsTest : public ::testing::TestWithParam<Conversion> {
 protected:
  static void expectUnknown(int value) {
    SCOPED_TRACE(value);
    recording::clear();
    EXPECT_EQ(0, GetParam().convert(value));
    expectOneSdkLine("ClientLliUtils", GetParam().function, GetParam().complaint);
  }
};

TEST_P(ClientLliUtilsTest, EveryListedNumberGivesItsValueAndOnlyUnknownOnesLog) {
  int value = 0;
  for (const int result : GetParam().results) {
    if (result == kUnknown) {
      expectUnknown(value);
    } else {
      recording::clear();
      EXPECT_EQ(result, GetParam().convert(value)) << value;
      EXPECT_TRUE(recording::lines().empty()) << value;
    }
    ++value;
  }
}

TEST_P(ClientLliUtilsTest, UnlistedNumbersGiveZeroAndALine) {
  const int end = static_cast<int>(GetParam().results.size());
  for (const int value : {-1, end, end + 1, INT_MAX, INT_MIN}) expectUnknown(value);
}

INSTANTIATE_TEST_SUITE_P(EachConversion, ClientLliUtilsTest, ::testing::ValuesIn(kConversions),
                         [](const auto& row) { return std::string(row.param.function); });

TEST(ClientLliUtilsNames, ResultsAreTheClientsEnumerators) {
  using U = ClientLliUtils;
  EXPECT_EQ(LLI_HANDOFF_IND_TYPE_PRE_HANDOFF, U::protoHandoffInfoToClient(LliProto::PRE_HANDOFF));
  EXPECT_EQ(LLI_HANDOFF_IND_TYPE_HANDOFF, U::protoHandoffInfoToClient(LliProto::HANDOFF_IMMINENT));
  EXPECT_EQ(LLI_HANDOFF_STATE_START, U::protoHandoffStateToClient(LliProto::HANDOFF_START));
  EXPECT_EQ(LLI_HANDOFF_STATE_SUCCESS, U::protoHandoffStateToClient(LliProto::HANDOFF_SUCCESS));
  EXPECT_EQ(LLI_HANDOFF_STATE_FAILURE, U::protoHandoffStateToClient(LliProto::HANDOFF_FAILURE));
  EXPECT_EQ(LLI_HANDOFF_STATE_IMMINENT, U::protoHandoffStateToClient(LliProto::HANDOFF_IMMINENT));
  EXPECT_EQ(LLI_HANDOFF_STATE_START, U::protoHandoffStateToClient(LliProto::PRE_HANDOFF));
  EXPECT_EQ(LLI_PRE_HANDOFF_STATE_ENTRY, U::protoPreHandoffStateToClient(LliProto::ENTRY));
  EXPECT_EQ(LLI_PRE_HANDOFF_STATE_EXIT, U::protoPreHandoffStateToClient(LliProto::EXIT));
  EXPECT_EQ(LLI_RAT_3GPP_LTE, U::protoRatToClient(LliProto::LLI_3GPP_LTE));
  EXPECT_EQ(LLI_RAT_3GPP_5G, U::protoRatToClient(LliProto::LLI_3GPP_5G));
  EXPECT_EQ(LLI_RAT_3GPP2_WLAN, U::protoRatToClient(LliProto::LLI_3GPP2_WLAN));
}

}  // namespace
