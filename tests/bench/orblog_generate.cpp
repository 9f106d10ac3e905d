// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Makes an encrypted log of a given size, to measure its reader, and a file with the same text, not
// encrypted. Both are the same in every run, except for the key. It can also only open the records
// of such a log; no reader can be faster than that.
#include <openssl/evp.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstring>
#include <iostream>

#include "OrblogFiles.h"

using namespace orblogtest;

namespace {

// Lines like those of a busy application: most of them short, some as long as the library makes
// them, one in a thousand of level E.
class Lines {
 public:
  std::string next() {
    mMs += static_cast<uint32_t>(1 + mNumber % 3);
    char time[40];
    std::snprintf(time, sizeof time, "%02u:%02u:%02u.%03u", mMs / 3600000 % 24, mMs / 60000 % 60,
                  mMs / 1000 % 60, mMs % 1000);
    const uint64_t number = mNumber++;
    if (number % 1000 == 999)
      return lineAt(time, "|ORB|OrbIpcSession::performHandshake:169 returning: result: -1", 'E');
    if (number % 20 == 0) {
      std::string text = "|ORB|OrbIpcSession::receive:212 frame " + std::to_string(number) + ":";
      while (text.size() < 445) text += " 0a1b2c3d";
      return lineAt(time, text);
    }
    return lineAt(time, kTexts[number % std::size(kTexts)] + std::to_string(number));
  }

 private:
  static constexpr const char* kTexts[] = {
      "|ORB|OrbIpcSession::sendMessage:141 message of 48 bytes to endpoint 2, number ",
      "|ORB|IpcReceiver::dispatch:97 message of 112 bytes from endpoint 2, number ",
      "|ORB|SdkClient::handleIndication:301 indication for session 7, number ",
      "|ORB|EventQueue::post:66 event ",
      "|ORB|LceClient::reportInd:188 rate 48211 kbit/s, load 12 %, queue 0, cells 3, report "};
  uint32_t mMs = 0;
  uint64_t mNumber = 0;
};

bool generate(const fs::path& folder, uint64_t bytes) {
  const RsaKeyPair pair(3072);
  std::error_code failure;
  fs::create_directories(folder, failure);
  fs::copy_file(pair.path(), folder / "private.pem", fs::copy_options::overwrite_existing, failure);
  if (failure) {
    std::cerr << "orblog_generate: " << folder.string() << ": " << failure.message() << '\n';
    return false;
  }
  std::ofstream log(folder / "orb_log_p0_00", std::ios::binary);
  std::ofstream text(folder / "text", std::ios::binary);
  const auto put = [&log](const Bytes& data) {
    log.write(reinterpret_cast<const char*>(data.data()),
              static_cast<std::streamsize>(data.size()));
  };
  put(pair.header(keyOf(1)));
  Sealer sealer(keyOf(1));
  Lines lines;
  for (uint64_t size = 0; size < bytes && log && text;) {
    const std::string line = lines.next();
    put(sealer.record(line));
    text << line << '\n';
    size += line.size() + 1;
  }
  log.flush();
  text.flush();
  if (log && text) return true;
  std::cerr << "orblog_generate: " << folder.string() << ": " << std::strerror(errno) << '\n';
  return false;
}

bool openRecord(EVP_CIPHER_CTX* context, const uint8_t* sealed, size_t size, uint8_t* text) {
  int filled = 0;
  std::array<uint8_t, 16> tag;
  std::copy_n(sealed + 12, tag.size(), tag.begin());
  return EVP_DecryptInit_ex(context, nullptr, nullptr, nullptr, sealed) == 1 &&
         EVP_DecryptUpdate(context, text, &filled, sealed + 28, static_cast<int>(size - 28)) == 1 &&
         EVP_CIPHER_CTX_ctrl(context, EVP_CTRL_AEAD_SET_TAG, 16, tag.data()) == 1 &&
         EVP_DecryptFinal_ex(context, text + filled, &filled) == 1;
}

bool openAll(const fs::path& folder) {
  std::ifstream log(folder / "orb_log_p0_00", std::ios::binary);
  log.seekg(512);
  EVP_CIPHER_CTX* const context = EVP_CIPHER_CTX_new();
  const Key key = keyOf(1);
  bool good = EVP_DecryptInit_ex(context, EVP_aes_256_gcm(), nullptr, key.data(), nullptr) == 1;
  std::vector<uint8_t> piece(size_t{1} << 20), text(piece.size());
  size_t rest = 0;
  while (good && log) {
    log.read(reinterpret_cast<char*>(piece.data() + rest),
             static_cast<std::streamsize>(piece.size() - rest));
    const size_t filled = rest + static_cast<size_t>(log.gcount());
    size_t at = 0;
    while (good && at + 2 <= filled) {
      const size_t size = piece[at] | static_cast<size_t>(piece[at + 1]) << 8;
      if (at + 2 + size > filled) break;
      good = size >= 28 && openRecord(context, &piece[at + 2], size, text.data());
      at += 2 + size;
    }
    rest = filled - at;
    std::memmove(piece.data(), piece.data() + at, rest);
  }
  EVP_CIPHER_CTX_free(context);
  return good && rest == 0;
}

}  // namespace

int main(int argc, char** argv) {
  uint64_t megabytes = 0;
  const char* const number = argc == 3 ? argv[2] : "";
  if (std::strcmp(number, "open") == 0) return openAll(argv[1]) ? 0 : 1;
  const char* const end = number + std::strlen(number);
  if (std::from_chars(number, end, megabytes).ptr != end || megabytes == 0 || megabytes > 1000000) {
    std::cerr << "Usage: orblog_generate FOLDER MEGABYTES|open\n"
                 "Write FOLDER/orb_log_p0_00, an encrypted log with so many megabytes of lines, "
                 "FOLDER/private.pem,\nits key, and FOLDER/text, its lines in the clear; or open "
                 "all records of that log.\n";
    return 2;
  }
  return generate(argv[1], megabytes * 1000000) ? 0 : 1;
}
