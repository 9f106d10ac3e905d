// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/PrivateKey.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <algorithm>
#include <cstring>
#include <vector>

#include "orblog/Format.h"
#include "orblog/Text.h"

namespace orblog {
namespace {

constexpr size_t kLargestFile = size_t{64} << 10;

// Gives the passphrase to OpenSSL. OpenSSL asks only if a key is encrypted, and can ask more than
// once if it tries several formats.
struct Opener {
  const std::string& path;
  Passphrase passphrase;
  bool isKnown = false;
  bool wasAsked = false;
  std::string error;

  static int give(char* buffer, int size, int, void* user) {
    Opener& opener = *static_cast<Opener*>(user);
    if (!opener.isKnown && !opener.wasAsked)
      opener.isKnown =
          opener.passphrase.ask("Passphrase for " + terminalSafe(opener.path) + ": ", opener.error);
    opener.wasAsked = true;
    const std::string& text = opener.passphrase.text();
    if (!opener.isKnown || size < 0 || text.size() > static_cast<size_t>(size)) return -1;
    std::memcpy(buffer, text.data(), text.size());
    return static_cast<int>(text.size());
  }
};

bool holds(const std::string& text, const char* part) {
  return text.find(part) != std::string::npos;
}

// The reason why a file with this text has no usable private key.
std::string whyNone(const Opener& opener, const std::string& text) {
  if (!opener.error.empty())
    return "the key is encrypted and there is no passphrase: " + opener.error;
  if (opener.wasAsked) return "the passphrase is wrong";
  if (holds(text, "PRIVATE KEY-----")) return "a private key, but a damaged one";
  if (holds(text, "-----BEGIN PUBLIC KEY-----") || holds(text, "-----BEGIN RSA PUBLIC KEY-----"))
    return "a public key; logs are opened by the private key that belongs to it";
  if (holds(text, "-----BEGIN ")) return "in PEM form, but no private key";
  return "not a private key in PEM form";
}

}  // namespace

std::optional<PrivateKey> PrivateKey::load(const std::string& path,
                                           const std::string& passphraseFile, std::string& error) {
  Opener opener{path, {}, false, false, {}};
  if (!passphraseFile.empty()) {
    if (!opener.passphrase.load(passphraseFile, error)) return std::nullopt;
    opener.isKnown = true;
  }
  Secret text;
  if (!text.read(path, kLargestFile, false, error)) return std::nullopt;
  const OpenSslPtr<BIO> file(
      BIO_new_mem_buf(text.text().data(), static_cast<int>(text.text().size())));
  OpenSslPtr<EVP_PKEY> key(
      file == nullptr ? nullptr
                      : PEM_read_bio_PrivateKey(file.get(), nullptr, Opener::give, &opener));
  ERR_clear_error();
  if (key == nullptr) {
    error = path + ": " + whyNone(opener, text.text());
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
  // Bytes after the wrapped key are ignored: damaged zeros are harmless, and a key wrapped for a
  // larger RSA key does not decrypt.
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
