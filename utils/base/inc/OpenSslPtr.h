// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <openssl/bio.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rsa.h>

#include <memory>

// libcrypto frees each kind of its objects with a function of its own; this one calls the right
// one. No state.
struct OpenSslDeleter {
  void operator()(BIO* object) const { BIO_free(object); }  // none is a chain
  void operator()(EVP_CIPHER_CTX* object) const { EVP_CIPHER_CTX_free(object); }
  void operator()(EVP_PKEY* object) const { EVP_PKEY_free(object); }
  void operator()(EVP_PKEY_CTX* object) const { EVP_PKEY_CTX_free(object); }
  void operator()(EVP_RAND* object) const { EVP_RAND_free(object); }
  void operator()(EVP_RAND_CTX* object) const { EVP_RAND_CTX_free(object); }
  void operator()(unsigned char* memory) const { OPENSSL_free(memory); }
// Keys of this kind are deprecated; who has one anyway frees it here as well.
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wdeprecated-declarations"
  void operator()(RSA* object) const { RSA_free(object); }
#pragma GCC diagnostic pop
};

// The one owner of libcrypto's objects. Null is no object.
template <class T>
using OpenSslPtr = std::unique_ptr<T, OpenSslDeleter>;

// What libcrypto queues about failed calls of this scope is not left behind for the application.
// Not around what is done for every record: the mark alone makes a queue for the thread that logs,
// which stays behind where the process ends before the thread does.
class OpenSslErrorScope {
 public:
  OpenSslErrorScope() { ERR_set_mark(); }
  OpenSslErrorScope(const OpenSslErrorScope&) = delete;
  OpenSslErrorScope& operator=(const OpenSslErrorScope&) = delete;
  ~OpenSslErrorScope() { ERR_pop_to_mark(); }
};
