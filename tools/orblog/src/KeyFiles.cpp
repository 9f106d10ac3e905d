// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/KeyFiles.h"

#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>

#include <filesystem>
#include <system_error>

#include "orblog/ByteView.h"
#include "orblog/OpenSsl.h"
#include "orblog/PrivateKey.h"

namespace orblog {
namespace {

namespace fs = std::filesystem;

ByteView contents(BIO* memory) {
  char* data = nullptr;
  const long size = BIO_get_mem_data(memory, &data);
  return {reinterpret_cast<const uint8_t*>(data), size < 0 ? 0 : static_cast<size_t>(size)};
}

// The PEM text of the private key is in OpenSSL's secure memory, or in memory that OpenSSL wipes.
OpenSslPtr<BIO> privatePem(EVP_PKEY* key, const Passphrase* passphrase) {
  OpenSslPtr<BIO> memory(BIO_new(BIO_s_secmem()));
  const EVP_CIPHER* const cipher = passphrase == nullptr ? nullptr : EVP_aes_256_cbc();
  const char* const text = passphrase == nullptr ? nullptr : passphrase->text().data();
  const int size = passphrase == nullptr ? 0 : static_cast<int>(passphrase->text().size());
  if (memory == nullptr ||
      PEM_write_bio_PKCS8PrivateKey(memory.get(), key, cipher, text, size, nullptr, nullptr) != 1)
    memory.reset();
  return memory;
}

}  // namespace

std::vector<uint8_t> makeConfiguration(uint64_t records, uint8_t files,
                                       const std::string& publicKey) {
  std::vector<uint8_t> bytes;
  for (int shift = 0; shift < 64; shift += 8)
    bytes.push_back(static_cast<uint8_t>(records >> shift & 0xFF));
  bytes.push_back(files);
  bytes.insert(bytes.end(), publicKey.begin(), publicKey.end());
  return bytes;
}

bool makeKeyFiles(const KeyFilesRequest& request, std::vector<std::string>& notes,
                  std::string& error) {
  std::error_code failure;
  fs::create_directories(request.directory, failure);
  if (failure) {
    error = request.directory + ": " + failure.message();
    return false;
  }
  // Locked while the key is made, so that two runs never both find the names free.
  KeyFolder folder(request.directory);
  if (!folder.take(request.force, notes, error)) return false;
  Passphrase passphrase;
  const bool encrypts = !request.passphraseFile.empty();
  if (encrypts && !passphrase.load(request.passphraseFile, error)) return false;

  const OpenSslPtr<EVP_PKEY> key(EVP_RSA_gen(static_cast<unsigned>(request.bits)));
  const OpenSslPtr<BIO> publicMemory(BIO_new(BIO_s_mem()));
  OpenSslPtr<BIO> privateMemory;
  if (key != nullptr) privateMemory = privatePem(key.get(), encrypts ? &passphrase : nullptr);
  if (privateMemory == nullptr || publicMemory == nullptr ||
      PEM_write_bio_PUBKEY(publicMemory.get(), key.get()) != 1) {
    error = "the key pair cannot be made";
    ERR_clear_error();
    return false;
  }
  const ByteView publicPem = contents(publicMemory.get());
  const std::vector<uint8_t> configuration =
      makeConfiguration(request.records, request.files,
                        {reinterpret_cast<const char*>(publicPem.data), publicPem.size});

  return folder.put(contents(privateMemory.get()), publicPem,
                    {configuration.data(), configuration.size()}, error);
}

}  // namespace orblog
