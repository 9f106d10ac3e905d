// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// CryptoUtil's key agreement.
#include <gtest/gtest.h>
#include <openssl/err.h>
#include <openssl/obj_mac.h>

#include <string>

#include "CryptoUtil.h"
#include "Reference.h"

namespace {

using Bytes = CryptoUtil::Bytes;

struct Curve {
  const char* name;  // its name in the other implementation
  int id;
  size_t size;  // of a coordinate
};

void PrintTo(const Curve& curve, std::ostream* out) { *out << curve.name; }

// At the end of each test, libcrypto's error queue must be as the application left it.
class CryptoUtilEccTest : public testing::TestWithParam<Curve> {
 protected:
  CryptoUtilEccTest() {
    ERR_clear_error();
    ERR_raise(ERR_LIB_USER, 77);
  }
  ~CryptoUtilEccTest() override {
    EXPECT_EQ(77, ERR_GET_REASON(ERR_get_error()));
    EXPECT_EQ(0u, ERR_peek_error());
  }

  static Bytes scalar(uint8_t seed) {
    Bytes bytes(GetParam().size - 1);
    for (size_t i = 0; i < bytes.size(); ++i) bytes[i] = static_cast<uint8_t>(seed + 13 * i);
    return bytes;
  }
  // A peer's point that is refused without a result.
  void expectRefused(const Bytes& point) {
    Bytes secret(7, 1);
    EXPECT_FALSE(mine.generateEccSharedKey(point, secret));
    EXPECT_TRUE(secret.empty());
  }

  CryptoUtil mine;
};

TEST_P(CryptoUtilEccTest, PublicPointIsUncompressed) {
  Bytes point(3, 1), other;
  ASSERT_TRUE(mine.generateEccPublicKey(point, GetParam().id));
  ASSERT_EQ(1 + 2 * GetParam().size, point.size());
  EXPECT_EQ(4, point[0]);
  ASSERT_TRUE(mine.generateEccPublicKey(other, GetParam().id));
  EXPECT_NE(point, other);  // a new pair each time
}

TEST_P(CryptoUtilEccTest, TwoSidesGetOneSecret) {
  CryptoUtil theirs;
  Bytes myPoint, theirPoint, mySecret, theirSecret;
  ASSERT_TRUE(mine.generateEccPublicKey(myPoint, GetParam().id));
  ASSERT_TRUE(theirs.generateEccPublicKey(theirPoint, GetParam().id));
  ASSERT_TRUE(mine.generateEccSharedKey(theirPoint, mySecret));
  ASSERT_TRUE(theirs.generateEccSharedKey(myPoint, theirSecret));
  EXPECT_EQ(GetParam().size, mySecret.size());
  EXPECT_EQ(mySecret, theirSecret);
}

TEST_P(CryptoUtilEccTest, SecretIsTheXCoordinateThatAnotherImplementationFinds) {
  for (uint8_t seed = 1; seed < 20; ++seed) {
    Bytes point, secret;
    ASSERT_TRUE(mine.generateEccPublicKey(point, GetParam().id));
    ASSERT_TRUE(
        mine.generateEccSharedKey(reference::publicPoint(GetParam().name, scalar(seed)), secret));
    EXPECT_EQ(reference::sharedX(GetParam().name, scalar(seed), point), secret);
  }
}

TEST_P(CryptoUtilEccTest, NextPairTakesThePlaceOfTheFirst) {
  const Bytes peer = reference::publicPoint(GetParam().name, scalar(1));
  Bytes first, second, secret;
  ASSERT_TRUE(mine.generateEccPublicKey(first, GetParam().id));
  ASSERT_TRUE(mine.generateEccPublicKey(second, GetParam().id));
  ASSERT_TRUE(mine.generateEccSharedKey(peer, secret));
  EXPECT_EQ(reference::sharedX(GetParam().name, scalar(1), second), secret);
}

TEST_P(CryptoUtilEccTest, UnknownCurveGivesNothingAndKeepsThePair) {
  Bytes point, none(3, 1), secret;
  ASSERT_TRUE(mine.generateEccPublicKey(point, GetParam().id));
  for (const int id : {NID_undef, -1, 1000000, NID_sha256, NID_X25519, NID_rsaEncryption}) {
    none.assign(3, 1);
    EXPECT_FALSE(mine.generateEccPublicKey(none, id)) << id;
    EXPECT_TRUE(none.empty());
  }
  ASSERT_TRUE(
      mine.generateEccSharedKey(reference::publicPoint(GetParam().name, scalar(1)), secret));
  EXPECT_EQ(reference::sharedX(GetParam().name, scalar(1), point), secret);
}

TEST_P(CryptoUtilEccTest, WithoutAPairThereIsNoSecret) {
  expectRefused(reference::publicPoint(GetParam().name, scalar(1)));
}

TEST_P(CryptoUtilEccTest, PointThatIsNotOnTheCurveIsRefused) {
  Bytes own;
  ASSERT_TRUE(mine.generateEccPublicKey(own, GetParam().id));
  const Bytes peer = reference::publicPoint(GetParam().name, scalar(1));
  Bytes changed = peer;
  changed.back() ^= 1;
  expectRefused(changed);
  changed = peer;
  changed[1 + GetParam().size / 2] ^= 1;
  expectRefused(changed);
  Bytes zeros(peer.size(), 0);
  zeros[0] = 4;
  expectRefused(zeros);
  Bytes ones(peer.size(), 0xFF);  // coordinates beyond the field
  ones[0] = 4;
  expectRefused(ones);
}

TEST_P(CryptoUtilEccTest, WhatIsNoPointIsRefused) {
  Bytes own, secret;
  ASSERT_TRUE(mine.generateEccPublicKey(own, GetParam().id));
  const Bytes peer = reference::publicPoint(GetParam().name, scalar(1));
  expectRefused({});
  expectRefused({0});  // the point at infinity
  expectRefused({4});
  expectRefused(Bytes(peer.begin(), peer.end() - 1));
  Bytes longer = peer;
  longer.push_back(0);
  expectRefused(longer);
  Bytes unknownForm = peer;
  unknownForm[0] = 5;
  expectRefused(unknownForm);
  expectRefused(Bytes(2000, 4));
  EXPECT_TRUE(mine.generateEccSharedKey(peer, secret));  // the key pair can still be used
}

TEST_P(CryptoUtilEccTest, PointOfAnotherCurveIsRefused) {
  Bytes own;
  ASSERT_TRUE(mine.generateEccPublicKey(own, GetParam().id));
  for (const char* other : {"NIST P-256", "NIST P-384", "NIST P-521", "secp256k1"}) {
    if (GetParam().name == std::string(other)) continue;
    expectRefused(reference::publicPoint(other, Bytes(20, 7)));
  }
}

INSTANTIATE_TEST_SUITE_P(Curves, CryptoUtilEccTest,
                         testing::Values(Curve{"NIST P-256", NID_X9_62_prime256v1, 32},
                                         Curve{"NIST P-384", NID_secp384r1, 48},
                                         Curve{"NIST P-521", NID_secp521r1, 66},
                                         Curve{"secp256k1", NID_secp256k1, 32}));

// About one secret in 256 begins with a zero byte; it must have the size of a coordinate.
TEST(CryptoUtilEccSizeTest, SecretKeepsItsLeadingZeros) {
  CryptoUtil mine;
  const Bytes scalar(30, 0x33);
  const Bytes peer = reference::publicPoint("NIST P-256", scalar);
  Bytes point, secret;
  do {
    ASSERT_TRUE(mine.generateEccPublicKey(point, NID_X9_62_prime256v1));
    ASSERT_TRUE(mine.generateEccSharedKey(peer, secret));
    ASSERT_EQ(32u, secret.size());
  } while (secret[0] != 0);
  EXPECT_EQ(reference::sharedX("NIST P-256", scalar, point), secret);
}

}  // namespace
