// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <map>
#include <optional>
#include <string>

#include "orblog/ByteView.h"
#include "orblog/KeyRing.h"
#include "orblog/OpenSsl.h"
#include "orblog/Passphrase.h"

namespace orblog {

// An RSA private key from a PEM file. It decrypts the headers of log files.
class PrivateKey {
 public:
  // An encrypted file needs its passphrase: the first line of `passphraseFile`, or if that is
  // empty, the user's input, requested once. Empty on failure, with a sentence in `error`.
  static std::optional<PrivateKey> load(const std::string& path, const std::string& passphraseFile,
                                        std::string& error);
  int bits() const;
  size_t size() const;  // size of its ciphertext in bytes
  // A warning that no log can be read with this key; empty for a usable key.
  std::string warning() const;
  // The session key of a header if it was wrapped for this key.
  std::optional<SessionKey> unwrap(ByteView header) const;

 private:
  explicit PrivateKey(OpenSslPtr<EVP_PKEY> key) : mKey(std::move(key)) {}
  OpenSslPtr<EVP_PKEY> mKey;
};

// Decrypts headers with the private key and adds the session keys to the ring. All files of one run
// have the same header, so results are cached, because the RSA operation is slow.
class KeyFinder {
 public:
  KeyFinder(const PrivateKey& key, KeyRing& ring) : mKey(key), mRing(ring) {}
  std::optional<size_t> open(ByteView header, const std::string& origin);

 private:
  const PrivateKey& mKey;
  KeyRing& mRing;
  std::map<std::string, std::optional<size_t>> mKnown;
};

}  // namespace orblog
