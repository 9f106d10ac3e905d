// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "orblog/ByteView.h"
#include "orblog/OpenSsl.h"

namespace orblog {

// A session key; wiped when it goes.
class SessionKey {
 public:
  static constexpr size_t kSize = 32;
  SessionKey() = default;
  SessionKey(const SessionKey&) = default;
  SessionKey& operator=(const SessionKey&) = default;
  ~SessionKey();
  std::array<uint8_t, kSize> bytes = {};
};

// All session keys found so far. A file that lost its header, or one that two processes wrote to,
// holds records of a key that only another file's header gives, so every record may be tried with
// all of them. Not for two threads at a time.
class KeyRing {
 public:
  // The number of the key; a key that is there already keeps its number and its origin.
  size_t add(const SessionKey& key, const std::string& origin);
  size_t size() const { return mEntries.size(); }
  // The file whose header gave the key.
  const std::string& origin(size_t number) const { return mEntries[number].origin; }

  // Opens a sealed record (IV, tag, ciphertext) with the key of this number and puts its text into
  // `text`. False when the key does not fit; `text` is empty then.
  bool opens(size_t number, ByteView sealed, std::string& text) const;

 private:
  struct Entry {
    SessionKey key;
    std::string origin;
    OpenSslPtr<EVP_CIPHER_CTX> context;  // keyed once, since that costs more than a short record
  };
  static bool openWith(const Entry& entry, ByteView sealed, std::string& text);

  std::vector<Entry> mEntries;
};

}  // namespace orblog
