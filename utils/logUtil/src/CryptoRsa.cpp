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

#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "CryptoUtil.h"

namespace {

// With an exponent of 1 the block stays as it is, and with an even one it has no way back.
bool hidesWhatItWraps(const RSA* key) {
  const BIGNUM* const exponent = RSA_get0_e(key);
  return BN_is_odd(exponent) == 1 && BN_is_one(exponent) == 0;
}

// The key must not wait for a passphrase on somebody's terminal.
int noPassphrase(char*, int, int, void*) { return 0; }

// An entry of the thread's error queue.
struct QueuedError {
  unsigned long code = 0;
  int line = 0;
  bool hasText = false;
  std::string file, function, text;
};
using QueuedErrors = std::vector<QueuedError>;

QueuedErrors takeErrors() {
  QueuedErrors errors;
  QueuedError error;
  const char *file, *function, *text;
  int flags = 0;
  while ((error.code = ERR_get_error_all(&file, &error.line, &function, &text, &flags)) != 0) {
    error.hasText = (flags & ERR_TXT_STRING) != 0;
    error.file = file;
    error.function = function;
    error.text = error.hasText ? text : "";
    errors.push_back(error);
  }
  return errors;
}

void queueErrors(const QueuedErrors& errors) {
  for (const QueuedError& error : errors) {
    ERR_new();
    ERR_set_debug(error.file.c_str(), error.line, error.function.c_str());
    ERR_set_error(ERR_GET_LIB(error.code), ERR_GET_REASON(error.code),
                  error.hasText ? "%s" : nullptr, error.text.c_str());
  }
}

// The whole queue, as if the two were in it together; then it is empty.
void printErrors(const QueuedErrors& before) {
  const QueuedErrors own = takeErrors();
  queueErrors(before);
  ERR_print_errors_fp(stderr);
  queueErrors(own);
  ERR_print_errors_fp(stderr);
}

}  // namespace

bool CryptoUtil::createRSA(std::string& pem, int isPublic) {
  mRsa.reset();
  const QueuedErrors before = takeErrors();
  const OpenSslPtr<BIO> bio(BIO_new_mem_buf(pem.data(), static_cast<int>(pem.size())));
  if (bio) {
    mRsa.reset(isPublic != 0
                   ? PEM_read_bio_RSA_PUBKEY(bio.get(), nullptr, noPassphrase, nullptr)
                   : PEM_read_bio_RSAPrivateKey(bio.get(), nullptr, noPassphrase, nullptr));
  }
  if (mRsa == nullptr) printErrors(before);
  ERR_clear_error();
  queueErrors(before);
  return mRsa != nullptr;
}

int CryptoUtil::encryptWithRSAPubKey(const Bytes& in, Bytes& out) {
  if (mRsa == nullptr || static_cast<int>(out.size()) < RSA_size(mRsa.get())) return 0;
  const OpenSslErrorScope errors;
  return RSA_public_encrypt(static_cast<int>(in.size()), in.data(), out.data(), mRsa.get(),
                            RSA_PKCS1_OAEP_PADDING);
}

int CryptoUtil::decryptWithRSAPrivKey(const Bytes& in, Bytes& out) {
  if (mRsa == nullptr) return 0;
  Bytes text(static_cast<size_t>(RSA_size(mRsa.get())));  // how long it is shows only afterwards
  const OpenSslErrorScope errors;
  int size = RSA_private_decrypt(static_cast<int>(in.size()), in.data(), text.data(), mRsa.get(),
                                 RSA_PKCS1_OAEP_PADDING);
  if (size > static_cast<int>(out.size())) size = 0;
  if (size > 0) std::copy_n(text.begin(), size, out.begin());
  wipe(text);
  return size;
}

int CryptoUtil::wrapSessionKey(const Bytes& sessionKey, Bytes& wrapped) {
  const int bits = RSA_bits(mRsa.get());
  if (!hidesWhatItWraps(mRsa.get())) {
    std::fprintf(stderr, "RSA key of %d bits hides nothing: its exponent is 1 or even\n", bits);
    return 0;
  }
  if (RSA_size(mRsa.get()) > static_cast<int>(kWrappedKeySize)) {
    std::fprintf(stderr, "RSA key of %d bits has no room in the header of a log file\n", bits);
    return 0;
  }
  const int result = encryptWithRSAPubKey(sessionKey, wrapped);
  if (result < 0) {
    std::fprintf(stderr,
                 "RSA key of %d bits cannot wrap a session key: nobody will be able to read the "
                 "encrypted logs\n",
                 bits);
    // Whatever libcrypto got to, nothing of the key goes into a file.
    std::fill(wrapped.begin(), wrapped.end(), uint8_t{0});
  }
  return result;
}
