// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/KeyRing.h"

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/params.h>

#include "orblog/Format.h"

namespace orblog {

SessionKey::~SessionKey() { OPENSSL_cleanse(bytes.data(), bytes.size()); }

size_t KeyRing::add(const SessionKey& key, const std::string& origin) {
  for (size_t i = 0; i < mEntries.size(); ++i) {
    if (CRYPTO_memcmp(mEntries[i].key.bytes.data(), key.bytes.data(), SessionKey::kSize) == 0)
      return i;
  }
  OpenSslPtr<EVP_CIPHER_CTX> context(EVP_CIPHER_CTX_new());
  // The default IV size of this cipher is 12 bytes.
  if (context != nullptr &&
      EVP_DecryptInit_ex(context.get(), EVP_aes_256_gcm(), nullptr, key.bytes.data(), nullptr) != 1)
    context.reset();
  mEntries.push_back({key, origin, std::move(context)});
  return mEntries.size() - 1;
}

bool KeyRing::openWith(const Entry& entry, ByteView sealed, std::string& text) {
  EVP_CIPHER_CTX* const context = entry.context.get();
  if (context == nullptr) return false;
  const ByteView cipher = sealed.from(kSealSize);
  text.resize(cipher.size);
  uint8_t* const plain = reinterpret_cast<uint8_t*>(text.data());
  uint8_t tag[kTagSize];
  for (size_t i = 0; i < kTagSize; ++i) tag[i] = sealed.data[kIvSize + i];
  // Set with the IV, because a separate call for the tag takes long compared with a short record.
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_octet_string(OSSL_CIPHER_PARAM_AEAD_TAG, tag, kTagSize),
      OSSL_PARAM_construct_end()};
  int size = 0;
  if (EVP_DecryptInit_ex2(context, nullptr, nullptr, sealed.data, parameters) != 1) return false;
  if (cipher.size > 0 &&
      EVP_DecryptUpdate(context, plain, &size, cipher.data, static_cast<int>(cipher.size)) != 1)
    return false;
  return EVP_DecryptFinal_ex(context, plain + size, &size) == 1;
}

bool KeyRing::opens(size_t number, ByteView sealed, std::string& text) const {
  if (sealed.size >= kSealSize && openWith(mEntries[number], sealed, text)) return true;
  text.clear();  // the text is not authentic
  return false;
}

}  // namespace orblog
