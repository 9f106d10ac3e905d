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

// An RSA private key from a PEM file, which alone opens the headers of log files.
class PrivateKey {
 public:
  // An encrypted file needs its passphrase: the first line of `passphraseFile`, or what the user
  // types when that is empty; asked for once. None on failure, with a sentence in `error`.
  static std::optional<PrivateKey> load(const std::string& path, const std::string& passphraseFile,
                                        std::string& error);
  int bits() const;
  size_t size() const;  // of what it decrypts, in bytes
  // What its user should know: that no log can be read with it. Empty for any other key.
  std::string warning() const;
  // The session key of a header, when it was wrapped for this key.
  std::optional<SessionKey> unwrap(ByteView header) const;

 private:
  explicit PrivateKey(OpenSslPtr<EVP_PKEY> key) : mKey(std::move(key)) {}
  OpenSslPtr<EVP_PKEY> mKey;
};

// Opens headers with the private key and puts what it finds on the ring. All files of one run of a
// process have the same header, so it remembers: the private operation is what takes time.
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
