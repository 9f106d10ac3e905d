// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The RSA operations of CryptoUtil. They keep to libcrypto's RSA functions, whose results and
// failure values their callers know; libcrypto calls these functions deprecated, so they are used
// here only.
#define OPENSSL_SUPPRESS_DEPRECATED

#include <openssl/bio.h>
#include <openssl/bn.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <cstdio>
#include <memory>

#include "CryptoUtil.h"

namespace {

// What OAEP with SHA-1 takes of a block.
constexpr int kOaepOverhead = 42;

// An exponent of 1 would leave the session key as it is.
bool canWrapSessionKey(const RSA* key) {
  const int size = RSA_size(key);
  const BIGNUM* const exponent = RSA_get0_e(key);
  return BN_is_odd(exponent) == 1 && BN_is_one(exponent) == 0 &&
         size >= static_cast<int>(CryptoUtil::kAesKeySize) + kOaepOverhead &&
         size <= static_cast<int>(CryptoUtil::kWrappedKeySize);
}

// The key must not wait for a passphrase on somebody's terminal.
int noPassphrase(char*, int, int, void*) { return 0; }

// libcrypto's errors since the mark, and the mark, off the thread's queue. With errors of the
// application before them only the last can be told apart.
void printErrorsSinceMark(bool othersBefore) {
  if (!othersBefore) {
    ERR_print_errors_fp(stderr);
  } else if (const unsigned long error = ERR_peek_last_error()) {
    char text[256];
    ERR_error_string_n(error, text, sizeof text);
    std::fprintf(stderr, "%s\n", text);
  }
  ERR_pop_to_mark();
}

struct BioFree {
  void operator()(BIO* bio) const { BIO_free(bio); }
};

}  // namespace

CryptoUtil::~CryptoUtil() {
  RSA_free(mRsa);
  EVP_PKEY_free(mEccKey);
}

bool CryptoUtil::createRSA(std::string& pem, int isPublic) {
  RSA_free(mRsa);
  mRsa = nullptr;
  const bool othersBefore = ERR_peek_error() != 0;
  ERR_set_mark();
  const std::unique_ptr<BIO, BioFree> bio(
      BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  if (bio) {
    mRsa = isPublic != 0 ? PEM_read_bio_RSA_PUBKEY(bio.get(), nullptr, noPassphrase, nullptr)
                         : PEM_read_bio_RSAPrivateKey(bio.get(), nullptr, noPassphrase, nullptr);
  }
  if (mRsa != nullptr && isPublic != 0 && !canWrapSessionKey(mRsa)) {
    std::fprintf(stderr, "RSA key of %d bits cannot wrap a session key\n", RSA_bits(mRsa));
    RSA_free(mRsa);
    mRsa = nullptr;
    ERR_pop_to_mark();
  } else if (mRsa == nullptr) {
    printErrorsSinceMark(othersBefore);
  } else {
    ERR_pop_to_mark();
  }
  return mRsa != nullptr;
}

int CryptoUtil::encryptWithRSAPubKey(const Bytes& in, Bytes& out) {
  if (mRsa == nullptr || static_cast<int>(out.size()) < RSA_size(mRsa)) return 0;
  ERR_set_mark();
  const int size = RSA_public_encrypt(static_cast<int>(in.size()), in.data(), out.data(), mRsa,
                                      RSA_PKCS1_OAEP_PADDING);
  ERR_pop_to_mark();
  return size;
}

int CryptoUtil::decryptWithRSAPrivKey(const Bytes& in, Bytes& out) {
  if (mRsa == nullptr || static_cast<int>(out.size()) < RSA_size(mRsa)) return 0;
  ERR_set_mark();
  const int size = RSA_private_decrypt(static_cast<int>(in.size()), in.data(), out.data(), mRsa,
                                       RSA_PKCS1_OAEP_PADDING);
  ERR_pop_to_mark();
  return size;
}
