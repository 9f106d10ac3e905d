// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "GcmCipher.h"

#include <openssl/core_names.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/params.h>
#include <openssl/rand.h>

#include <cstring>

namespace {

// What libcrypto queues about a failed call is not left behind for the application. Not around what
// is done for every record: the mark alone makes a queue for the thread that logs, which stays
// behind where the process ends before the thread does.
class ErrorScope {
 public:
  ErrorScope() { ERR_set_mark(); }
  ErrorScope(const ErrorScope&) = delete;
  ErrorScope& operator=(const ErrorScope&) = delete;
  ~ErrorScope() { ERR_pop_to_mark(); }
};

const uint8_t* bytes(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

}  // namespace

GcmCipher::~GcmCipher() { clear(); }

void GcmCipher::clear() {
  EVP_CIPHER_CTX_free(mContext);
  mContext = nullptr;
  EVP_RAND_CTX_free(mRandom);
  mRandom = nullptr;
  OPENSSL_cleanse(mPool.data(), mPool.size());
  mPoolUsed = mPool.size();
}

bool GcmCipher::prepare() {
  if (mContext == nullptr) mContext = EVP_CIPHER_CTX_new();
  return mContext != nullptr;
}

bool GcmCipher::setKey(const uint8_t* key) {
  const ErrorScope errors;
  // 12 bytes are the mode's own IV length.
  return prepare() && EVP_EncryptInit_ex(mContext, EVP_aes_256_gcm(), nullptr, key, nullptr) == 1;
}

// A generator of its own, seeded by libcrypto's. RAND_bytes() would make one for every thread that
// logs, and leave it behind where the process ends before the thread does.
bool GcmCipher::prepareRandom() {
  if (mRandom != nullptr) return true;
  EVP_RAND* const kind = EVP_RAND_fetch(nullptr, "CTR-DRBG", nullptr);
  mRandom = EVP_RAND_CTX_new(kind, RAND_get0_primary(nullptr));
  EVP_RAND_free(kind);
  char cipher[] = "AES-256-CTR";
  const OSSL_PARAM parameters[] = {
      OSSL_PARAM_construct_utf8_string(OSSL_DRBG_PARAM_CIPHER, cipher, 0),
      OSSL_PARAM_construct_end()};
  if (mRandom != nullptr &&
      EVP_RAND_instantiate(mRandom, kStrength, 0, nullptr, 0, parameters) == 1) {
    return true;
  }
  EVP_RAND_CTX_free(mRandom);
  mRandom = nullptr;
  return false;
}

bool GcmCipher::fillPool() {
  mPoolUsed = mPool.size();
  if (!prepareRandom() ||
      EVP_RAND_generate(mRandom, mPool.data(), mPool.size(), kStrength, 0, nullptr, 0) != 1) {
    return false;
  }
  mPoolUsed = 0;
  return true;
}

bool GcmCipher::newIv(uint8_t* iv) {
  if (!mPoolOwner.isHere()) {
    // The generator is the parent's as well: a new one is seeded anew.
    EVP_RAND_CTX_free(mRandom);
    mRandom = nullptr;
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
  return mContext != nullptr && EVP_EncryptInit_ex(mContext, nullptr, nullptr, nullptr, iv) == 1 &&
         EVP_EncryptUpdate(mContext, cipher, &size, bytes(plain), static_cast<int>(plain.size())) ==
             1 &&
         EVP_EncryptFinal_ex(mContext, cipher + size, &rest) == 1 &&
         EVP_CIPHER_CTX_ctrl(mContext, EVP_CTRL_GCM_GET_TAG, kTagSize, tag) == 1;
}

bool GcmCipher::open(std::string_view cipher, const uint8_t* iv, const uint8_t* tag,
                     uint8_t* plain) {
  const ErrorScope errors;
  uint8_t wanted[kTagSize];
  std::memcpy(wanted, tag, sizeof wanted);
  int size = 0;
  int rest = 0;
  return mContext != nullptr && EVP_DecryptInit_ex(mContext, nullptr, nullptr, nullptr, iv) == 1 &&
         EVP_DecryptUpdate(mContext, plain, &size, bytes(cipher),
                           static_cast<int>(cipher.size())) == 1 &&
         EVP_CIPHER_CTX_ctrl(mContext, EVP_CTRL_GCM_SET_TAG, kTagSize, wanted) == 1 &&
         EVP_DecryptFinal_ex(mContext, plain + size, &rest) == 1;
}
