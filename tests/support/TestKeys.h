// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// Keys for tests, made when they are first asked for.
namespace testkeys {

struct RsaKey {
  std::string publicPem;        // SubjectPublicKeyInfo
  std::string publicPkcs1Pem;   // "RSA PUBLIC KEY"
  std::string privatePem;       // PKCS#8
  std::string privatePkcs1Pem;  // "RSA PRIVATE KEY"
  std::string encryptedPem;     // PKCS#8, with a passphrase
  std::vector<uint8_t> n, e, d;
};
// 2048 bits or more; from 4096 on the modulus has four primes, which are found quickly.
const RsaKey& rsaKey(unsigned bits);
// A second key of 2048 bits.
const RsaKey& otherRsaKey();

// The public block of a key that nobody has the other half of: a made-up odd modulus of any size.
std::string madeUpPublicPem(int bits, const std::string& exponentHex = "10001");

std::string ecPublicPem();
std::string ecPrivatePem();

}  // namespace testkeys
