// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

// The same cryptography from another implementation, libgcrypt. It reads what the library writes
// with libcrypto, and the reverse. All functions may be called from any thread. If libgcrypt
// refuses an input, they return nullopt, or end the program if no test can mean that.
namespace reference {

using Bytes = std::vector<uint8_t>;

// AES-256-GCM with an IV of 12 bytes, a tag of 16 and no additional data.
struct Sealed {
  Bytes cipher;
  Bytes tag;
};
Sealed seal(const Bytes& key, const Bytes& iv, const Bytes& plain);
std::optional<Bytes> open(const Bytes& key, const Bytes& iv, const Bytes& tag, const Bytes& cipher);

Bytes sha256(const Bytes& in);

// RSA with OAEP padding (SHA-1). Numbers are big-endian.
Bytes oaepEncrypt(const Bytes& n, const Bytes& e, const Bytes& plain);
std::optional<Bytes> oaepDecrypt(const Bytes& n, const Bytes& e, const Bytes& d,
                                 const Bytes& cipher);

// Points are uncompressed: 0x04, x, y. Curves have libgcrypt's names, such as "NIST P-256".
Bytes publicPoint(const std::string& curve, const Bytes& scalar);
// The x coordinate of scalar times point, at the full size of a coordinate.
Bytes sharedX(const std::string& curve, const Bytes& scalar, const Bytes& point);

}  // namespace reference
