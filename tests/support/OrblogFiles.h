// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gcrypt.h>

#include <array>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// Writes encrypted log files for the tests of their reader, without the reader's cryptography.
// Another library seals the records; the program openssl makes and wraps the keys.
namespace orblogtest {

namespace fs = std::filesystem;
using Bytes = std::vector<uint8_t>;
using Key = std::array<uint8_t, 32>;

inline Key keyOf(uint8_t seed) {
  Key key;
  for (size_t i = 0; i < key.size(); ++i) key[i] = static_cast<uint8_t>(seed * 7 + i);
  return key;
}

// Seals records one after the other; each gets its own IV.
class Sealer {
 public:
  explicit Sealer(const Key& key, uint8_t ivSeed = 0) : mIvSeed(ivSeed) {
    (void)gcry_check_version(nullptr);
    if (gcry_cipher_open(&mCipher, GCRY_CIPHER_AES256, GCRY_CIPHER_MODE_GCM, 0) != 0 ||
        gcry_cipher_setkey(mCipher, key.data(), key.size()) != 0)
      std::abort();
  }
  Sealer(const Sealer&) = delete;
  Sealer& operator=(const Sealer&) = delete;
  ~Sealer() { gcry_cipher_close(mCipher); }

  Bytes record(const std::string& text) {
    const size_t length = 28 + text.size();
    Bytes bytes(2 + length);
    bytes[0] = static_cast<uint8_t>(length & 0xFF);
    bytes[1] = static_cast<uint8_t>(length >> 8);
    bytes[2] = mIvSeed;
    ++mCount;
    for (size_t i = 0; i < 8; ++i) bytes[6 + i] = static_cast<uint8_t>(mCount >> (8 * i));
    gcry_cipher_reset(mCipher);
    if (gcry_cipher_setiv(mCipher, &bytes[2], 12) != 0 ||
        (!text.empty() &&
         gcry_cipher_encrypt(mCipher, &bytes[30], text.size(), text.data(), text.size()) != 0))
      std::abort();
    // Without data libgcrypt does not finalise, and the tag is that of empty data.
    if (text.empty()) gcry_cipher_encrypt(mCipher, nullptr, 0, nullptr, 0);
    if (gcry_cipher_gettag(mCipher, &bytes[14], 16) != 0) std::abort();
    return bytes;
  }

 private:
  gcry_cipher_hd_t mCipher = nullptr;
  const uint8_t mIvSeed;
  uint64_t mCount = 0;
};

inline Bytes& operator+=(Bytes& bytes, const Bytes& more) {
  bytes.insert(bytes.end(), more.begin(), more.end());
  return bytes;
}

// "2025-05-24 13:02:07.045  1234  1240 E ORB : text"
inline std::string lineAt(const std::string& time, const std::string& text, char level = 'D') {
  return "2025-05-24 " + time + "  1234  1240 " + level + " ORB : " + text;
}

inline void writeFile(const fs::path& path, const Bytes& bytes,
                      std::ios::openmode mode = std::ios::trunc) {
  std::ofstream(path, std::ios::binary | mode)
      .write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
}

inline void appendFile(const fs::path& path, const Bytes& bytes) {
  writeFile(path, bytes, std::ios::app);
}

inline Bytes readFile(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  return Bytes(std::istreambuf_iterator<char>(file), {});
}

// A directory that is removed with the test.
class TemporaryDirectory {
 public:
  TemporaryDirectory() {
    std::string name = (fs::temp_directory_path() / "orblog-XXXXXX").string();
    if (mkdtemp(name.data()) == nullptr) std::abort();
    mPath = name;
  }
  TemporaryDirectory(const TemporaryDirectory&) = delete;
  TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;
  ~TemporaryDirectory() {
    std::error_code ignored;
    fs::remove_all(mPath, ignored);
  }
  fs::path operator/(const std::string& name) const { return mPath / name; }
  const fs::path& path() const { return mPath; }
  std::string string() const { return mPath.string(); }

 private:
  fs::path mPath;
};

// Runs a shell command and drops its output; true if it succeeded.
inline bool shell(const std::string& command) {
  return std::system((command + " >/dev/null 2>&1").c_str()) == 0;
}

// An RSA key pair that the program openssl made, in PEM files.
class RsaKeyPair {
 public:
  explicit RsaKeyPair(int bits) {
    if (!shell("openssl genrsa -out " + path() + " " + std::to_string(bits)) ||
        !shell("openssl rsa -in " + path() + " -pubout -out " + publicPath()))
      std::abort();
  }
  std::string path() const { return (mDirectory / "private.pem").string(); }
  std::string publicPath() const { return (mDirectory / "public.pem").string(); }
  // A header: the session key wrapped for this pair, and zeros.
  Bytes header(const Key& session) const {
    const fs::path plain = mDirectory / "plain", wrapped = mDirectory / "wrapped";
    writeFile(plain, Bytes(session.begin(), session.end()));
    if (!shell("openssl pkeyutl -encrypt -pubin -inkey " + publicPath() +
               " -pkeyopt rsa_padding_mode:oaep -in " + plain.string() + " -out " +
               wrapped.string()))
      std::abort();
    Bytes header = readFile(wrapped);
    header.resize(512);
    return header;
  }

 private:
  TemporaryDirectory mDirectory;
};

// Made once per test program, because making keys takes long.
inline const RsaKeyPair& keyPair() {
  static const RsaKeyPair pair(2048);
  return pair;
}

}  // namespace orblogtest
