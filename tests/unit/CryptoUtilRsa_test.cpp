// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// CryptoUtil's RSA: accepted keys, wrapping and unwrapping, and the set-up of an encrypted log.
#include <openssl/err.h>

#include "CryptoUtil.h"
#include "EncryptedLogSetup.h"
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

  // Loads the key and returns what was printed.
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

  // The set-up with this key fails and logs these lines after the key's size. Returns what was
  // printed.
  static std::string expectRefused(std::string pem, const std::vector<std::string>& lines) {
    EncryptedLog::Settings settings;
    settings.aesKey.assign(3, 1);
    settings.wrappedKey.assign(3, 1);
    recording::clear();
    testing::internal::CaptureStderr();
    EXPECT_FALSE(makeLogKeys(pem, settings));
    EXPECT_TRUE(settings.aesKey.empty());
    EXPECT_TRUE(settings.wrappedKey.empty());
    const std::vector<std::string> texts = recording::texts();
    EXPECT_EQ(1 + lines.size(), texts.size());
    EXPECT_TRUE(endsWith(texts.at(0), " public_key size " + std::to_string(pem.size())));
    for (size_t i = 0; i < lines.size(); ++i) EXPECT_TRUE(endsWith(texts.at(i + 1), lines[i]));
    return testing::internal::GetCapturedStderr();
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
  EXPECT_EQ(Bytes(255, 0x5A), small);
  small.resize(message.size() - 1);
  EXPECT_EQ(0, crypto.decryptWithRSAPrivKey(reference::oaepEncrypt(key.n, key.e, message), small));
  EXPECT_EQ(Bytes(31, 0x5A), small);
}

TEST_F(CryptoUtilRsaTest, UnwrappingNeedsRoomForTheTextAlone) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, key.privatePem, kPrivate));
  for (const size_t size : {1u, 32u, 214u}) {
    const Bytes text(size, 0x42);
    Bytes out(size);
    EXPECT_EQ(static_cast<int>(size),
              crypto.decryptWithRSAPrivKey(reference::oaepEncrypt(key.n, key.e, text), out));
    EXPECT_EQ(text, out);
  }
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
  EXPECT_FALSE(takes(key.encryptedPem, kPrivate));  // and no passphrase is requested
}

TEST_F(CryptoUtilRsaTest, KeysOfAnySizeAndExponentAreTaken) {
  for (const int bits : {512, 584, 585, 2048, 4096, 4097, 16384})
    EXPECT_TRUE(takes(testkeys::madeUpPublicPem(bits), kPublic)) << bits;
  for (const char* exponent : {"1", "3", "10000"})
    EXPECT_TRUE(takes(testkeys::madeUpPublicPem(2048, exponent), kPublic)) << exponent;
}

TEST_F(CryptoUtilRsaTest, KeyThatIsTooSmallForTheMessageGivesMinusOne) {
  CryptoUtil crypto;
  ASSERT_TRUE(load(crypto, testkeys::madeUpPublicPem(584), kPublic));
  Bytes out(512, 0x5A);
  EXPECT_EQ(-1, crypto.encryptWithRSAPubKey(message, out));
  EXPECT_EQ(Bytes(512, 0x5A), out);
  ASSERT_TRUE(load(crypto, testkeys::madeUpPublicPem(585), kPublic));
  EXPECT_EQ(74, crypto.encryptWithRSAPubKey(message, out));
}

TEST_F(CryptoUtilRsaTest, RefusalIsPrintedWithItsReason) {
  CryptoUtil crypto;
  std::string printed;
  load(crypto, "no key", kPublic, &printed);
  EXPECT_NE(std::string::npos, printed.find(":PEM routines:get_name:no start line:"));
  EXPECT_NE(std::string::npos, printed.find(":Expecting: PUBLIC KEY"));
}

TEST_F(CryptoUtilRsaTest, WholeQueueIsPrintedWithErrorsOfTheApplicationFirst) {
  ERR_raise(ERR_LIB_USER, 77);
  ERR_raise_data(ERR_LIB_SYS, ENOENT, "of the %s", "application");
  CryptoUtil crypto;
  std::string printed;
  load(crypto, "no key", kPublic, &printed);
  size_t at = 0;
  for (const char* part : {"reason(77)", ":No such file or directory:", ":of the application\n",
                           ":no start line:", ":Expecting: PUBLIC KEY\n"}) {
    at = printed.find(part, at);
    EXPECT_NE(std::string::npos, at) << part << " in " << printed;
  }
  ERR_clear_error();
}

// Errors from any source, up to the capacity of the queue.
TEST_F(CryptoUtilRsaTest, ErrorsOfTheApplicationStayAsTheyWere) {
  for (const char* pem : {"no key", key.publicPem.c_str()}) {
    for (int i = 0; i < 15; ++i) {
      ERR_new();
      ERR_set_debug("File.c", 100 + i, "function");
      ERR_set_error(i % 2 == 0 ? ERR_LIB_USER : ERR_LIB_SYS, 1 + i, i % 3 == 0 ? nullptr : "%d", i);
    }
    CryptoUtil crypto;
    std::string printed;
    load(crypto, pem, kPublic, &printed);
    for (int i = 0; i < 15; ++i) {
      const char *file = "", *function = "", *data = "";
      int line = 0, flags = 0;
      const unsigned long code = ERR_get_error_all(&file, &line, &function, &data, &flags);
      EXPECT_EQ(i % 2 == 0 ? ERR_LIB_USER : ERR_LIB_SYS, ERR_GET_LIB(code));
      EXPECT_EQ(1 + i, ERR_GET_REASON(code));
      EXPECT_STREQ("File.c", file);
      EXPECT_EQ(100 + i, line);
      EXPECT_STREQ("function", function);
      EXPECT_EQ(i % 3 == 0 ? "" : std::to_string(i), data);
      EXPECT_EQ(i % 3 != 0, (flags & ERR_TXT_STRING) != 0);
    }
    EXPECT_EQ(0u, ERR_peek_error());
  }
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
    const std::string pem = pair.publicPem;
    EncryptedLog::Settings settings;
    const Bytes& session = settings.aesKey;
    Bytes& wrapped = settings.wrappedKey;
    recording::clear();
    ASSERT_TRUE(makeLogKeys(pem, settings));
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

TEST_F(CryptoUtilRsaTest, SetUpWithoutAKeyLeavesNothing) {
  for (const std::string& text : {std::string(), key.privatePem, testkeys::ecPublicPem()})
    expectRefused(text, {});
}

TEST_F(CryptoUtilRsaTest, SetUpRefusesAKeyWithoutRoomInTheHeader) {
  for (const int bits : {4097, 16384}) {
    EXPECT_EQ(
        "RSA key of " + std::to_string(bits) + " bits has no room in the header of a log file\n",
        expectRefused(testkeys::madeUpPublicPem(bits), {" encryptWithRSAPubKey failed"}));
  }
}

TEST_F(CryptoUtilRsaTest, SetUpRefusesAKeyThatHidesNothing) {
  for (const char* exponent : {"1", "10000"}) {
    EXPECT_EQ(
        "RSA key of 2048 bits hides nothing: its exponent is 1 or even\n",
        expectRefused(testkeys::madeUpPublicPem(2048, exponent), {" encryptWithRSAPubKey failed"}));
  }
}

// Every value except 0 counts as success, also -1: the field is then empty, and a line reports it.
// libcrypto refuses to wrap with a key that is smaller than the data, and with an exponent of more
// than 64 bits in a large key.
TEST_F(CryptoUtilRsaTest, SetUpSucceedsWhenWrappingGivesMinusOne) {
  for (const auto& [bits, exponent] :
       {std::pair(8, "3"), std::pair(512, "10001"), std::pair(584, "10001"),
        std::pair(4096, "10000000000000001")}) {
    std::string pem = testkeys::madeUpPublicPem(bits, exponent);
    CryptoUtil crypto;
    EncryptedLog::Settings settings;
    ASSERT_TRUE(load(crypto, pem, kPublic));
    Bytes out(512);
    ASSERT_EQ(-1, crypto.encryptWithRSAPubKey(message, out));
    recording::clear();
    testing::internal::CaptureStderr();
    EXPECT_TRUE(makeLogKeys(pem, settings));
    EXPECT_EQ("RSA key of " + std::to_string(bits) +
                  " bits cannot wrap a session key: nobody will be able to read the encrypted "
                  "logs\n",
              testing::internal::GetCapturedStderr());
    EXPECT_EQ(32u, settings.aesKey.size());
    EXPECT_EQ(Bytes(512), settings.wrappedKey);
    EXPECT_EQ(1u, recording::lines().size());
  }
}

// The code that sets the log up writes these lines; they show how far the set-up got.
TEST_F(CryptoUtilRsaTest, SetUpItselfSaysNothingAndKnowsWhetherWrappingFailed) {
  const struct {
    std::string pem;
    bool done, couldNotWrap;
  } kCases[] = {{testkeys::madeUpPublicPem(2048, "1"), false, true},
                {"", false, false},
                {testkeys::madeUpPublicPem(4097), false, true},
                {key.publicPem, true, false}};
  CryptoUtil crypto;
  for (const auto& c : kCases) {
    std::string pem = c.pem;
    Bytes session, wrapped;
    testing::internal::CaptureStderr();
    EXPECT_EQ(c.done, crypto.initializeRsaEncryption(session, wrapped, pem));
    EXPECT_EQ(c.done, testing::internal::GetCapturedStderr().empty());
    EXPECT_EQ(c.couldNotWrap, crypto.couldNotWrap());
  }
  EXPECT_TRUE(recording::lines().empty());
}

}  // namespace
