// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ClientLleUtils.h"

#include "StatusConversionSuite.h"

namespace {

struct Lle {
  using Utils = ClientLleUtils;
  using Status = LleProto::Status;
  static constexpr const char* kName = "ClientLleUtils";
};

INSTANTIATE_TYPED_TEST_SUITE_P(Lle, StatusConversion, Lle, UtilsName);

int network(int rat) {
  return ClientLleUtils::protoAccessNetworkToClient(static_cast<LleProto::RatType>(rat));
}

TEST(ClientLleUtilsTest, TechnologiesAreNumberedOneHigherAndUnknownIsNone) {
  recording::clear();
  EXPECT_EQ(SDL_ACCESS_NETWORK_TYPE_WCDMA, network(LleProto::WCDMA));
  EXPECT_EQ(SDL_ACCESS_NETWORK_TYPE_LTE, network(LleProto::LTE));
  EXPECT_EQ(SDL_ACCESS_NETWORK_TYPE_NR5G, network(LleProto::NR5G));
  for (int rat = 0; rat <= 2; ++rat) EXPECT_EQ(rat + 1, network(rat));
  for (int unknown : {-1, 3, 4, INT_MAX, INT_MIN}) EXPECT_EQ(0, network(unknown)) << unknown;
  EXPECT_TRUE(recording::lines().empty());
}

}  // namespace
