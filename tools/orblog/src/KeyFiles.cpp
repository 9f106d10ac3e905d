// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/KeyFiles.h"

#include <fcntl.h>
#include <openssl/crypto.h>
#include <openssl/err.h>
#include <openssl/pem.h>
#include <openssl/rsa.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <system_error>

#include "UniqueFd.h"
#include "orblog/ByteView.h"
#include "orblog/OpenSsl.h"
#include "orblog/PrivateKey.h"

namespace orblog {
namespace {

namespace fs = std::filesystem;
constexpr mode_t kSecret = 0600;
constexpr mode_t kPublic = 0644;

ByteView contents(BIO* memory) {
  char* data = nullptr;
  const long size = BIO_get_mem_data(memory, &data);
  return {reinterpret_cast<const uint8_t*>(data), size < 0 ? 0 : static_cast<size_t>(size)};
}

// A file that takes its name only when it is complete; until then it goes when this goes. The file
// that had the name is kept until it is clear that all goes well.
class NewFile {
 public:
  NewFile(std::string path, mode_t mode)
      : mPath(std::move(path)), mPart(mPath + ".part"), mFormer(mPath + ".former") {
    (void)unlink(mPart.c_str());  // of a run that was killed
    mFd.reset(open(mPart.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
    mIsThere = note(mFd.get() >= 0);
  }
  NewFile(const NewFile&) = delete;
  NewFile& operator=(const NewFile&) = delete;
  ~NewFile() {
    if (mIsThere) (void)unlink(mPart.c_str());
  }
  bool write(ByteView bytes) {
    while (mIsThere && bytes.size > 0) {
      const ssize_t size = ::write(mFd.get(), bytes.data, bytes.size);
      if (size < 0 && errno != EINTR) return note(false);
      if (size > 0) bytes = bytes.from(static_cast<size_t>(size));
    }
    return mIsThere && note(fsync(mFd.get()) == 0);
  }
  bool keep() {
    struct stat status = {};
    const bool replaces = lstat(mPath.c_str(), &status) == 0;
    if (replaces && S_ISDIR(status.st_mode)) {
      mError = EISDIR;
      return false;
    }
    if (replaces && !note(rename(mPath.c_str(), mFormer.c_str()) == 0)) return false;
    mHasFormer = replaces;
    if (!note(rename(mPart.c_str(), mPath.c_str()) == 0)) {
      undo();
      return false;
    }
    mIsThere = false;
    mIsKept = true;
    return true;
  }
  // As it was before keep().
  void undo() {
    if (mIsKept) (void)unlink(mPath.c_str());
    if (mHasFormer) (void)rename(mFormer.c_str(), mPath.c_str());
    mIsKept = mHasFormer = false;
  }
  void forgetFormer() {
    if (mHasFormer) (void)unlink(mFormer.c_str());
    mHasFormer = false;
  }
  std::string error() const { return mPath + ": " + std::strerror(mError); }

 private:
  // Keeps the reason of a failure.
  bool note(bool succeeded) {
    if (!succeeded) mError = errno;
    return succeeded;
  }
  const std::string mPath, mPart, mFormer;
  UniqueFd mFd;
  bool mIsThere = false;
  bool mIsKept = false;
  bool mHasFormer = false;
  int mError = 0;
};

bool prepareDirectory(const KeyFilesRequest& request, const KeyFiles& paths, std::string& error) {
  std::error_code failure;
  fs::create_directories(request.directory, failure);
  if (failure) {
    error = request.directory + ": " + failure.message();
    return false;
  }
  for (const std::string& path : {paths.privateKey, paths.publicKey, paths.configuration}) {
    std::error_code ignored;
    if (!request.force && fs::exists(fs::symlink_status(path, ignored))) {
      error = path + " exists; --force replaces it, and then logs made for its key are lost";
      return false;
    }
  }
  return true;
}

// The private key's PEM lies in OpenSSL's secure memory, or in memory that it wipes.
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

KeyFiles::KeyFiles(const std::string& directory)
    : privateKey(directory + "/orb_log_private.pem"),
      publicKey(directory + "/orb_log_public.pem"),
      configuration(directory + "/orb_log_config") {}

std::vector<uint8_t> makeConfiguration(uint64_t records, uint8_t files,
                                       const std::string& publicKey) {
  std::vector<uint8_t> bytes;
  for (int shift = 0; shift < 64; shift += 8)
    bytes.push_back(static_cast<uint8_t>(records >> shift & 0xFF));
  bytes.push_back(files);
  bytes.insert(bytes.end(), publicKey.begin(), publicKey.end());
  return bytes;
}

bool makeKeyFiles(const KeyFilesRequest& request, std::string& error) {
  const KeyFiles paths(request.directory);
  if (!prepareDirectory(request, paths, error)) return false;
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

  NewFile privateFile(paths.privateKey, kSecret);
  NewFile publicFile(paths.publicKey, kPublic);
  NewFile configurationFile(paths.configuration, kPublic);
  const NewFile* failed = nullptr;
  if (!privateFile.write(contents(privateMemory.get()))) {
    failed = &privateFile;
  } else if (!publicFile.write(publicPem)) {
    failed = &publicFile;
  } else if (!configurationFile.write({configuration.data(), configuration.size()})) {
    failed = &configurationFile;
  } else {
    // The private key first: there is never a configuration for a key that nobody has.
    const std::array<NewFile*, 3> files = {&privateFile, &publicFile, &configurationFile};
    for (NewFile* file : files) {
      if (failed == nullptr && !file->keep()) failed = file;
    }
    for (NewFile* file : files) failed == nullptr ? file->forgetFormer() : file->undo();
  }
  if (failed != nullptr) error = failed->error();
  return failed == nullptr;
}

}  // namespace orblog
