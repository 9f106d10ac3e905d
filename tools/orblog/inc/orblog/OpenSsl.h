// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <openssl/bio.h>
#include <openssl/evp.h>

#include <memory>

namespace orblog {

struct OpenSslDeleter {
  void operator()(BIO* object) const { BIO_free_all(object); }
  void operator()(EVP_CIPHER_CTX* object) const { EVP_CIPHER_CTX_free(object); }
  void operator()(EVP_PKEY* object) const { EVP_PKEY_free(object); }
  void operator()(EVP_PKEY_CTX* object) const { EVP_PKEY_CTX_free(object); }
};

// OpenSSL's objects live in these only.
template <typename T>
using OpenSslPtr = std::unique_ptr<T, OpenSslDeleter>;

}  // namespace orblog
