// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/PrivateKey.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <vector>

#include "orblog/Format.h"

namespace orblog {
namespace {

constexpr size_t kLongestPassphrase = 1023;  // what OpenSSL has room for

int givePassphrase(char* buffer, int size, int, void* user) {
  const std::string& text = static_cast<const Passphrase*>(user)->text();
  if (size < 0 || text.size() > static_cast<size_t>(size)) return -1;
  std::memcpy(buffer, text.data(), text.size());
  return static_cast<int>(text.size());
}

}  // namespace

Passphrase::~Passphrase() { OPENSSL_cleanse(mText.data(), mText.size()); }

bool Passphrase::load(const std::string& path, std::string& error) {
  // OpenSSL's streams, unbuffered: no copy of the text stays behind in a buffer of stdio's.
  errno = 0;
  const OpenSslPtr<BIO> file(BIO_new_file(path.c_str(), "r"));
  if (file == nullptr) {
    error = "cannot open " + path + ": " + std::strerror(errno);
    ERR_clear_error();
    return false;
  }
  std::array<char, kLongestPassphrase + 2> line = {};
  const int size = BIO_gets(file.get(), line.data(), static_cast<int>(line.size()));
  mText.reserve(line.size());
  if (size > 0) mText.assign(line.data(), strcspn(line.data(), "\r\n"));
  OPENSSL_cleanse(line.data(), line.size());
  ERR_clear_error();
  if (mText.empty() || mText.size() > kLongestPassphrase) {
    error = path + ": the first line is no passphrase";
    return false;
  }
  return true;
}

std::optional<PrivateKey> PrivateKey::load(const std::string& path,
                                           const std::string& passphraseFile, std::string& error) {
  Passphrase passphrase;
  if (!passphraseFile.empty() && !passphrase.load(passphraseFile, error)) return std::nullopt;
  errno = 0;
  const OpenSslPtr<BIO> file(BIO_new_file(path.c_str(), "r"));
  if (file == nullptr) {
    error = "cannot open " + path + ": " + std::strerror(errno);
    ERR_clear_error();
    return std::nullopt;
  }
  // Without a callback OpenSSL asks at the terminal.
  OpenSslPtr<EVP_PKEY> key(PEM_read_bio_PrivateKey(
      file.get(), nullptr, passphraseFile.empty() ? nullptr : givePassphrase,
      passphraseFile.empty() ? nullptr : &passphrase));
  ERR_clear_error();
  if (key == nullptr) {
    error = path + ": not a private key in PEM form, or the passphrase is wrong";
    return std::nullopt;
  }
  if (EVP_PKEY_get_base_id(key.get()) != EVP_PKEY_RSA) {
    error = path + ": not an RSA key";
    return std::nullopt;
  }
  if (EVP_PKEY_get_bits(key.get()) > kLargestKeyBits) {
    error = path + ": a key of " + std::to_string(EVP_PKEY_get_bits(key.get())) +
            " bits; the header of a log file has room for " + std::to_string(kLargestKeyBits);
    return std::nullopt;
  }
  return PrivateKey(std::move(key));
}

int PrivateKey::bits() const { return EVP_PKEY_get_bits(mKey.get()); }

size_t PrivateKey::size() const { return static_cast<size_t>(EVP_PKEY_get_size(mKey.get())); }

std::string PrivateKey::warning() const {
  if (size() >= kSmallestKeySize) return {};
  return "a key of " + std::to_string(bits()) +
         " bits is too small to wrap a session key: logs made for it have a header of zeros, and "
         "nobody can read them";
}

std::optional<SessionKey> PrivateKey::unwrap(ByteView header) const {
  if (header.size != kHeaderSize || size() > kHeaderSize) return std::nullopt;
  // What was wrapped for a larger key does not end where this key's would.
  const ByteView rest = header.from(size());
  if (std::any_of(rest.data, rest.data + rest.size, [](uint8_t byte) { return byte != 0; }))
    return std::nullopt;
  const OpenSslPtr<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new(mKey.get(), nullptr));
  std::vector<uint8_t> plain(size());
  size_t plainSize = plain.size();
  std::optional<SessionKey> key;
  if (context != nullptr && EVP_PKEY_decrypt_init(context.get()) == 1 &&
      EVP_PKEY_CTX_set_rsa_padding(context.get(), RSA_PKCS1_OAEP_PADDING) == 1 &&
      EVP_PKEY_decrypt(context.get(), plain.data(), &plainSize, header.data, size()) == 1 &&
      plainSize == SessionKey::kSize) {
    key.emplace();
    std::copy_n(plain.begin(), SessionKey::kSize, key->bytes.begin());
  }
  OPENSSL_cleanse(plain.data(), plain.size());
  ERR_clear_error();
  return key;
}

std::optional<size_t> KeyFinder::open(ByteView header, const std::string& origin) {
  const auto [entry, isNew] = mKnown.emplace(
      std::string(reinterpret_cast<const char*>(header.data), header.size), std::nullopt);
  if (isNew) {
    const std::optional<SessionKey> key = mKey.unwrap(header);
    if (key) entry->second = mRing.add(*key, origin);
  }
  return entry->second;
}

}  // namespace orblog
