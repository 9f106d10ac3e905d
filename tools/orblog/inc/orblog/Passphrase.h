// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <sys/types.h>

#include <cstddef>
#include <string>

namespace orblog {

// A text that is wiped when it goes. Used by one thread.
class Secret {
 public:
  Secret() = default;
  Secret(const Secret&) = delete;
  Secret& operator=(const Secret&) = delete;
  ~Secret();
  const std::string& text() const { return mText; }
  // Reads a file, at most so many bytes of it and with `line` no more than is needed for the first
  // line. False on failure, with a sentence in `error` that names the file and the reason.
  bool read(const std::string& path, size_t most, bool line, std::string& error);

 protected:
  // What one read of a descriptor gives: of a terminal a line, or what was typed before Ctrl-D.
  // False with errno.
  bool readOnce(int fd, size_t most);
  std::string mText;

 private:
  // Room is made once, so that no copy stays behind.
  void makeRoom(size_t most);
  ssize_t append(int fd, size_t most);
};

// What opens an encrypted private key. Used by one thread.
class Passphrase : public Secret {
 public:
  static constexpr size_t kLongest = 1023;  // what OpenSSL has room for
  // The first line of a file.
  bool load(const std::string& path, std::string& error);
  // What the user types at the terminal, unseen. It is the terminal that is read, whatever standard
  // input is. A signal that ends the program ends the question, and the terminal is as it was.
  bool ask(const std::string& question, std::string& error);

 private:
  bool takeFirstLine(const std::string& origin, std::string& error);
};

}  // namespace orblog
