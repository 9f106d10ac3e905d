// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// CryptoUtil's RSA: which keys it takes, what it wraps and unwraps, and the set-up of an encrypted
// log.
#include <openssl/err.h>

#include "CryptoUtil.h"
#include "LogTestPeer.h"
#include "Reference.h"
#include "TestKeys.h"

namespace {

using Bytes = CryptoUtil::Bytes;

constexpr int kPublic = 1;
constexpr int kPrivate = 0;

class CryptoUtilRsaTest : public LogFixture {
 protected:
  CryptoUtilRsaTest() { ERR_clear_error(); }
  ~CryptoUtilRsaTest() override { EXPECT_EQ(0u, ERR_peek_error()); }

  // Loads the key, and says what was printed meanwhile.
  static bool load(CryptoUtil& crypto, std::string pem, int isPublic,
                   std::string* printed = nullptr) {
    testing::internal::CaptureStderr();
    const bool loaded = crypto.createRSA(pem, isPublic);
    const std::string text = testing::internal::GetCapturedStderr();
    if (printed != nullptr) *printed = text;
    EXPECT_EQ(loaded, text.empty()) << text;
    return loaded;
  }
  static bool takes(const std::string& pem, int isPublic) {
    CryptoUtil crypto;
    return load(crypto, pem, isPublic);
  }

  const testkeys::RsaKey& key = testkeys::rsaKey(2048);
  const Bytes message = Bytes(32, 0x41);
};

TEST_F(CryptoUtilRsaTest, WrapsWhatAnotherImplementationUnwraps) {
  for (const unsigned bits : {2048u, 3072u, 4096u}) {
    const testkeys::RsaKey& pair = testkeys::rsaKey(bits);
    CryptoUtil crypto;
    ASSERT_TRUE(load(crypto, pair.publicPem, kPublic));
    Bytes wrapped(bits / 8);
    EXPECT_EQ(static_cast<int>(bits / 8), crypto.encryptWithRSAPubKey(message, wrapped));
    EXPECT_EQ(message, reference::oaepDecrypt(pair.n, pair.e, pair.d, wrapped)) << bits;
  }
}

TEST_F(CryptoUtilRsaTest, UnwrapsWithAPrivateKeyInEitherForm) {
  const Bytes wrapped = reference::oaepEncrypt(key.n, key.e, message);
  for (const std::string& pem : {key.privatePem, key.privatePkcs1Pem}) {
    CryptoUtil crypto;
    ASSERT_TRUE(load(crypto, pem, kPrivate));
    Bytes out(256);
    EXPECT_EQ(32, crypto.decryptWithRSAPrivKey(wrapped, out));
    out.resize(32);
    EXPECT_EQ(message, out);
  }
}

TEST_F(CryptoUtilRsaTest, PrivateKeyWrapsToo) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.privatePem, kPrivate));
  Bytes wrapped(256), out(256);
  EXPECT_EQ(256, crypto.encryptWithRSAPubKey(message, wrapped));
  EXPECT_EQ(32, crypto.decryptWithRSAPrivKey(wrapped, out));
}

TEST_F(CryptoUtilRsaTest, WrappingIsRandom) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.publicPem, kPublic));
  Bytes first(256), second(256);
  crypto.encryptWithRSAPubKey(message, first);
  crypto.encryptWithRSAPubKey(message, second);
  EXPECT_NE(first, second);
}

TEST_F(CryptoUtilRsaTest, LargerRoomKeepsItsEnd) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.publicPem, kPublic));
  Bytes wrapped(300, 0x5A);
  EXPECT_EQ(256, crypto.encryptWithRSAPubKey(message, wrapped));
  EXPECT_EQ(Bytes(44, 0x5A), Bytes(wrapped.begin() + 256, wrapped.end()));
}

TEST_F(CryptoUtilRsaTest, MessageThatDoesNotFitIsRefused) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.publicPem, kPublic));
  Bytes wrapped(256);
  EXPECT_EQ(256, crypto.encryptWithRSAPubKey(Bytes(256 - 42), wrapped));
  EXPECT_EQ(-1, crypto.encryptWithRSAPubKey(Bytes(256 - 41), wrapped));
}

TEST_F(CryptoUtilRsaTest, TooLittleRoomGivesNothing) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.privatePem, kPrivate));
  Bytes small(255, 0x5A);
  EXPECT_EQ(0, crypto.encryptWithRSAPubKey(message, small));
  EXPECT_EQ(0, crypto.decryptWithRSAPrivKey(Bytes(256), small));
  EXPECT_EQ(Bytes(255, 0x5A), small);
}

TEST_F(CryptoUtilRsaTest, WithoutAKeyThereIsNothing) {
  CryptoUtil crypto;
  Bytes out(512, 0x5A);
  EXPECT_EQ(0, crypto.encryptWithRSAPubKey(message, out));
  EXPECT_EQ(0, crypto.decryptWithRSAPrivKey(message, out));
  EXPECT_EQ(Bytes(512, 0x5A), out);
}

TEST_F(CryptoUtilRsaTest, WrongKeyAndChangedBlocksAreRefused) {
  Bytes wrapped = reference::oaepEncrypt(key.n, key.e, message);
  Bytes out(256);
  CryptoUtil other;
  ASSERT_TRUE(load(other, testkeys::otherRsaKey().privatePem, kPrivate));
  EXPECT_EQ(-1, other.decryptWithRSAPrivKey(wrapped, out));
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.privatePem, kPrivate));
  wrapped[200] ^= 1;
  EXPECT_EQ(-1, crypto.decryptWithRSAPrivKey(wrapped, out));
  EXPECT_EQ(-1, crypto.decryptWithRSAPrivKey({}, out));
  EXPECT_EQ(-1, crypto.decryptWithRSAPrivKey(Bytes(257, 1), out));
}

TEST_F(CryptoUtilRsaTest, PublicKeyDoesNotUnwrap) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.publicPem, kPublic));
  Bytes out(256);
  EXPECT_EQ(-1, crypto.decryptWithRSAPrivKey(reference::oaepEncrypt(key.n, key.e, message), out));
}

TEST_F(CryptoUtilRsaTest, TextAroundThePublicBlockIsPassedOver) {
  EXPECT_TRUE(takes("comment\n" + key.publicPem + "more\n", kPublic));
  EXPECT_TRUE(takes(testkeys::ecPublicPem().substr(0, 5) + "\n" + key.publicPem, kPublic));
}

TEST_F(CryptoUtilRsaTest, WhatIsNoPublicKeyIsRefused) {
  EXPECT_FALSE(takes("", kPublic));
  EXPECT_FALSE(takes("no key", kPublic));
  EXPECT_FALSE(takes(std::string(1000, '\0'), kPublic));
  EXPECT_FALSE(takes(key.privatePem, kPublic));
  EXPECT_FALSE(takes(key.privatePkcs1Pem, kPublic));
  EXPECT_FALSE(takes(key.publicPkcs1Pem, kPublic));
  EXPECT_FALSE(takes(testkeys::ecPublicPem(), kPublic));
  EXPECT_FALSE(takes(key.publicPem.substr(0, key.publicPem.size() / 2), kPublic));
}

TEST_F(CryptoUtilRsaTest, WhatIsNoPrivateKeyIsRefused) {
  EXPECT_FALSE(takes("", kPrivate));
  EXPECT_FALSE(takes(key.publicPem, kPrivate));
  EXPECT_FALSE(takes(testkeys::ecPrivatePem(), kPrivate));
  EXPECT_FALSE(takes(key.encryptedPem, kPrivate));  // and nobody is asked for its passphrase
}

TEST_F(CryptoUtilRsaTest, OnlySizesThatCanWrapASessionKeyAreTaken) {
  EXPECT_FALSE(takes(testkeys::madeUpPublicPem(512), kPublic));
  EXPECT_FALSE(takes(testkeys::madeUpPublicPem(584), kPublic));
  EXPECT_TRUE(takes(testkeys::madeUpPublicPem(585), kPublic));
  EXPECT_TRUE(takes(testkeys::madeUpPublicPem(4096), kPublic));
  EXPECT_FALSE(takes(testkeys::madeUpPublicPem(4097), kPublic));
  EXPECT_FALSE(takes(testkeys::madeUpPublicPem(16384), kPublic));
}

TEST_F(CryptoUtilRsaTest, ExponentThatHidesNothingIsRefused) {
  EXPECT_FALSE(takes(testkeys::madeUpPublicPem(2048, "1"), kPublic));
  EXPECT_FALSE(takes(testkeys::madeUpPublicPem(2048, "10000"), kPublic));
  EXPECT_TRUE(takes(testkeys::madeUpPublicPem(2048, "3"), kPublic));
}

TEST_F(CryptoUtilRsaTest, RefusalIsPrintedWithItsReason) {
  CryptoUtil crypto;
  std::string printed;
  load(crypto, "no key", kPublic, &printed);
  EXPECT_NE(std::string::npos, printed.find(":PEM routines:get_name:no start line:"));
  EXPECT_NE(std::string::npos, printed.find(":Expecting: PUBLIC KEY"));
  load(crypto, testkeys::madeUpPublicPem(512), kPublic, &printed);
  EXPECT_EQ("RSA key of 512 bits cannot wrap a session key\n", printed);
}

TEST_F(CryptoUtilRsaTest, OnlyItsLastReasonIsPrintedBehindErrorsOfTheApplication) {
  ERR_raise(ERR_LIB_USER, 77);
  CryptoUtil crypto;
  std::string printed;
  load(crypto, "no key", kPublic, &printed);
  EXPECT_EQ("error:0480006C:PEM routines::no start line\n", printed);
  EXPECT_EQ(77, ERR_GET_REASON(ERR_get_error()));
}

TEST_F(CryptoUtilRsaTest, RefusedKeyTakesTheFormerWithIt) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.publicPem, kPublic));
  EXPECT_FALSE(load(crypto, "no key", kPublic));
  Bytes out(512);
  EXPECT_EQ(0, crypto.encryptWithRSAPubKey(message, out));
  EXPECT_TRUE(load(crypto, testkeys::otherRsaKey().publicPem, kPublic));
  EXPECT_EQ(256, crypto.encryptWithRSAPubKey(message, out));
}

TEST_F(CryptoUtilRsaTest, ErrorsThatTheApplicationHasQueuedStay) {
  ERR_raise(ERR_LIB_USER, 77);
  const unsigned long queued = ERR_peek_error();
  CryptoUtil crypto, publicOnly;
  ASSERT_TRUE(load(crypto, key.privatePem, kPrivate));
  ASSERT_TRUE(load(publicOnly, key.publicPem, kPublic));
  Bytes out(256);
  EXPECT_EQ(-1, crypto.encryptWithRSAPubKey(Bytes(256), out));
  EXPECT_EQ(-1, crypto.decryptWithRSAPrivKey(Bytes(256, 1), out));
  EXPECT_EQ(-1, publicOnly.decryptWithRSAPrivKey(Bytes(256, 1), out));
  EXPECT_EQ(256, crypto.encryptWithRSAPubKey(message, out));
  EXPECT_EQ(queued, ERR_get_error());
  EXPECT_EQ(0u, ERR_peek_error());
}

TEST_F(CryptoUtilRsaTest, SetUpGivesASessionKeyAndItsWrappedFormInAFieldOf512Bytes) {
  for (const unsigned bits : {2048u, 4096u}) {
    const testkeys::RsaKey& pair = testkeys::rsaKey(bits);
    std::string pem = pair.publicPem;
    Bytes session, wrapped;
    recording::clear();
    ASSERT_TRUE(CryptoUtil().initializeRsaEncryption(session, wrapped, pem));
    ASSERT_EQ(32u, session.size());
    ASSERT_EQ(512u, wrapped.size());
    EXPECT_EQ(Bytes(512 - bits / 8), Bytes(wrapped.begin() + bits / 8, wrapped.end()));
    wrapped.resize(bits / 8);
    EXPECT_EQ(session, reference::oaepDecrypt(pair.n, pair.e, pair.d, wrapped));
    ASSERT_EQ(1u, recording::lines().size());
    const recording::Line line = recording::lines()[0];
    EXPECT_EQ(6, line.priority);
    EXPECT_EQ(0u, line.text.find("|ORB|CryptoUtil::initializeRsaEncryption:"));
    EXPECT_TRUE(endsWith(line.text, " public_key size " + std::to_string(pem.size())));
  }
}

TEST_F(CryptoUtilRsaTest, SetUpDrawsANewKeyEachTime) {
  std::string pem = key.publicPem;
  Bytes first, second, wrapped;
  ASSERT_TRUE(CryptoUtil().initializeRsaEncryption(first, wrapped, pem));
  ASSERT_TRUE(CryptoUtil().initializeRsaEncryption(second, wrapped, pem));
  EXPECT_NE(first, second);
}

TEST_F(CryptoUtilRsaTest, SetUpWithoutAProperKeyLeavesNothing) {
  for (const std::string& text :
       {std::string(), key.privatePem, testkeys::ecPublicPem(), testkeys::madeUpPublicPem(512),
        testkeys::madeUpPublicPem(16384)}) {
    std::string pem = text;
    Bytes session(3, 1), wrapped(3, 1);
    recording::clear();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(CryptoUtil().initializeRsaEncryption(session, wrapped, pem));
    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(session.empty());
    EXPECT_TRUE(wrapped.empty());
    ASSERT_EQ(1u, recording::lines().size());
    EXPECT_TRUE(endsWith(recording::texts()[0], " public_key size " + std::to_string(pem.size())));
  }
}

// Whatever is not 0 counts as success, -1 too: the field then has nothing in it. libcrypto refuses
// to wrap with an exponent of more than 64 bits in a large key.
TEST_F(CryptoUtilRsaTest, SetUpSucceedsWhenWrappingGivesMinusOne) {
  std::string pem = testkeys::madeUpPublicPem(4096, "10000000000000001");
  CryptoUtil crypto;
  Bytes session, wrapped;
  ASSERT_TRUE(load(crypto, pem, kPublic));
  Bytes out(512);
  ASSERT_EQ(-1, crypto.encryptWithRSAPubKey(message, out));
  EXPECT_TRUE(crypto.initializeRsaEncryption(session, wrapped, pem));
  EXPECT_EQ(32u, session.size());
  EXPECT_EQ(Bytes(512), wrapped);
  EXPECT_EQ(1u, recording::lines().size());
}

}  // namespace
