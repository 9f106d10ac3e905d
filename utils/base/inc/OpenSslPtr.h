// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <memory>

// libcrypto has a function of its own to free each kind of object; this deleter calls the right
// one. No state.
struct OpenSslDeleter {
  void operator()(BIO* object) const { BIO_free(object); }  // none is a chain
  void operator()(EVP_CIPHER_CTX* object) const { EVP_CIPHER_CTX_free(object); }
  void operator()(EVP_PKEY* object) const { EVP_PKEY_free(object); }
  void operator()(EVP_PKEY_CTX* object) const { EVP_PKEY_CTX_free(object); }
  void operator()(EVP_RAND* object) const { EVP_RAND_free(object); }
  void operator()(EVP_RAND_CTX* object) const { EVP_RAND_CTX_free(object); }
  void operator()(unsigned char* memory) const { OPENSSL_free(memory); }
// Keys of this kind are deprecated, but some code still has them.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  void operator()(RSA* object) const { RSA_free(object); }
#pragma GCC diagnostic pop
};

// The one owner of libcrypto's objects. Null is no object.
template <class T>
using OpenSslPtr = std::unique_ptr<T, OpenSslDeleter>;

// Removes the errors that libcrypto has queued in this scope, so that the application does not find
// them. Do not use it for every record: the mark alone allocates a queue for the thread that logs,
// and the queue leaks if the process ends before the thread.
class OpenSslErrorScope {
 public:
  OpenSslErrorScope() { ERR_set_mark(); }
  OpenSslErrorScope(const OpenSslErrorScope&) = delete;
  OpenSslErrorScope& operator=(const OpenSslErrorScope&) = delete;
  ~OpenSslErrorScope() { ERR_pop_to_mark(); }
};
