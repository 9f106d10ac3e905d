// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "OpenSslPtr.h"

// Cryptographic operations of libcrypto. Objects are short-lived, one per use, and belong to one
// thread; nothing is shared between them. All results are plain values; memory that held key
// material is wiped before it is freed. Errors that libcrypto queues for the thread are removed, so
// that the application does not find them. It logs nothing.
//
// The set-up of the encrypted log uses the first group. The others are for other callers of the
// class (CryptoMessages.cpp, CryptoEcc.cpp).
class CryptoUtil {
 public:
  using Bytes = std::vector<uint8_t>;

  static constexpr size_t kAesKeySize = 32;
  static constexpr size_t kGcmIvSize = 12;
  static constexpr size_t kGcmTagSize = 16;
  static constexpr size_t kWrappedKeySize = 512;  // room of a 4096-bit key

  CryptoUtil() = default;
  CryptoUtil(const CryptoUtil&) = delete;
  CryptoUtil& operator=(const CryptoUtil&) = delete;
  virtual ~CryptoUtil();

  // Makes what an encrypted log starts with: a new session key, and the same key wrapped with the
  // public key, in a field of kWrappedKeySize that ends in zeros. If libcrypto cannot wrap it, for
  // example because the public key is too small, the field is all zeros, and a line on standard
  // error says so. False, with both empty, if there is no key, if it would be unsafe, or if its
  // block is larger than the field.
  bool initializeRsaEncryption(Bytes& aesKey, Bytes& wrappedKey, std::string& publicKeyPem);
  // Whether the latest initializeRsaEncryption() failed at its last step, the wrapping.
  bool couldNotWrap() const { return mCouldNotWrap; }

  // Reads the key in the PEM text: with isPublic a SubjectPublicKeyInfo block, else a private key.
  // False if there is none; then libcrypto's whole error queue of the thread is on standard error.
  // The errors of the application are in the queue again afterwards, but its marks are not.
  bool createRSA(std::string& pem, int isPublic);
  // RSA with OAEP padding. The size of @p out is the room: for a block of the key's size, or for
  // the decrypted text. The result is libcrypto's, the length written or -1; 0 without a key or
  // without room.
  int encryptWithRSAPubKey(const Bytes& in, Bytes& out);
  int decryptWithRSAPrivKey(const Bytes& in, Bytes& out);
  // A random AES-256 key; sets the size of the vector.
  bool genAESKey(Bytes& key);

  // A random GCM initialization vector; sets the size of the vector.
  bool genAESIV(Bytes& iv);
  // AES-256-GCM without additional data. encryptMsg2 draws the IV; it always returns true, and
  // @p cipher is empty if it failed. decryptMsg returns false, with @p plain empty, if the message
  // is not authentic.
  bool encryptMsg2(const Bytes& plain, const Bytes& key, Bytes& cipher, Bytes& iv, Bytes& tag);
  bool encryptMsg(const Bytes& plain, const Bytes& key, const Bytes& iv, Bytes& cipher, Bytes& tag);
  bool decryptMsg(const Bytes& cipher, const Bytes& key, const Bytes& iv, const Bytes& tag,
                  Bytes& plain);

  bool sha256(const Bytes& in, Bytes& out);

  // Key agreement on a named curve, given by libcrypto's NID: makes and holds a key pair and gives
  // its public point, uncompressed; then the shared secret with a peer's point, the x coordinate.
  bool generateEccPublicKey(Bytes& out, int curve);
  bool generateEccSharedKey(const Bytes& peerPublic, Bytes& out);

  // Fills @p buf, whose size stays; always true.
  bool getRandomBytes(Bytes& buf);

 private:
  static bool fillRandom(Bytes& bytes);
  // As encryptWithRSAPubKey, for the set-up of an encrypted log.
  int wrapSessionKey(const Bytes& sessionKey, Bytes& wrapped);

  OpenSslPtr<RSA> mRsa;
  OpenSslPtr<EVP_PKEY> mEccKey;
  bool mCouldNotWrap = false;
};

// Overwrites a secret and empties its vector.
void wipe(std::vector<uint8_t>& secret);
