// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "GcmCipher.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <pthread.h>
#include <unistd.h>

#include <atomic>
#include <cstring>

namespace {

// What libcrypto queues about a failed call is not left behind for the application.
class ErrorScope {
 public:
  ErrorScope() { ERR_set_mark(); }
  ErrorScope(const ErrorScope&) = delete;
  ErrorScope& operator=(const ErrorScope&) = delete;
  ~ErrorScope() { ERR_pop_to_mark(); }
};

// How many forks lead from the first process that asked to this one. Process numbers alone may come
// again, after their end or in another namespace.
unsigned forkGeneration() {
  static std::atomic<unsigned> generation{0};
  static const int registered = pthread_atfork(nullptr, nullptr, [] { ++generation; });
  (void)registered;
  return generation;
}

const uint8_t* bytes(std::string_view text) {
  return reinterpret_cast<const uint8_t*>(text.data());
}

}  // namespace

GcmCipher::~GcmCipher() { clear(); }

void GcmCipher::clear() {
  EVP_CIPHER_CTX_free(mContext);
  mContext = nullptr;
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

bool GcmCipher::newIv(uint8_t* iv) {
  const unsigned generation = forkGeneration();
  const pid_t process = getpid();
  if (mPoolUsed + kIvSize > mPool.size() || mPoolOwner != process ||
      mPoolGeneration != generation) {
    const ErrorScope errors;
    mPoolUsed = mPool.size();
    if (RAND_bytes(mPool.data(), static_cast<int>(mPool.size())) != 1) return false;
    mPoolUsed = 0;
    mPoolOwner = process;
    mPoolGeneration = generation;
  }
  std::memcpy(iv, mPool.data() + mPoolUsed, kIvSize);
  mPoolUsed += kIvSize;
  return true;
}

bool GcmCipher::seal(std::string_view plain, const uint8_t* iv, uint8_t* cipher, uint8_t* tag) {
  const ErrorScope errors;
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
