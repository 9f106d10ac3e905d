// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Passphrase.h"

#include <fcntl.h>
#include <openssl/crypto.h>
#include <poll.h>
#include <sys/signalfd.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <csignal>
#include <cstring>

#include "UniqueFd.h"

namespace orblog {
namespace {

// The terminal with echo off, and with the signals blocked that a user or the system sends. It is
// restored before the signals are delivered.
class QuietTerminal {
 public:
  QuietTerminal() : mTerminal(open("/dev/tty", O_RDWR | O_CLOEXEC | O_NOCTTY)) {
    if (mTerminal.get() < 0 || tcgetattr(mTerminal.get(), &mFormer) != 0) return;
    sigset_t held;
    sigemptyset(&held);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGTSTP}) sigaddset(&held, number);
    sigprocmask(SIG_BLOCK, &held, &mFormerMask);
    mSignals.reset(signalfd(-1, &held, SFD_CLOEXEC));
    termios quiet = mFormer;
    quiet.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    quiet.c_lflag |= ICANON | ISIG | ECHONL;
    mIsReady = mSignals.get() >= 0 && tcsetattr(mTerminal.get(), TCSADRAIN, &quiet) == 0;
    if (!mIsReady) sigprocmask(SIG_SETMASK, &mFormerMask, nullptr);
  }
  QuietTerminal(const QuietTerminal&) = delete;
  QuietTerminal& operator=(const QuietTerminal&) = delete;
  ~QuietTerminal() {
    if (!mIsReady) return;
    // Discards input after the passphrase, so that no shell reads it.
    (void)tcsetattr(mTerminal.get(), TCSAFLUSH, &mFormer);
    sigprocmask(SIG_SETMASK, &mFormerMask, nullptr);
  }
  bool isReady() const { return mIsReady; }
  int fd() const { return mTerminal.get(); }
  // Waits for the end of a line. False if a signal came instead.
  bool waitForLine() const {
    std::array<pollfd, 2> waited = {{{mTerminal.get(), POLLIN, 0}, {mSignals.get(), POLLIN, 0}}};
    while (poll(waited.data(), waited.size(), -1) < 0 && errno == EINTR) {
    }
    return waited[1].revents == 0;
  }
  void newLine() const { (void)!write(mTerminal.get(), "\n", 1); }

 private:
  const UniqueFd mTerminal;
  UniqueFd mSignals;
  termios mFormer = {};
  sigset_t mFormerMask = {};
  bool mIsReady = false;
};

// Whether the user stops the program (Ctrl-Z) and will continue it later.
bool isToStop() {
  sigset_t pending;
  return sigpending(&pending) == 0 && sigismember(&pending, SIGTSTP) == 1 &&
         sigismember(&pending, SIGINT) == 0 && sigismember(&pending, SIGTERM) == 0;
}

}  // namespace

Secret::~Secret() { OPENSSL_cleanse(mText.data(), mText.size()); }

void Secret::makeRoom(size_t most) {
  OPENSSL_cleanse(mText.data(), mText.size());
  mText.clear();
  mText.reserve(most);
}

ssize_t Secret::append(int fd, size_t most) {
  const size_t filled = mText.size();
  mText.resize(most);
  ssize_t size = 0;
  do {
    size = ::read(fd, mText.data() + filled, most - filled);
  } while (size < 0 && errno == EINTR);
  mText.resize(filled + static_cast<size_t>(std::max<ssize_t>(size, 0)));
  return size;
}

bool Secret::readOnce(int fd, size_t most) {
  makeRoom(most);
  return append(fd, most) >= 0;
}

bool Secret::read(const std::string& path, size_t most, bool line, std::string& error) {
  const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC));
  if (file.get() < 0) {
    error = "cannot open " + path + ": " + std::strerror(errno);
    return false;
  }
  makeRoom(most);
  ssize_t size = 1;
  while (size > 0 && mText.size() < most && !(line && mText.find('\n') != std::string::npos))
    size = append(file.get(), most);
  if (size >= 0) return true;
  error = path + ": " + std::strerror(errno);
  return false;
}

bool Passphrase::takeFirstLine(const std::string& origin, std::string& error) {
  const size_t size = std::min(mText.find_first_of("\r\n"), mText.size());
  OPENSSL_cleanse(mText.data() + size, mText.size() - size);
  mText.resize(size);
  if (mText.empty()) {
    error = origin + " is empty, so it is no passphrase";
  } else if (mText.size() > kLongest) {
    error =
        origin + " is longer than " + std::to_string(kLongest) + " bytes, so it is no passphrase";
  } else {
    return true;
  }
  return false;
}

bool Passphrase::load(const std::string& path, std::string& error) {
  return read(path, kLongest + 2, true, error) && takeFirstLine(path + ": the first line", error);
}

bool Passphrase::ask(const std::string& question, std::string& error) {
  while (true) {
    bool stops = false;
    {
      const QuietTerminal terminal;
      if (!terminal.isReady()) {
        error = "there is no terminal to ask for it; give --passphrase-file";
        return false;
      }
      (void)!write(terminal.fd(), question.data(), question.size());
      if (terminal.waitForLine()) {
        const bool done = readOnce(terminal.fd(), kLongest + 2);
        if (!done) error = std::string("the terminal: ") + std::strerror(errno);
        if (done && mText.find('\n') == std::string::npos) terminal.newLine();
        return done && takeFirstLine("what was typed", error);
      }
      stops = isToStop();
      terminal.newLine();
    }
    if (stops) continue;
    error = "interrupted";
    return false;
  }
}

}  // namespace orblog
