// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Messages and digests of CryptoUtil, which the library itself never uses.
#include <openssl/evp.h>

#include <string_view>

#include "CryptoUtil.h"
#include "GcmCipher.h"

namespace {

static_assert(CryptoUtil::kAesKeySize == GcmCipher::kKeySize &&
              CryptoUtil::kGcmIvSize == GcmCipher::kIvSize &&
              CryptoUtil::kGcmTagSize == GcmCipher::kTagSize);

std::string_view view(const CryptoUtil::Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool useKey(GcmCipher& cipher, const CryptoUtil::Bytes& key) {
  return key.size() == GcmCipher::kKeySize && cipher.setKey(key.data());
}

}  // namespace

bool CryptoUtil::genAESIV(Bytes& iv) {
  iv.resize(kGcmIvSize);
  return fillRandom(iv);
}

bool CryptoUtil::getRandomBytes(Bytes& buf) {
  fillRandom(buf);
  return true;
}

bool CryptoUtil::encryptMsg2(const Bytes& plain, const Bytes& key, Bytes& cipher, Bytes& iv,
                             Bytes& tag) {
  // A record must not be sealed under an IV that is not random.
  if (!genAESIV(iv) || !encryptMsg(plain, key, iv, cipher, tag)) cipher.clear();
  return true;
}

bool CryptoUtil::encryptMsg(const Bytes& plain, const Bytes& key, const Bytes& iv, Bytes& cipher,
                            Bytes& tag) {
  GcmCipher gcm;
  cipher.resize(plain.size());
  tag.resize(kGcmTagSize);
  if (iv.size() == kGcmIvSize && useKey(gcm, key) &&
      gcm.seal(view(plain), iv.data(), cipher.data(), tag.data())) {
    return true;
  }
  cipher.clear();
  tag.clear();
  return false;
}

bool CryptoUtil::decryptMsg(const Bytes& cipher, const Bytes& key, const Bytes& iv,
                            const Bytes& tag, Bytes& plain) {
  GcmCipher gcm;
  plain.resize(cipher.size());
  if (iv.size() == kGcmIvSize && tag.size() == kGcmTagSize && useKey(gcm, key) &&
      gcm.open(view(cipher), iv.data(), tag.data(), plain.data())) {
    return true;
  }
  wipe(plain);
  return false;
}

bool CryptoUtil::sha256(const Bytes& in, Bytes& out) {
  unsigned size = 0;
  uint8_t digest[EVP_MAX_MD_SIZE];  // @p out may be @p in
  const OpenSslErrorScope errors;
  const bool done = EVP_Digest(in.data(), in.size(), digest, &size, EVP_sha256(), nullptr) == 1;
  out.assign(digest, digest + (done ? size : 0));
  return done;
}
