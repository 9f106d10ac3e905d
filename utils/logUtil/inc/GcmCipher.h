// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include "OpenSslPtr.h"
#include "Process.h"

// AES-256-GCM with one key for many messages. It keeps the context and draws random bytes in
// advance: to do both for each message would cost more than to seal a log line. Belongs to one
// thread at a time; the encrypted log has one, which the log's mutex guards. The key is in
// libcrypto's context, which wipes it.
class GcmCipher {
 public:
  static constexpr size_t kKeySize = 32;
  static constexpr size_t kIvSize = 12;
  static constexpr size_t kTagSize = 16;

  GcmCipher() = default;
  GcmCipher(const GcmCipher&) = delete;
  GcmCipher& operator=(const GcmCipher&) = delete;
  ~GcmCipher();

  // @p key has kKeySize bytes.
  bool setKey(const uint8_t* key);
  void clear();

  // Draws an IV that no message of this key, in this process or in one forked from it, had before.
  bool newIv(uint8_t* iv);
  // Seals under the given IV: @p cipher gets as many bytes as @p plain has, @p tag kTagSize.
  bool seal(std::string_view plain, const uint8_t* iv, uint8_t* cipher, uint8_t* tag);
  // Opens what seal() made. False if it is not authentic: then do not use @p plain.
  bool open(std::string_view cipher, const uint8_t* iv, const uint8_t* tag, uint8_t* plain);

 private:
  static constexpr unsigned kStrength = 256;

  bool prepare();
  bool prepareRandom();
  bool fillPool();

  OpenSslPtr<EVP_CIPHER_CTX> mContext;
  OpenSslPtr<EVP_RAND_CTX> mRandom;
  // Random bytes drawn in advance. Another process, a forked child, has the same ones and must not
  // use them: the pool belongs to the process that drew it.
  std::array<uint8_t, 85 * kIvSize> mPool{};
  size_t mPoolUsed = sizeof(mPool);
  ProcessMark mPoolOwner;
};
