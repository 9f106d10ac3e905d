// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>
#include <openssl/rsa.h>

#include <atomic>
#include <optional>

#include "Interposed.h"

// The program's own definitions of the libcrypto functions that make and wrap a log file's key.
// They leave an error in libcrypto's queue, like the original functions.
namespace libcrypto {

inline std::atomic<bool> randomFails{false};
inline std::optional<int> wrapResult;  // RSA_public_encrypt() returns this and does nothing else

inline void forget() {
  randomFails = false;
  wrapResult.reset();
}

}  // namespace libcrypto

int RAND_bytes(unsigned char* buffer, int size) {
  if (!libcrypto::randomFails) return ORB_NEXT(RAND_bytes)(buffer, size);
  ERR_raise(ERR_LIB_RAND, 1);
  return 0;
}

int EVP_RAND_generate(EVP_RAND_CTX* context, unsigned char* out, size_t size, unsigned strength,
                      int resistance, const unsigned char* more, size_t moreSize) {
  if (libcrypto::randomFails) return 0;
  return ORB_NEXT(EVP_RAND_generate)(context, out, size, strength, resistance, more, moreSize);
}

// Deprecated, but the library calls it.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
int RSA_public_encrypt(int size, const unsigned char* from, unsigned char* to, RSA* key,
                       int padding) {
  if (!libcrypto::wrapResult) return ORB_NEXT(RSA_public_encrypt)(size, from, to, key, padding);
  ERR_raise(ERR_LIB_RSA, 1);
  return *libcrypto::wrapResult;
}
#pragma GCC diagnostic pop
