// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "GcmCipher.h"

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <openssl/rand.h>

#include <cstring>

namespace {

const uint8_t* bytes(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

}  // namespace

GcmCipher::~GcmCipher() { clear(); }

void GcmCipher::clear() {
  mContext.reset();
  mRandom.reset();
  OPENSSL_cleanse(mPool.data(), mPool.size());
  mPoolUsed = mPool.size();
}

bool GcmCipher::prepare() {
  if (mContext == nullptr) mContext.reset(EVP_CIPHER_CTX_new());
  return mContext != nullptr;
}

bool GcmCipher::setKey(const uint8_t* key) {
  const OpenSslErrorScope errors;
  // 12 bytes are the mode's own IV length.
  return prepare() &&
         EVP_EncryptInit_ex(mContext.get(), EVP_aes_256_gcm(), nullptr, key, nullptr) == 1;
}

// This object has a generator of its own, seeded by libcrypto's. RAND_bytes() would make one for
// every thread that logs, and would leak it if the process ends before the thread.
bool GcmCipher::prepareRandom() {
  if (mRandom != nullptr) return true;
  const OpenSslPtr<EVP_RAND> kind(EVP_RAND_fetch(nullptr, "CTR-DRBG", nullptr));
  mRandom.reset(EVP_RAND_CTX_new(kind.get(), RAND_get0_primary(nullptr)));
  char cipher[] = "AES-256-CTR";
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_DRBG_PARAM_CIPHER, cipher, 0),
      OSSL_PARAM_construct_end()};
  if (mRandom != nullptr &&
      EVP_RAND_instantiate(mRandom.get(), kStrength, 0, nullptr, 0, parameters) == 1) {
    return true;
  }
  mRandom.reset();
  return false;
}

bool GcmCipher::fillPool() {
  mPoolUsed = mPool.size();
  if (!prepareRandom() ||
      EVP_RAND_generate(mRandom.get(), mPool.data(), mPool.size(), kStrength, 0, nullptr, 0) != 1) {
    return false;
  }
  mPoolUsed = 0;
  return true;
}

bool GcmCipher::newIv(uint8_t* iv) {
  if (!mPoolOwner.isHere()) {
    // The parent has the same generator. A new one gets another seed.
    mRandom.reset();
    mPoolUsed = mPool.size();
    mPoolOwner.set();
  }
  if (mPoolUsed + kIvSize > mPool.size() && !fillPool()) return false;
  std::memcpy(iv, mPool.data() + mPoolUsed, kIvSize);
  mPoolUsed += kIvSize;
  return true;
}

bool GcmCipher::seal(std::string_view plain, const uint8_t* iv, uint8_t* cipher, uint8_t* tag) {
  int size = 0;
  int rest = 0;
  return mContext != nullptr &&
         EVP_EncryptInit_ex(mContext.get(), nullptr, nullptr, nullptr, iv) == 1 &&
         EVP_EncryptUpdate(mContext.get(), cipher, &size, bytes(plain),
                           static_cast<int>(plain.size())) == 1 &&
         EVP_EncryptFinal_ex(mContext.get(), cipher + size, &rest) == 1 &&
         EVP_CIPHER_CTX_ctrl(mContext.get(), EVP_CTRL_GCM_GET_TAG, kTagSize, tag) == 1;
}

bool GcmCipher::open(std::string_view cipher, const uint8_t* iv, const uint8_t* tag,
                     uint8_t* plain) {
  const OpenSslErrorScope errors;
  uint8_t wanted[kTagSize];
  std::memcpy(wanted, tag, sizeof wanted);
  int size = 0;
  int rest = 0;
  return mContext != nullptr &&
         EVP_DecryptInit_ex(mContext.get(), nullptr, nullptr, nullptr, iv) == 1 &&
         EVP_DecryptUpdate(mContext.get(), plain, &size, bytes(cipher),
                           static_cast<int>(cipher.size())) == 1 &&
         EVP_CIPHER_CTX_ctrl(mContext.get(), EVP_CTRL_GCM_SET_TAG, kTagSize, wanted) == 1 &&
         EVP_DecryptFinal_ex(mContext.get(), plain + size, &rest) == 1;
}
