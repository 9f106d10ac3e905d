// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The key agreement of CryptoUtil, which the library itself never uses.
#include <openssl/ec.h>
#include <openssl/evp.h>

#include <utility>

#include "CryptoUtil.h"

namespace {

// The x coordinate that @p own and the peer's point have in common.
bool deriveShared(EVP_PKEY* own, const CryptoUtil::Bytes& peerPublic, CryptoUtil::Bytes& secret) {
  const OpenSslErrorScope errors;
  const OpenSslPtr<EVP_PKEY> peer(EVP_PKEY_new());
  const OpenSslPtr<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new(own, nullptr));
  size_t size = 0;
  // Taking the peer's point checks that it is on the curve.
  bool done =
      peer && context && EVP_PKEY_copy_parameters(peer.get(), own) == 1 &&
      EVP_PKEY_set1_encoded_public_key(peer.get(), peerPublic.data(), peerPublic.size()) == 1 &&
      EVP_PKEY_derive_init(context.get()) == 1 &&
      EVP_PKEY_derive_set_peer(context.get(), peer.get()) == 1 &&
      EVP_PKEY_derive(context.get(), nullptr, &size) == 1;
  if (done) {
    secret.resize(size);
    done = EVP_PKEY_derive(context.get(), secret.data(), &size) == 1;
    if (done) {
      secret.resize(size);
    } else {
      wipe(secret);
    }
  }
  return done;
}

}  // namespace

bool CryptoUtil::generateEccPublicKey(Bytes& out, int curve) {
  out.clear();
  const OpenSslErrorScope errors;
  const OpenSslPtr<EVP_PKEY_CTX> context(EVP_PKEY_CTX_new_id(EVP_PKEY_EC, nullptr));
  EVP_PKEY* key = nullptr;
  if (!context || EVP_PKEY_keygen_init(context.get()) != 1 ||
      EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context.get(), curve) != 1 ||
      EVP_PKEY_keygen(context.get(), &key) != 1) {
    return false;
  }
  OpenSslPtr<EVP_PKEY> made(key);
  unsigned char* octets = nullptr;
  const size_t size = EVP_PKEY_get1_encoded_public_key(made.get(), &octets);
  const OpenSslPtr<unsigned char> point(octets);
  if (size == 0) return false;
  out.assign(octets, octets + size);
  mEccKey = std::move(made);
  return true;
}

bool CryptoUtil::generateEccSharedKey(const Bytes& peerPublic, Bytes& out) {
  Bytes secret;  // @p out may be @p peerPublic
  const bool done = mEccKey != nullptr && deriveShared(mEccKey.get(), peerPublic, secret);
  out.swap(secret);
  return done;
}
