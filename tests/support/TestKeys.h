// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Keys for tests. The build makes the RSA keys (make_keys.sh).
namespace testkeys {

struct RsaKey {
  std::string publicPem;        // SubjectPublicKeyInfo
  std::string publicPkcs1Pem;   // "RSA PUBLIC KEY"
  std::string privatePem;       // PKCS#8
  std::string privatePkcs1Pem;  // "RSA PRIVATE KEY"
  std::string encryptedPem;     // PKCS#8, with a passphrase
  std::vector<uint8_t> n, e, d;
};
// 2048, 3072 or 4096 bits.
const RsaKey& rsaKey(unsigned bits);
// A second key of 2048 bits.
const RsaKey& otherRsaKey();

// The public PEM block of a key without a private half: its modulus is an odd number of any size.
std::string madeUpPublicPem(int bits, const std::string& exponentHex = "10001");

std::string ecPublicPem();
std::string ecPrivatePem();

}  // namespace testkeys
