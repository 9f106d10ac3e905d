// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// CryptoUtil and GcmCipher when single calls of libcrypto fail, one after the other. This program's
// definitions of libcrypto functions are used instead of the real ones.
#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/obj_mac.h>

#include <array>
#include <string>

#include "CryptoUtil.h"
#include "GcmCipher.h"
#include "Interposed.h"
#include "LogTestPeer.h"
#include "TestKeys.h"

namespace {

// The function whose next call, or a later one, fails. Calls inside libcrypto are not affected.
std::string failing;
int callsBefore = 0;

bool fails(const char* function) {
  if (failing != function || callsBefore-- > 0) return false;
  failing.clear();
  ERR_raise(ERR_LIB_EVP, 1);
  return true;
}

}  // namespace

#define MAY_FAIL(Result, failure, name, parameters, arguments) \
  Result name parameters { return fails(#name) ? failure : ORB_NEXT(name) arguments; }

MAY_FAIL(EVP_PKEY*, nullptr, EVP_PKEY_new, (), ())
MAY_FAIL(EVP_PKEY_CTX*, nullptr, EVP_PKEY_CTX_new, (EVP_PKEY * key, ENGINE* engine), (key, engine))
MAY_FAIL(EVP_PKEY_CTX*, nullptr, EVP_PKEY_CTX_new_id, (int id, ENGINE* engine), (id, engine))
MAY_FAIL(int, 0, EVP_PKEY_copy_parameters, (EVP_PKEY * to, const EVP_PKEY* from), (to, from))
MAY_FAIL(int, 0, EVP_PKEY_derive_init, (EVP_PKEY_CTX * context), (context))
MAY_FAIL(int, 0, EVP_PKEY_derive_set_peer, (EVP_PKEY_CTX * context, EVP_PKEY* peer),
         (context, peer))
MAY_FAIL(int, 0, EVP_PKEY_derive, (EVP_PKEY_CTX * context, unsigned char* key, size_t* size),
         (context, key, size))
MAY_FAIL(int, 0, EVP_PKEY_keygen_init, (EVP_PKEY_CTX * context), (context))
MAY_FAIL(int, 0, EVP_PKEY_keygen, (EVP_PKEY_CTX * context, EVP_PKEY** key), (context, key))
MAY_FAIL(size_t, 0, EVP_PKEY_get1_encoded_public_key, (EVP_PKEY * key, unsigned char** point),
         (key, point))
MAY_FAIL(int, 0, EVP_Digest,
         (const void* data, size_t size, unsigned char* out, unsigned* outSize, const EVP_MD* kind,
          ENGINE* engine),
         (data, size, out, outSize, kind, engine))
MAY_FAIL(BIO*, nullptr, BIO_new_mem_buf, (const void* data, int size), (data, size))
MAY_FAIL(EVP_CIPHER_CTX*, nullptr, EVP_CIPHER_CTX_new, (), ())
MAY_FAIL(int, 0, EVP_CIPHER_CTX_ctrl,
         (EVP_CIPHER_CTX * context, int command, int number, void* data),
         (context, command, number, data))
MAY_FAIL(int, 0, EVP_EncryptInit_ex,
         (EVP_CIPHER_CTX * context, const EVP_CIPHER* kind, ENGINE* engine,
          const unsigned char* key, const unsigned char* iv),
         (context, kind, engine, key, iv))
MAY_FAIL(int, 0, EVP_EncryptUpdate,
         (EVP_CIPHER_CTX * context, unsigned char* out, int* outSize, const unsigned char* in,
          int size),
         (context, out, outSize, in, size))
MAY_FAIL(int, 0, EVP_EncryptFinal_ex, (EVP_CIPHER_CTX * context, unsigned char* out, int* size),
         (context, out, size))
MAY_FAIL(int, 0, EVP_DecryptInit_ex,
         (EVP_CIPHER_CTX * context, const EVP_CIPHER* kind, ENGINE* engine,
          const unsigned char* key, const unsigned char* iv),
         (context, kind, engine, key, iv))
MAY_FAIL(int, 0, EVP_DecryptUpdate,
         (EVP_CIPHER_CTX * context, unsigned char* out, int* outSize, const unsigned char* in,
          int size),
         (context, out, outSize, in, size))
MAY_FAIL(EVP_RAND*, nullptr, EVP_RAND_fetch,
         (OSSL_LIB_CTX * library, const char* name, const char* properties),
         (library, name, properties))
MAY_FAIL(EVP_RAND_CTX*, nullptr, EVP_RAND_CTX_new, (EVP_RAND * kind, EVP_RAND_CTX* parent),
         (kind, parent))
MAY_FAIL(int, 0, EVP_RAND_instantiate,
         (EVP_RAND_CTX * context, unsigned strength, int resistance, const unsigned char* text,
          size_t size, const OSSL_PARAM* parameters),
         (context, strength, resistance, text, size, parameters))

#undef MAY_FAIL

namespace {

using Bytes = CryptoUtil::Bytes;
using Calls = std::vector<std::pair<std::string, int>>;

// At the end of each test, libcrypto's error queue must be empty.
class CryptoUtilFailingCallsTest : public LogFixture {
 protected:
  CryptoUtilFailingCallsTest() { ERR_clear_error(); }
  ~CryptoUtilFailingCallsTest() override {
    failing.clear();
    EXPECT_EQ(0u, ERR_peek_error());
  }

  // Calls @p check for each of these failures; the number is the number of successful calls before.
  template <class Check>
  static void withEach(const Calls& calls, const Check& check) {
    for (const auto& [function, before] : calls) {
      SCOPED_TRACE(function + " after " + std::to_string(before));
      failing = function;
      callsBefore = before;
      check();
      EXPECT_TRUE(failing.empty()) << "not called";
    }
  }

  const Bytes key = Bytes(32, 1), iv = Bytes(12, 2), message = Bytes(40, 3);
  CryptoUtil crypto;
};

TEST_F(CryptoUtilFailingCallsTest, WithoutASharedSecretThereIsNothing) {
  Bytes mine, theirs;
  CryptoUtil other;
  ASSERT_TRUE(crypto.generateEccPublicKey(mine, NID_X9_62_prime256v1));
  ASSERT_TRUE(other.generateEccPublicKey(theirs, NID_X9_62_prime256v1));
  withEach({{"EVP_PKEY_new", 0},
            {"EVP_PKEY_CTX_new", 0},
            {"EVP_PKEY_copy_parameters", 0},
            {"EVP_PKEY_derive_init", 0},
            {"EVP_PKEY_derive_set_peer", 0},
            {"EVP_PKEY_derive", 0},
            {"EVP_PKEY_derive", 1}},
           [&] {
             Bytes secret(3, 1);
             EXPECT_FALSE(crypto.generateEccSharedKey(theirs, secret));
             EXPECT_TRUE(secret.empty());
           });
  Bytes secret;
  EXPECT_TRUE(crypto.generateEccSharedKey(theirs, secret));
}

TEST_F(CryptoUtilFailingCallsTest, WithoutAPairOfKeysTheFormerOneStays) {
  Bytes mine, theirs, before, after;
  CryptoUtil other;
  ASSERT_TRUE(crypto.generateEccPublicKey(mine, NID_X9_62_prime256v1));
  ASSERT_TRUE(other.generateEccPublicKey(theirs, NID_X9_62_prime256v1));
  ASSERT_TRUE(crypto.generateEccSharedKey(theirs, before));
  withEach({{"EVP_PKEY_CTX_new_id", 0},
            {"EVP_PKEY_keygen_init", 0},
            {"EVP_PKEY_keygen", 0},
            {"EVP_PKEY_get1_encoded_public_key", 0}},
           [&] {
             Bytes point(3, 1);
             EXPECT_FALSE(crypto.generateEccPublicKey(point, NID_X9_62_prime256v1));
             EXPECT_TRUE(point.empty());
           });
  EXPECT_TRUE(crypto.generateEccSharedKey(theirs, after));
  EXPECT_EQ(before, after);
}

TEST_F(CryptoUtilFailingCallsTest, WithoutADigestTheResultIsEmpty) {
  withEach({{"EVP_Digest", 0}}, [&] {
    Bytes digest(3, 1);
    EXPECT_FALSE(crypto.sha256(message, digest));
    EXPECT_TRUE(digest.empty());
  });
}

TEST_F(CryptoUtilFailingCallsTest, WithoutABufferThereIsNoRsaKey) {
  std::string pem = testkeys::rsaKey(2048).publicPem;
  testing::internal::CaptureStderr();
  withEach({{"BIO_new_mem_buf", 0}}, [&] { EXPECT_FALSE(crypto.createRSA(pem, 1)); });
  EXPECT_FALSE(testing::internal::GetCapturedStderr().empty());
  EXPECT_TRUE(crypto.createRSA(pem, 1));
}

TEST_F(CryptoUtilFailingCallsTest, WhatCannotBeSealedIsEmpty) {
  withEach({{"EVP_CIPHER_CTX_new", 0},
            {"EVP_EncryptInit_ex", 0},
            {"EVP_EncryptInit_ex", 1},
            {"EVP_EncryptUpdate", 0},
            {"EVP_EncryptFinal_ex", 0},
            {"EVP_CIPHER_CTX_ctrl", 0}},
           [&] {
             Bytes cipher(3, 1), tag(3, 1);
             EXPECT_FALSE(crypto.encryptMsg(message, key, iv, cipher, tag));
             EXPECT_TRUE(cipher.empty());
             EXPECT_TRUE(tag.empty());
             ERR_clear_error();  // encryption is done for every record, so it sets no mark
           });
}

TEST_F(CryptoUtilFailingCallsTest, WhatCannotBeOpenedIsEmpty) {
  Bytes cipher, tag;
  ASSERT_TRUE(crypto.encryptMsg(message, key, iv, cipher, tag));
  withEach({{"EVP_CIPHER_CTX_new", 0},
            {"EVP_EncryptInit_ex", 0},
            {"EVP_DecryptInit_ex", 0},
            {"EVP_DecryptUpdate", 0},
            {"EVP_CIPHER_CTX_ctrl", 0}},
           [&] {
             Bytes plain(3, 1);
             EXPECT_FALSE(crypto.decryptMsg(cipher, key, iv, tag, plain));
             EXPECT_TRUE(plain.empty());
           });
  Bytes plain;
  EXPECT_TRUE(crypto.decryptMsg(cipher, key, iv, tag, plain));
  EXPECT_EQ(message, plain);
}

TEST_F(CryptoUtilFailingCallsTest, WithoutAKeyNothingIsSealedOrOpened) {
  GcmCipher cipher;
  uint8_t tag[GcmCipher::kTagSize] = {}, out[1];
  EXPECT_FALSE(cipher.seal("x", iv.data(), out, tag));
  EXPECT_FALSE(cipher.open("x", iv.data(), tag, out));
}

TEST_F(CryptoUtilFailingCallsTest, WithoutAGeneratorThereIsNoIvUntilThereIsOne) {
  GcmCipher cipher;
  std::array<uint8_t, GcmCipher::kIvSize> drawn{};
  withEach({{"EVP_RAND_fetch", 0}, {"EVP_RAND_CTX_new", 0}, {"EVP_RAND_instantiate", 0}}, [&] {
    EXPECT_FALSE(cipher.newIv(drawn.data()));
    ERR_clear_error();
  });
  EXPECT_EQ((std::array<uint8_t, GcmCipher::kIvSize>{}), drawn);
  EXPECT_TRUE(cipher.newIv(drawn.data()));
}

}  // namespace
