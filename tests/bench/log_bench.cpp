// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The cost of a record for each destination: only the platform's log, the diagnostic channel, the
// queue of the deferred mode, encrypted files. The baseline formats the same line once; for
// encrypted files it also seals a text of the record's length.
#include <android/log.h>
#include <openssl/evp.h>
#include <openssl/rand.h>

#include <cstdio>
#include <cstdlib>

#include "Comparison.h"
#include "Log.h"
#include "LogWork.h"

namespace {

constexpr int kRecords = 50000;

// A line as the transport writes it, of about 100 characters.
constexpr char kFormat[] = "handling a message of the daemon, number %d of %d, session %d, kind %s";

void records(int count) {
  for (int i = 0; i < count; ++i) ORB_LOGD(kFormat, i, count, 7, "report");
}

int bareLine(char (&text)[512], int i, int count) {
  return std::snprintf(text, sizeof text,
                       "|%s|%s::%s:%d handling a message of the daemon, number %d "
                       "of %d, session %d, kind %s",
                       "ORB", "log_bench", "bareLine", __LINE__, i, count, 7, "report");
}

void bareLines(int count) {
  for (int i = 0; i < count; ++i) {
    char text[512];
    bareLine(text, i, count);
    __android_log_print(ANDROID_LOG_DEBUG, "log_bench", "%s", text);
  }
}

// One key and one context for all texts; each text gets a new random IV.
class BareSeal {
 public:
  BareSeal() {
    unsigned char key[32];
    RAND_bytes(key, sizeof key);
    EVP_EncryptInit_ex(mContext, EVP_aes_256_gcm(), nullptr, key, nullptr);
  }
  BareSeal(const BareSeal&) = delete;
  BareSeal& operator=(const BareSeal&) = delete;
  ~BareSeal() { EVP_CIPHER_CTX_free(mContext); }

  void lines(int count) {
    for (int i = 0; i < count; ++i) {
      char text[512];
      const int size = bareLine(text, i, count) + kStampSize;
      __android_log_print(ANDROID_LOG_DEBUG, "log_bench", "%s", text);
      unsigned char iv[12], tag[16], sealed[512];
      int done = 0;
      RAND_bytes(iv, sizeof iv);
      EVP_EncryptInit_ex(mContext, nullptr, nullptr, nullptr, iv);
      EVP_EncryptUpdate(mContext, sealed, &done, reinterpret_cast<unsigned char*>(text), size);
      EVP_EncryptFinal_ex(mContext, sealed + done, &done);
      EVP_CIPHER_CTX_ctrl(mContext, EVP_CTRL_GCM_GET_TAG, sizeof tag, tag);
    }
  }

 private:
  static constexpr int kStampSize = 45;  // date, process, thread, level and tag of a record
  EVP_CIPHER_CTX* const mContext = EVP_CIPHER_CTX_new();
};

}  // namespace

int main(int argc, char** argv) {
  const Comparison comparison(argc, argv);
  logwork::setUpAgain("0", false);
  comparison.time("record, platform log only", kRecords, records, bareLines);
  logwork::setUpAgain("0", true);
  comparison.time("record, diagnostic channel", kRecords, records, bareLines);
  logwork::setUpAgain("1", false);
  comparison.time("record, deferred", kRecords, records, bareLines);
  if (!logwork::configureEncryption()) return EXIT_FAILURE;
  logwork::setUpAgain("0", false);
  BareSeal seal;
  comparison.time("record, encrypted file", kRecords, records,
                  [&](int count) { seal.lines(count); });
  return EXIT_SUCCESS;
}
