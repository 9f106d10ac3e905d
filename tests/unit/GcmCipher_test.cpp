// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "GcmCipher.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <openssl/err.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <set>
#include <string>
#include <vector>

#include "Reference.h"
#include "Rounds.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Iv = std::array<uint8_t, GcmCipher::kIvSize>;

const Bytes kKey = [] {
  Bytes key(GcmCipher::kKeySize);
  for (size_t i = 0; i < key.size(); ++i) key[i] = static_cast<uint8_t>(7 * i + 1);
  return key;
}();

Bytes bytesOf(const std::string& text) { return Bytes(text.begin(), text.end()); }
std::string_view viewOf(const Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}
Bytes bytesOf(const Iv& iv) { return Bytes(iv.begin(), iv.end()); }

class GcmCipherTest : public testing::Test {
 protected:
  GcmCipherTest() {
    ERR_clear_error();
    EXPECT_TRUE(cipher.setKey(kKey.data()));
  }
  ~GcmCipherTest() override { EXPECT_EQ(0u, ERR_peek_error()); }

  Iv newIv() {
    Iv iv{};
    EXPECT_TRUE(cipher.newIv(iv.data()));
    return iv;
  }
  reference::Sealed seal(const std::string& plain, const Iv& iv) {
    reference::Sealed sealed{Bytes(plain.size()), Bytes(GcmCipher::kTagSize)};
    EXPECT_TRUE(cipher.seal(plain, iv.data(), sealed.cipher.data(), sealed.tag.data()));
    return sealed;
  }
  bool opens(const reference::Sealed& sealed, const Iv& iv, const std::string& plain) {
    Bytes opened(sealed.cipher.size());
    return cipher.open(viewOf(sealed.cipher), iv.data(), sealed.tag.data(), opened.data()) &&
           opened == bytesOf(plain);
  }

  GcmCipher cipher;
};

TEST_F(GcmCipherTest, AnotherImplementationOpensWhatIsSealed) {
  for (const size_t size : {0u, 1u, 15u, 16u, 17u, 200u, 511u}) {
    const std::string plain(size, 'x');
    const Iv iv = newIv();
    const reference::Sealed sealed = seal(plain, iv);
    EXPECT_EQ(bytesOf(plain), reference::open(kKey, bytesOf(iv), sealed.tag, sealed.cipher))
        << size;
  }
}

TEST_F(GcmCipherTest, OpensWhatAnotherImplementationSealed) {
  for (const size_t size : {0u, 1u, 16u, 33u, 511u}) {
    const std::string plain(size, 'y');
    const Iv iv = newIv();
    EXPECT_TRUE(opens(reference::seal(kKey, bytesOf(iv), bytesOf(plain)), iv, plain)) << size;
  }
}

TEST_F(GcmCipherTest, SealingAndOpeningMayTakeTurns) {
  const Iv first = newIv();
  const Iv second = newIv();
  const reference::Sealed one = seal("one", first);
  EXPECT_TRUE(opens(one, first, "one"));
  const reference::Sealed two = seal("two", second);
  EXPECT_TRUE(opens(two, second, "two"));
  EXPECT_TRUE(opens(one, first, "one"));
  EXPECT_EQ(one.cipher, seal("one", first).cipher);
}

TEST_F(GcmCipherTest, EveryChangedPartIsRefusedAndTheNextMessageIsNot) {
  const std::string plain = "a line of the log";
  const Iv iv = newIv();
  const reference::Sealed sealed = seal(plain, iv);
  for (size_t i = 0; i < sealed.cipher.size(); ++i) {
    reference::Sealed changed = sealed;
    changed.cipher[i] ^= 1;
    EXPECT_FALSE(opens(changed, iv, plain)) << i;
  }
  for (size_t i = 0; i < sealed.tag.size(); ++i) {
    reference::Sealed changed = sealed;
    changed.tag[i] ^= 0x80;
    EXPECT_FALSE(opens(changed, iv, plain)) << i;
  }
  for (size_t i = 0; i < iv.size(); ++i) {
    Iv changed = iv;
    changed[i] ^= 1;
    EXPECT_FALSE(opens(sealed, changed, plain)) << i;
  }
  reference::Sealed shorter = sealed;
  shorter.cipher.pop_back();
  EXPECT_FALSE(opens(shorter, iv, plain.substr(0, plain.size() - 1)));
  EXPECT_TRUE(opens(sealed, iv, plain));
}

TEST_F(GcmCipherTest, AnotherKeyTakesThePlaceOfTheFirst) {
  const Iv iv = newIv();
  const reference::Sealed sealed = seal("text", iv);
  const Bytes other(GcmCipher::kKeySize, 0x5A);
  ASSERT_TRUE(cipher.setKey(other.data()));
  EXPECT_FALSE(opens(sealed, iv, "text"));
  EXPECT_EQ(bytesOf("text"),
            reference::open(other, bytesOf(iv), seal("text", iv).tag, seal("text", iv).cipher));
}

TEST_F(GcmCipherTest, WithoutAKeyNothingIsSealedOrOpened) {
  cipher.clear();
  const Iv iv = newIv();
  uint8_t out[4] = {1, 2, 3, 4};
  uint8_t tag[GcmCipher::kTagSize] = {};
  EXPECT_FALSE(cipher.seal("text", iv.data(), out, tag));
  EXPECT_FALSE(cipher.open("text", iv.data(), tag, out));
  ASSERT_TRUE(cipher.setKey(kKey.data()));
  EXPECT_TRUE(opens(seal("text", iv), iv, "text"));
}

TEST_F(GcmCipherTest, ErrorsThatTheApplicationHasQueuedStay) {
  const Iv iv = newIv();
  reference::Sealed sealed = seal("text", iv);
  sealed.tag[0] ^= 1;
  ERR_raise(ERR_LIB_USER, 77);
  const unsigned long queued = ERR_peek_error();
  EXPECT_FALSE(opens(sealed, iv, "text"));
  newIv();
  seal("text", iv);
  EXPECT_EQ(queued, ERR_get_error());
  EXPECT_EQ(0u, ERR_peek_error());
}

TEST_F(GcmCipherTest, ManyIvsAreAllDifferent) {
  std::vector<Iv> ivs(fewerIf(slow(), 1000000u));
  for (Iv& iv : ivs) ASSERT_TRUE(cipher.newIv(iv.data()));
  std::sort(ivs.begin(), ivs.end());
  EXPECT_EQ(ivs.end(), std::adjacent_find(ivs.begin(), ivs.end()));
}

TEST_F(GcmCipherTest, TwoCiphersDrawDifferentIvs) {
  GcmCipher other;
  std::set<Iv> ivs;
  for (int i = 0; i < 1000; ++i) {
    Iv iv{};
    ASSERT_TRUE(other.newIv(iv.data()));
    EXPECT_TRUE(ivs.insert(iv).second);
    EXPECT_TRUE(ivs.insert(newIv()).second);
  }
}

// All IVs that were drawn before the fork, and after it by parent and child.
TEST_F(GcmCipherTest, ForkedChildHasIvsOfItsOwn) {
  constexpr int kCount = 1000;
  for (const int drawnBefore : {0, 1, 40, 84, 85}) {
    GcmCipher shared;
    std::set<Iv> ivs;
    const auto draw = [&shared] {
      Iv iv{};
      EXPECT_TRUE(shared.newIv(iv.data()));
      return iv;
    };
    for (int i = 0; i < drawnBefore; ++i) ASSERT_TRUE(ivs.insert(draw()).second);
    int ends[2];
    ASSERT_EQ(0, pipe2(ends, O_CLOEXEC));
    const pid_t child = fork();
    ASSERT_NE(-1, child);
    if (child == 0) {
      for (int i = 0; i < kCount; ++i) {
        const Iv iv = draw();
        if (write(ends[1], iv.data(), iv.size()) != static_cast<ssize_t>(iv.size())) _exit(1);
      }
      _exit(0);
    }
    close(ends[1]);
    for (int i = 0; i < kCount; ++i) EXPECT_TRUE(ivs.insert(draw()).second);
    Iv iv{};
    int received = 0;
    while (read(ends[0], iv.data(), iv.size()) == static_cast<ssize_t>(iv.size())) {
      EXPECT_TRUE(ivs.insert(iv).second);
      ++received;
    }
    close(ends[0]);
    EXPECT_EQ(kCount, received);
    int status = -1;
    ASSERT_EQ(child, waitpid(child, &status, 0));
    EXPECT_EQ(0, status);
  }
}

}  // namespace
