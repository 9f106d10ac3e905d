// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The symmetric part of CryptoUtil: random bytes, AES-256-GCM and SHA-256.
#include "CryptoUtil.h"

#include <gtest/gtest.h>
#include <openssl/err.h>

#include <set>
#include <type_traits>

#include "Reference.h"

namespace {

using Bytes = CryptoUtil::Bytes;

static_assert(std::has_virtual_destructor_v<CryptoUtil>);
static_assert(!std::is_copy_constructible_v<CryptoUtil>);

Bytes hex(const std::string& text) {
  Bytes bytes;
  for (size_t i = 0; i + 1 < text.size(); i += 2)
    bytes.push_back(static_cast<uint8_t>(std::stoul(text.substr(i, 2), nullptr, 16)));
  return bytes;
}

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }

// At the end of each test, libcrypto's error queue must be as the application left it.
class CryptoUtilTest : public testing::Test {
 protected:
  CryptoUtilTest() {
    ERR_clear_error();
    ERR_raise(ERR_LIB_USER, 77);
  }
  ~CryptoUtilTest() override {
    EXPECT_EQ(77, ERR_GET_REASON(ERR_get_error()));
    EXPECT_EQ(0u, ERR_peek_error());
  }

  CryptoUtil crypto;
  Bytes cipher, iv, tag, plain, out;
  Bytes key = hex("feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308");
};

TEST_F(CryptoUtilTest, KeysAndIvsHaveTheirSizesWhateverTheVectorsHad) {
  for (const size_t before : {0u, 5u, 100u}) {
    Bytes newKey(before, 1);
    Bytes newIv(before, 1);
    EXPECT_TRUE(crypto.genAESKey(newKey));
    EXPECT_TRUE(crypto.genAESIV(newIv));
    EXPECT_EQ(32u, newKey.size());
    EXPECT_EQ(12u, newIv.size());
  }
}

TEST_F(CryptoUtilTest, KeysAndIvsDiffer) {
  std::set<Bytes> seen;
  for (int i = 0; i < 1000; ++i) {
    ASSERT_TRUE(crypto.genAESKey(out));
    EXPECT_TRUE(seen.insert(out).second);
    ASSERT_TRUE(crypto.genAESIV(out));
    EXPECT_TRUE(seen.insert(out).second);
  }
}

TEST_F(CryptoUtilTest, RandomBytesFillTheBufferAsItIsSized) {
  Bytes empty;
  EXPECT_TRUE(crypto.getRandomBytes(empty));
  EXPECT_TRUE(empty.empty());
  for (const size_t size : {1u, 32u, 1000u}) {
    Bytes first(size), second(size);
    EXPECT_TRUE(crypto.getRandomBytes(first));
    EXPECT_TRUE(crypto.getRandomBytes(second));
    EXPECT_EQ(size, first.size());
    EXPECT_TRUE(size < 32 || first != second);
  }
  const Bytes zeros(1000);
  Bytes long1(1000);
  crypto.getRandomBytes(long1);
  EXPECT_NE(Bytes(100), Bytes(long1.end() - 100, long1.end()));  // also its last bytes are set
}

// The NIST test cases of the mode for keys of 256 bits without additional data.
TEST_F(CryptoUtilTest, GcmGivesThePublishedResults) {
  const struct {
    std::string key, iv, plain, cipher, tag;
  } kCases[] = {
      {std::string(64, '0'), std::string(24, '0'), "", "", "530f8afbc74536b9a963b4f1c4cb738b"},
      {std::string(64, '0'), std::string(24, '0'), std::string(32, '0'),
       "cea7403d4d606b6e074ec5d3baf39d18", "d0d1c8a799996bf0265b98b5d48ab919"},
      {"feffe9928665731c6d6a8f9467308308feffe9928665731c6d6a8f9467308308",
       "cafebabefacedbaddecaf888",
       "d9313225f88406e5a55909c5aff5269a86a7a9531534f7da2e4c303d8a318a721c3c0c95956809532fcf0e24"
       "49a6b525b16aedf5aa0de657ba637b391aafd255",
       "522dc1f099567d07f47f37a32a84427d643a8cdcbfe5c0c97598a2bd2555d1aa8cb08e48590dbb3da7b08b10"
       "56828838c5f61e6393ba7a0abcc9f662898015ad",
       "b094dac5d93471bdec1a502270e3cc6c"},
  };
  for (const auto& c : kCases) {
    EXPECT_TRUE(crypto.encryptMsg(hex(c.plain), hex(c.key), hex(c.iv), cipher, tag));
    EXPECT_EQ(hex(c.cipher), cipher);
    EXPECT_EQ(hex(c.tag), tag);
    EXPECT_TRUE(crypto.decryptMsg(hex(c.cipher), hex(c.key), hex(c.iv), hex(c.tag), plain));
    EXPECT_EQ(hex(c.plain), plain);
  }
}

TEST_F(CryptoUtilTest, GcmAgreesWithAnotherImplementationBothWays) {
  for (size_t size = 0; size < 600; size += 37) {
    Bytes message(size);
    crypto.getRandomBytes(message);
    crypto.genAESIV(iv);
    ASSERT_TRUE(crypto.encryptMsg(message, key, iv, cipher, tag));
    EXPECT_EQ(size, cipher.size());
    EXPECT_EQ(message, reference::open(key, iv, tag, cipher)) << size;
    const reference::Sealed sealed = reference::seal(key, iv, message);
    EXPECT_EQ(sealed.cipher, cipher);
    EXPECT_EQ(sealed.tag, tag);
    EXPECT_TRUE(crypto.decryptMsg(sealed.cipher, key, iv, sealed.tag, plain));
    EXPECT_EQ(message, plain);
  }
}

TEST_F(CryptoUtilTest, SealingWithADrawnIvSaysTrueAndFillsAllThree) {
  std::set<Bytes> ivs;
  const Bytes message = bytesOf("a line");
  for (int i = 0; i < 100; ++i) {
    EXPECT_TRUE(crypto.encryptMsg2(message, key, cipher, iv, tag));
    EXPECT_EQ(message.size(), cipher.size());
    EXPECT_EQ(12u, iv.size());
    EXPECT_EQ(16u, tag.size());
    EXPECT_TRUE(ivs.insert(iv).second);
    EXPECT_EQ(message, reference::open(key, iv, tag, cipher));
  }
}

TEST_F(CryptoUtilTest, SealingWithADrawnIvSaysTrueEvenWithoutAKey) {
  cipher = bytesOf("former");
  EXPECT_TRUE(crypto.encryptMsg2(bytesOf("a line"), Bytes(16), cipher, iv, tag));
  EXPECT_TRUE(cipher.empty());
}

TEST_F(CryptoUtilTest, EmptyMessageIsSealedAndOpened) {
  EXPECT_TRUE(crypto.encryptMsg2({}, key, cipher, iv, tag));
  EXPECT_TRUE(cipher.empty());
  EXPECT_TRUE(crypto.decryptMsg(cipher, key, iv, tag, plain));
  EXPECT_TRUE(plain.empty());
  EXPECT_EQ(Bytes(), reference::open(key, iv, tag, cipher));
}

TEST_F(CryptoUtilTest, EveryChangedPartIsRefusedAndLeavesNothing) {
  const Bytes message = bytesOf("a line of the log");
  crypto.encryptMsg2(message, key, cipher, iv, tag);
  const auto refusesWithout = [&](Bytes& part) {
    for (uint8_t& byte : part) {
      byte ^= 1;
      plain = bytesOf("former");
      EXPECT_FALSE(crypto.decryptMsg(cipher, key, iv, tag, plain));
      EXPECT_TRUE(plain.empty());
      byte ^= 1;
    }
  };
  refusesWithout(cipher);
  refusesWithout(iv);
  refusesWithout(tag);
  refusesWithout(key);
  EXPECT_TRUE(crypto.decryptMsg(cipher, key, iv, tag, plain));
  EXPECT_EQ(message, plain);
}

TEST_F(CryptoUtilTest, PartsOfAnotherSizeAreRefused) {
  const Bytes message = bytesOf("a line");
  crypto.encryptMsg2(message, key, cipher, iv, tag);
  for (const size_t size : {0u, 16u, 24u, 31u, 33u}) {
    EXPECT_FALSE(crypto.decryptMsg(cipher, Bytes(size), iv, tag, plain));
    EXPECT_FALSE(crypto.encryptMsg(message, Bytes(size), iv, out, plain));
  }
  for (const size_t size : {0u, 11u, 13u, 16u}) {
    EXPECT_FALSE(crypto.decryptMsg(cipher, key, Bytes(size), tag, plain));
    EXPECT_FALSE(crypto.encryptMsg(message, key, Bytes(size), out, plain));
    EXPECT_TRUE(out.empty());
    EXPECT_TRUE(plain.empty());
  }
  Bytes wrongTag = tag;
  wrongTag.push_back(0);
  EXPECT_FALSE(crypto.decryptMsg(cipher, key, iv, wrongTag, plain));
  for (const size_t size : {15u, 12u, 1u, 0u}) {
    wrongTag.resize(size);
    EXPECT_FALSE(crypto.decryptMsg(cipher, key, iv, wrongTag, plain)) << size;
  }
}

TEST_F(CryptoUtilTest, MessageMayBeSealedAndOpenedInPlace) {
  crypto.genAESIV(iv);
  Bytes text = bytesOf("a line");
  ASSERT_TRUE(crypto.encryptMsg(text, key, iv, text, tag));
  EXPECT_EQ(bytesOf("a line"), reference::open(key, iv, tag, text));
  ASSERT_TRUE(crypto.decryptMsg(text, key, iv, tag, text));
  EXPECT_EQ(bytesOf("a line"), text);
}

TEST_F(CryptoUtilTest, Sha256GivesThePublishedDigests) {
  const struct {
    std::string text, digest;
  } kCases[] = {
      {"", "e3b0c44298fc1c149afbf4c8996fb92427ae41e4649b934ca495991b7852b855"},
      {"abc", "ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad"},
      {"abcdbcdecdefdefgefghfghighijhijkijkljklmklmnlmnomnopnopq",
       "248d6a61d20638b8e5c026930c3e6039a33ce45964ff2167f6ecedd419db06c1"},
      {std::string(1000000, 'a'),
       "cdc76e5c9914fb9281a1c7e284d73e67f1809a48a497200e046d39ccc7112cd0"},
  };
  for (const auto& c : kCases) {
    out.assign(100, 1);
    EXPECT_TRUE(crypto.sha256(bytesOf(c.text), out));
    EXPECT_EQ(hex(c.digest), out);
  }
}

TEST_F(CryptoUtilTest, Sha256AgreesWithAnotherImplementation) {
  for (size_t size = 0; size < 300; ++size) {
    Bytes message(size);
    crypto.getRandomBytes(message);
    ASSERT_TRUE(crypto.sha256(message, out));
    EXPECT_EQ(reference::sha256(message), out) << size;
  }
}

TEST_F(CryptoUtilTest, WipedSecretIsEmpty) {
  Bytes secret(32, 0x5A);
  wipe(secret);
  EXPECT_TRUE(secret.empty());
  wipe(secret);
  EXPECT_TRUE(secret.empty());
}

}  // namespace
