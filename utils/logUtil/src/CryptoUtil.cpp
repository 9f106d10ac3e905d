// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// CryptoUtil as the encrypted log needs it; the RSA operations are in CryptoRsa.cpp.
#include "CryptoUtil.h"

#include <openssl/crypto.h>
#include <openssl/rand.h>

CryptoUtil::~CryptoUtil() = default;

void wipe(std::vector<uint8_t>& secret) {
  OPENSSL_cleanse(secret.data(), secret.size());
  secret.clear();
}

bool CryptoUtil::genAESKey(Bytes& key) {
  key.resize(kAesKeySize);
  return fillRandom(key);
}

bool CryptoUtil::fillRandom(Bytes& bytes) {
  const OpenSslErrorScope errors;
  return RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) == 1;
}

bool CryptoUtil::initializeRsaEncryption(Bytes& aesKey, Bytes& wrappedKey,
                                         std::string& publicKeyPem) {
  mCouldNotWrap = false;
  if (!createRSA(publicKeyPem, 1) || !genAESKey(aesKey)) {
    wipe(aesKey);
    wrappedKey.clear();
    return false;
  }
  wrappedKey.assign(kWrappedKeySize, 0);
  // -1 counts as success: only a result of 0 says that there is no wrapped key.
  mCouldNotWrap = wrapSessionKey(aesKey, wrappedKey) == 0;
  if (mCouldNotWrap) {
    wipe(aesKey);
    wrappedKey.clear();
  }
  return !mCouldNotWrap;
}
