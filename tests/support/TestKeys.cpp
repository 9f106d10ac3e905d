// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#define OPENSSL_SUPPRESS_DEPRECATED  // keys of odd sizes come from their numbers only

#include "TestKeys.h"

#include <openssl/core_names.h>
#include <openssl/evp.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <cstdlib>
#include <functional>
#include <map>
#include <memory>
#include <mutex>

#include "TestKeysPem.h"

namespace {

struct Free {
  void operator()(EVP_PKEY* key) const { EVP_PKEY_free(key); }
  void operator()(EVP_PKEY_CTX* context) const { EVP_PKEY_CTX_free(context); }
  void operator()(BIO* bio) const { BIO_free(bio); }
  void operator()(BIGNUM* number) const { BN_free(number); }
  void operator()(RSA* key) const { RSA_free(key); }
};
template <class T>
using Owned = std::unique_ptr<T, Free>;

void require(bool done) {
  if (!done) std::abort();
}

std::string pem(const std::function<int(BIO*)>& write) {
  const Owned<BIO> bio(BIO_new(BIO_s_mem()));
  require(write(bio.get()) == 1);
  char* text = nullptr;
  const long size = BIO_get_mem_data(bio.get(), &text);
  return std::string(text, static_cast<size_t>(size));
}

std::vector<uint8_t> number(const EVP_PKEY* key, const char* name) {
  BIGNUM* value = nullptr;
  require(EVP_PKEY_get_bn_param(key, name, &value) == 1);
  const Owned<BIGNUM> owner(value);
  std::vector<uint8_t> bytes(static_cast<size_t>(BN_num_bytes(value)));
  BN_bn2bin(value, bytes.data());
  return bytes;
}

const char* madeKey(unsigned bits) {
  switch (bits) {
    case 2048:
      return kRsa2048;
    case 3072:
      return kRsa3072;
    case 4096:
      return kRsa4096;
    default:
      std::abort();
  }
}

testkeys::RsaKey describe(const char* privatePem) {
  const Owned<BIO> text(BIO_new_mem_buf(privatePem, -1));
  const Owned<EVP_PKEY> owner(PEM_read_bio_PrivateKey(text.get(), nullptr, nullptr, nullptr));
  require(owner != nullptr);
  EVP_PKEY* const key = owner.get();
  testkeys::RsaKey result;
  result.publicPem = pem([key](BIO* bio) { return PEM_write_bio_PUBKEY(bio, key); });
  result.publicPkcs1Pem =
      pem([key](BIO* bio) { return PEM_write_bio_RSAPublicKey(bio, EVP_PKEY_get0_RSA(key)); });
  result.privatePem = pem([key](BIO* bio) {
    return PEM_write_bio_PKCS8PrivateKey(bio, key, nullptr, nullptr, 0, nullptr, nullptr);
  });
  result.privatePkcs1Pem = pem([key](BIO* bio) {
    return PEM_write_bio_PrivateKey_traditional(bio, key, nullptr, nullptr, 0, nullptr, nullptr);
  });
  result.encryptedPem = pem([key](BIO* bio) {
    return PEM_write_bio_PKCS8PrivateKey(bio, key, EVP_aes_256_cbc(), "passphrase", 10, nullptr,
                                         nullptr);
  });
  result.n = number(key, OSSL_PKEY_PARAM_RSA_N);
  result.e = number(key, OSSL_PKEY_PARAM_RSA_E);
  result.d = number(key, OSSL_PKEY_PARAM_RSA_D);
  return result;
}

const Owned<EVP_PKEY>& ecKey() {
  static const Owned<EVP_PKEY> key(EVP_EC_gen("P-256"));
  return key;
}

}  // namespace

namespace testkeys {

const RsaKey& rsaKey(unsigned bits) {
  static std::mutex mutex;  // guards the keys
  static std::map<unsigned, RsaKey> keys;
  const std::lock_guard<std::mutex> lock(mutex);
  const auto found = keys.find(bits);
  if (found != keys.end()) return found->second;
  return keys.emplace(bits, describe(madeKey(bits))).first->second;
}

const RsaKey& otherRsaKey() {
  static const RsaKey key = describe(kOtherRsa2048);
  return key;
}

std::string madeUpPublicPem(int bits, const std::string& exponentHex) {
  Owned<BIGNUM> n(BN_new());
  BIGNUM* e = nullptr;
  require(BN_rand(n.get(), bits, BN_RAND_TOP_ONE, BN_RAND_BOTTOM_ODD) == 1);
  require(BN_hex2bn(&e, exponentHex.c_str()) > 0);
  const Owned<RSA> key(RSA_new());
  require(RSA_set0_key(key.get(), n.release(), e, nullptr) == 1);
  return pem([&key](BIO* bio) { return PEM_write_bio_RSA_PUBKEY(bio, key.get()); });
}

std::string ecPublicPem() {
  return pem([](BIO* bio) { return PEM_write_bio_PUBKEY(bio, ecKey().get()); });
}

std::string ecPrivatePem() {
  return pem([](BIO* bio) {
    return PEM_write_bio_PKCS8PrivateKey(bio, ecKey().get(), nullptr, nullptr, 0, nullptr, nullptr);
  });
}

}  // namespace testkeys
