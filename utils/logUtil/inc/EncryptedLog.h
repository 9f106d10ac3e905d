// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "EncryptedLogFile.h"
#include "GcmCipher.h"

// The encrypted log: seals records with the session key of this run and appends them to files, one
// file after the other, that only the holder of the private key can read. One object, owned by the
// log and guarded by its mutex: the thread that logs calls it with the mutex held, so the records
// in the files have the order of the lines. A record that cannot be sealed or written is dropped.
class EncryptedLog {
 public:
  // Key material, which its destructor wipes.
  struct Secret : std::vector<uint8_t> {
    Secret() = default;
    Secret(const Secret&) = delete;
    Secret& operator=(const Secret&) = delete;
    ~Secret();
  };
  // What a run starts with: the numbers of the configuration as they are there, and the keys.
  struct Settings {
    uint64_t recordsPerFile = 0;
    uint8_t maxFiles = 0;
    bool logPermsEnabled = false;     // the group of the files may read them
    Secret aesKey;                    // the session key
    std::vector<uint8_t> wrappedKey;  // the session key, encrypted with the public key
  };

  EncryptedLog() = default;
  EncryptedLog(const EncryptedLog&) = delete;
  EncryptedLog& operator=(const EncryptedLog&) = delete;

  // Begins the first file; the next call of stop() ends it. False when libcrypto does not take the
  // key.
  bool start(const Settings& settings);
  void stop();
  bool isEnabled() const { return encryptionEnabled; }

  // Appends one record.
  void encryptLogMsg(std::string_view entry);

  // libcrypto is about to clean itself up: from now on nothing is sealed in this process. Any
  // thread.
  static void noteCryptoGone();

  // What tests ask for: the state of the present run, or of the latest one if none is under way.
  uint64_t getRecordsPerFile() const { return recordsPerFile; }
  uint8_t getMaxFiles() const { return maxFiles; }
  int getFileIndex() const { return fileIndex; }
  const std::vector<uint8_t>& getWrappedKey() const { return wrappedKey; }
  const std::string& currentLogFile() const { return logFile.path(); }

 private:
  friend struct EncryptedLogPeer;  // tests that need a full file without its records

  bool nextLogFile();
  std::string logFileName(int index) const;
  void createNewlogFileName();
  void beginWith(EncryptedLogFile next);
  void writeToFile(const uint8_t* bytes, size_t size, EncryptedLogFile& file) const;
  void applyLogPerms() const;
  // The directory depends on the present tag, the file names on the tag at the start of the run.
  static std::string getLogFilePath();
  static std::string getFileTag();

  bool encryptionEnabled = false;
  bool logPermsEnabled = false;
  uint8_t maxFiles = 0;
  int recordsInFile = 0;
  int fileIndex = 0;
  uint64_t recordsPerFile = 0;
  GcmCipher recordCipher;           // holds the session key
  std::vector<uint8_t> wrappedKey;  // begins every file
  std::string fileTag;
  EncryptedLogFile logFile;   // the present one
  EncryptedLogFile fullFile;  // the one before, for the record that has found it full
};
