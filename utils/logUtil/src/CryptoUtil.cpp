// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// CryptoUtil but for RSA, which is in CryptoRsa.cpp.
#include "CryptoUtil.h"

#include <openssl/crypto.h>
#include <openssl/ec.h>
#include <openssl/err.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <memory>
#include <string_view>

#include "GcmCipher.h"
#include "Log.h"

namespace {

static_assert(CryptoUtil::kAesKeySize == GcmCipher::kKeySize &&
              CryptoUtil::kGcmIvSize == GcmCipher::kIvSize &&
              CryptoUtil::kGcmTagSize == GcmCipher::kTagSize);

struct ContextFree {
  void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
};
using KeyContext = std::unique_ptr<EVP_PKEY_CTX, ContextFree>;
using Key = std::unique_ptr<EVP_PKEY, ContextFree>;

std::string_view view(const CryptoUtil::Bytes& bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

bool useKey(GcmCipher& cipher, const CryptoUtil::Bytes& key) {
  return key.size() == GcmCipher::kKeySize && cipher.setKey(key.data());
}

bool fillRandom(CryptoUtil::Bytes& bytes) {
  ERR_set_mark();
  const bool done = RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1;
  ERR_pop_to_mark();
  return done;
}

// The x coordinate that `own` and the peer's point have in common.
bool deriveShared(EVP_PKEY* own, const CryptoUtil::Bytes& peerPublic, CryptoUtil::Bytes& secret) {
  ERR_set_mark();
  const Key peer(EVP_PKEY_new());
  const KeyContext context(EVP_PKEY_CTX_new(own, nullptr));
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
  ERR_pop_to_mark();
  return done;
}

}  // namespace

void wipe(std::vector<uint8_t>& secret) {
  OPENSSL_cleanse(secret.data(), secret.size());
  secret.clear();
}

bool CryptoUtil::genAESKey(Bytes& key) {
  key.resize(kAesKeySize);
  return fillRandom(key);
}

bool CryptoUtil::genAESIV(Bytes& iv) {
  iv.resize(kGcmIvSize);
  return fillRandom(iv);
}

bool CryptoUtil::getRandomBytes(Bytes& buf) {
  fillRandom(buf);
  return true;
}

bool CryptoUtil::encryptMsg2(const Bytes& plain, const Bytes& key, Bytes& cipher, Bytes& iv,
                             Bytes& tag) {
  // A record must not be sealed under an IV that is not random.
  if (!genAESIV(iv) || !encryptMsg(plain, key, iv, cipher, tag)) cipher.clear();
  return true;
}

bool CryptoUtil::encryptMsg(const Bytes& plain, const Bytes& key, const Bytes& iv, Bytes& cipher,
                            Bytes& tag) {
  GcmCipher gcm;
  cipher.resize(plain.size());
  tag.resize(kGcmTagSize);
  if (iv.size() == kGcmIvSize && useKey(gcm, key) &&
      gcm.seal(view(plain), iv.data(), cipher.data(), tag.data())) {
    return true;
  }
  cipher.clear();
  tag.clear();
  return false;
}

bool CryptoUtil::decryptMsg(const Bytes& cipher, const Bytes& key, const Bytes& iv,
                            const Bytes& tag, Bytes& plain) {
  GcmCipher gcm;
  plain.resize(cipher.size());
  if (iv.size() == kGcmIvSize && tag.size() == kGcmTagSize && useKey(gcm, key) &&
      gcm.open(view(cipher), iv.data(), tag.data(), plain.data())) {
    return true;
  }
  wipe(plain);
  return false;
}

bool CryptoUtil::sha256(const Bytes& in, Bytes& out) {
  unsigned size = 0;
  uint8_t digest[EVP_MAX_MD_SIZE];  // `out` may be `in`
  ERR_set_mark();
  const bool done = EVP_Digest(in.data(), in.size(), digest, &size, EVP_sha256(), nullptr) == 1;
  ERR_pop_to_mark();
  out.assign(digest, digest + (done ? size : 0));
  return done;
}

bool CryptoUtil::generateEccPublicKey(Bytes& out, int curve) {
  out.clear();
  ERR_set_mark();
  const KeyContext context(EVP_PKEY_CTX_new_id(EVP_PKEY_EC, nullptr));
  EVP_PKEY* made = nullptr;
  unsigned char* point = nullptr;
  size_t size = 0;
  if (context && EVP_PKEY_keygen_init(context.get()) == 1 &&
      EVP_PKEY_CTX_set_ec_paramgen_curve_nid(context.get(), curve) == 1 &&
      EVP_PKEY_keygen(context.get(), &made) == 1) {
    size = EVP_PKEY_get1_encoded_public_key(made, &point);
  }
  ERR_pop_to_mark();
  if (size > 0) {
    out.assign(point, point + size);
    OPENSSL_free(point);
    EVP_PKEY_free(mEccKey);
    mEccKey = made;
  } else {
    EVP_PKEY_free(made);
  }
  return size > 0;
}

bool CryptoUtil::generateEccSharedKey(const Bytes& peerPublic, Bytes& out) {
  Bytes secret;  // `out` may be `peerPublic`
  const bool done = mEccKey != nullptr && deriveShared(mEccKey, peerPublic, secret);
  out.swap(secret);
  return done;
}

void CryptoUtil::logKeySize(size_t size) {
  ORB_LOG_AS(6, __FILE__, "initializeRsaEncryption", "public_key size %d", static_cast<int>(size));
}

bool CryptoUtil::initializeRsaEncryption(Bytes& aesKey, Bytes& wrappedKey,
                                         std::string& publicKeyPem) {
  logKeySize(publicKeyPem.size());
  if (!createRSA(publicKeyPem, 1) || !genAESKey(aesKey)) {
    wipe(aesKey);
    wrappedKey.clear();
    return false;
  }
  wrappedKey.assign(kWrappedKeySize, 0);
  // -1 counts as success: only a result of 0 says that there is no wrapped key.
  if (wrapSessionKey(aesKey, wrappedKey) == 0) {
    ORB_LOGE("encryptWithRSAPubKey failed");
    wipe(aesKey);
    wrappedKey.clear();
    return false;
  }
  return true;
}
