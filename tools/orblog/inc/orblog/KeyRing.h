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

// A session key; the destructor wipes it.
class SessionKey {
 public:
  static constexpr size_t kSize = 32;
  SessionKey() = default;
  SessionKey(const SessionKey&) = default;
  SessionKey& operator=(const SessionKey&) = default;
  ~SessionKey();
  std::array<uint8_t, kSize> bytes = {};
};

// All session keys found so far. If a file lost its header, or if two processes wrote to it, only
// the header of another file has the key of its records. So every record may be tried with all
// keys. Not thread-safe.
class KeyRing {
 public:
  // Returns the number of the key. A known key keeps its number and its origin.
  size_t add(const SessionKey& key, const std::string& origin);
  size_t size() const { return mEntries.size(); }
  // The file whose header has the key.
  const std::string& origin(size_t number) const { return mEntries[number].origin; }

  // Decrypts a record (IV, tag, ciphertext) with the key of this number into `text`. False if the
  // key does not fit; `text` is empty then.
  bool opens(size_t number, ByteView sealed, std::string& text) const;

 private:
  struct Entry {
    SessionKey key;
    std::string origin;
    OpenSslPtr<EVP_CIPHER_CTX>
        context;  // the key is set once, because that takes longer than decrypting a short record
  };
  static bool openWith(const Entry& entry, ByteView sealed, std::string& text);

  std::vector<Entry> mEntries;
};

}  // namespace orblog
