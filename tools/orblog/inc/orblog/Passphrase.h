// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace orblog {

// A text that the destructor wipes. Used by one thread.
class Secret {
 public:
  Secret() = default;
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;
  ~Secret();
  const std::string& text() const { return mText; }
  // Reads at most this number of bytes of a file; with `line` only up to the end of the first line.
  // False on failure, with a sentence in `error` that names the file and the reason.
  bool read(const std::string& path, size_t most, bool line, std::string& error);

 protected:
  // Reads once from a descriptor; from a terminal this is a line, or the text before Ctrl-D. False
  // with errno.
  bool readOnce(int fd, size_t most);
  std::string mText;

 private:
  // Memory is allocated once, so that no copy remains elsewhere.
  void makeRoom(size_t most);
  ssize_t append(int fd, size_t most);
};

// The passphrase of an encrypted private key. Used by one thread.
class Passphrase : public Secret {
 public:
  static constexpr size_t kLongest = 1023;  // the limit of OpenSSL
  // Reads the first line of a file.
  bool load(const std::string& path, std::string& error);
  // Asks at the terminal without echo, even if standard input is not the terminal. A signal that
  // ends the program also ends the question; the terminal is restored before.
  bool ask(const std::string& question, std::string& error);

 private:
  bool takeFirstLine(const std::string& origin, std::string& error);
};

}  // namespace orblog
