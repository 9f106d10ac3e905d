// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// CryptoUtil and GcmCipher when libcrypto fails. This program's definitions of libcrypto functions
// are used instead of the real ones.

#include <openssl/crypto.h>

#include <array>
#include <optional>

#include "CryptoUtil.h"
#include "EncryptedLogSetup.h"
#include "FailingRandom.h"
#include "GcmCipher.h"
#include "LogTestPeer.h"
#include "TestKeys.h"

namespace {

size_t wipedBytes = 0;

}  // namespace

void OPENSSL_cleanse(void* data, size_t size) {
  wipedBytes += size;
  ORB_NEXT(OPENSSL_cleanse)(data, size);
}

namespace {

using Bytes = CryptoUtil::Bytes;

class CryptoUtilFailureTest : public LogFixture {
 protected:
  CryptoUtilFailureTest() { ERR_clear_error(); }
  ~CryptoUtilFailureTest() override {
    libcrypto::forget();
    EXPECT_EQ(0u, ERR_peek_error());
  }

  std::string pem = testkeys::rsaKey(2048).publicPem;
  EncryptedLog::Settings settings;
  const Bytes& session = settings.aesKey;
  const Bytes& wrapped = settings.wrappedKey;
  CryptoUtil crypto;
};

TEST_F(CryptoUtilFailureTest, WithoutRandomBytesThereIsNoKeyAndNoIv) {
  libcrypto::randomFails = true;
  Bytes out;
  EXPECT_FALSE(crypto.genAESKey(out));
  EXPECT_FALSE(crypto.genAESIV(out));
}

TEST_F(CryptoUtilFailureTest, RandomBytesAreSaidToBeThereAllTheSame) {
  libcrypto::randomFails = true;
  Bytes out(4, 0x5A);
  EXPECT_TRUE(crypto.getRandomBytes(out));
  EXPECT_EQ(Bytes(4, 0x5A), out);
}

TEST_F(CryptoUtilFailureTest, NothingIsSealedWithoutARandomIv) {
  libcrypto::randomFails = true;
  Bytes cipher(5, 1), iv, tag;
  EXPECT_TRUE(crypto.encryptMsg2(Bytes(5, 2), Bytes(32), cipher, iv, tag));
  EXPECT_TRUE(cipher.empty());
}

TEST_F(CryptoUtilFailureTest, CipherDrawsNoIvUntilThereAreRandomBytesAgain) {
  GcmCipher cipher;
  std::array<uint8_t, GcmCipher::kIvSize> iv{};
  const Bytes key(32, 1);
  ASSERT_TRUE(cipher.setKey(key.data()));
  ASSERT_TRUE(cipher.newIv(iv.data()));
  libcrypto::randomFails = true;
  int drawn = 1;  // bytes that were drawn in advance can still be used
  while (cipher.newIv(iv.data())) ++drawn;
  EXPECT_EQ(85, drawn);
  EXPECT_FALSE(cipher.newIv(iv.data()));
  libcrypto::randomFails = false;
  EXPECT_TRUE(cipher.newIv(iv.data()));
}

TEST_F(CryptoUtilFailureTest, SetUpFailsWithoutASessionKey) {
  libcrypto::randomFails = true;
  EXPECT_FALSE(makeLogKeys(pem, settings));
  EXPECT_TRUE(session.empty());
  EXPECT_TRUE(wrapped.empty());
  EXPECT_EQ(1u, recording::lines().size());
}

TEST_F(CryptoUtilFailureTest, SetUpFailsWhenWrappingGivesZero) {
  libcrypto::wrapResult = 0;
  EXPECT_FALSE(makeLogKeys(pem, settings));
  EXPECT_TRUE(session.empty());
  EXPECT_TRUE(wrapped.empty());
  ASSERT_EQ(2u, recording::lines().size());
  const recording::Line line = recording::lines()[1];
  EXPECT_EQ(6, line.priority);
  EXPECT_EQ(0u, line.text.find("|ORB|CryptoUtil::initializeRsaEncryption:"));
  EXPECT_TRUE(endsWith(line.text, " encryptWithRSAPubKey failed"));
}

TEST_F(CryptoUtilFailureTest, AnyOtherResultOfWrappingIsASuccess) {
  for (const int result : {-1, 1, 256}) {
    libcrypto::wrapResult = result;
    recording::clear();
    EXPECT_TRUE(makeLogKeys(pem, settings)) << result;
    EXPECT_EQ(32u, session.size());
    EXPECT_EQ(Bytes(512), wrapped);
    EXPECT_EQ(1u, recording::lines().size());
  }
}

TEST_F(CryptoUtilFailureTest, SecretsAreOverwritten) {
  Bytes secret(32, 1);
  wipedBytes = 0;
  wipe(secret);
  EXPECT_EQ(32u, wipedBytes);

  libcrypto::wrapResult = 0;
  wipedBytes = 0;
  makeLogKeys(pem, settings);
  EXPECT_GE(wipedBytes, 32u);

  Bytes plain;
  wipedBytes = 0;
  EXPECT_FALSE(crypto.decryptMsg(Bytes(500), Bytes(32), Bytes(12), Bytes(16), plain));
  EXPECT_GE(wipedBytes, 500u);

  GcmCipher cipher;
  wipedBytes = 0;
  cipher.clear();
  EXPECT_GE(wipedBytes, 85u * 12u);  // IVs that were drawn in advance
}

}  // namespace
