// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include "Built.h"
#include "UniqueFd.h"

extern char** environ;

namespace orbctltest {

inline bool contains(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

// How to start the program, in addition to its arguments. The library's log is switched off in a
// way that keeps standard error for the reports of sanitizers.
struct Setting {
  std::vector<std::string>
      environment;        // NAME=VALUE, or NAME to unset it; otherwise the test's environment
  std::string out;        // a file instead of the pipe for standard output
  bool terminal = false;  // all streams are one terminal
  unsigned short columns = 80, rows = 24;
};

inline Setting settingOf(std::vector<std::string> environment, std::string out = "") {
  Setting setting;
  setting.environment = std::move(environment);
  setting.out = std::move(out);
  return setting;
}

// A running orbctl, with its outputs in pipes or on a separate terminal, which out() reads. Created
// and used by the test's thread, which reads only while it waits.
class Orbctl {
 public:
  explicit Orbctl(const std::vector<std::string>& arguments, const Setting& setting = {}) {
    std::vector<std::string> words = {built(ORBCTL_PROGRAM)};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<std::string> variables = variablesOf(setting);
    setting.terminal ? startOnTerminal(setting, words, variables)
                     : startWithPipes(setting, words, variables);
  }
  Orbctl(const Orbctl&) = delete;
  Orbctl& operator=(const Orbctl&) = delete;
  ~Orbctl() {
    if (mProcess > 0) kill(mProcess, SIGKILL);
    (void)wait();
  }

  // Reads until the text has come after the position of the last wait.
  bool waitForOut(const std::string& text) {
    for (;;) {
      const size_t found = mOut.text.find(text, mSeen);
      if (found != std::string::npos) {
        mSeen = found + text.size();
        return true;
      }
      if (!readOne()) return false;
    }
  }
  void signal(int number) const { kill(mProcess, number); }
  void closeOut() { mOut.fd.reset(); }
  void type(const std::string& keys) const {
    if (write(mOut.fd.get(), keys.data(), keys.size()) < 0) std::abort();
  }
  void resize(unsigned short columns, unsigned short rows) const {
    const winsize size = {rows, columns, 0, 0};
    if (ioctl(mOut.fd.get(), TIOCSWINSZ, &size) != 0) std::abort();
  }
  // The settings of the terminal for keys and lines.
  termios terminal() const {
    termios settings = {};
    if (tcgetattr(mTerminal.get(), &settings) != 0) std::abort();
    return settings;
  }
  // Reads the outputs to their end. Returns the exit status, or minus the number of the signal that
  // ended the program.
  int wait() {
    // The test holds the terminal open, so it would never end.
    while (mProcess > 0 && (mOut.fd.get() >= 0 || mError.fd.get() >= 0)) {
      if (mTerminal.get() >= 0 ? !drainTerminal() : !readOne()) break;
    }
    reap(0);
    return mStatus;
  }
  const std::string& out() const { return mOut.text; }
  const std::string& error() const { return mError.text; }
  // The processor time of the ended program in ms.
  int64_t computedMs() const { return mComputedMs; }

 private:
  struct Stream {
    UniqueFd fd;
    std::string text;
  };
  static constexpr int kPatienceMs = 60000;

  static std::vector<std::string> variablesOf(const Setting& setting) {
    std::vector<std::string> variables;
    const auto nameOf = [](const std::string& text) { return text.substr(0, text.find('=')); };
    std::vector<std::string> wanted = {"TERM=dumb", "NO_COLOR=", "LC_ALL=C.UTF-8",
                                       "ORB_LOG_LEVEL=S"};
    wanted.insert(wanted.end(), setting.environment.begin(), setting.environment.end());
    for (char** variable = environ; *variable != nullptr; ++variable) {
      bool replaced = false;
      for (const std::string& text : wanted) replaced |= nameOf(text) == nameOf(*variable);
      if (!replaced) variables.emplace_back(*variable);
    }
    // If a name is there twice, the later one is the test's.
    for (size_t i = 0; i < wanted.size(); ++i) {
      bool later = false;
      for (size_t j = i + 1; j < wanted.size(); ++j)
        later |= nameOf(wanted[i]) == nameOf(wanted[j]);
      if (!later && contains(wanted[i], "=")) variables.push_back(wanted[i]);
    }
    return variables;
  }

  static std::vector<char*> pointersTo(std::vector<std::string>& texts) {
    std::vector<char*> pointers;
    for (std::string& text : texts) pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
  }

  void startWithPipes(const Setting& setting, std::vector<std::string>& words,
                      std::vector<std::string>& variables) {
    std::array<int, 2> out = {-1, -1}, error = {-1, -1};
    if (pipe2(error.data(), O_CLOEXEC) != 0) std::abort();
    if (setting.out.empty()) {
      if (pipe2(out.data(), O_CLOEXEC) != 0) std::abort();
    } else {
      out[1] = open(setting.out.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
    }
    const int null = open("/dev/null", O_RDONLY | O_CLOEXEC);
    const std::vector<char*> argv = pointersTo(words), envp = pointersTo(variables);
    mProcess = fork();
    if (mProcess == 0) {
      dup2(null, STDIN_FILENO);
      dup2(out[1], STDOUT_FILENO);
      dup2(error[1], STDERR_FILENO);
      execve(argv[0], argv.data(), envp.data());
      _exit(127);
    }
    for (const int fd : {out[1], error[1], null}) close(fd);
    mOut.fd.reset(out[0]);
    mError.fd.reset(error[0]);
  }

  void startOnTerminal(const Setting& setting, std::vector<std::string>& words,
                       std::vector<std::string>& variables) {
    mOut.fd.reset(posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC));
    if (grantpt(mOut.fd.get()) != 0 || unlockpt(mOut.fd.get()) != 0) std::abort();
    mTerminal.reset(open(ptsname(mOut.fd.get()), O_RDWR | O_NOCTTY | O_CLOEXEC));
    resize(setting.columns, setting.rows);
    const std::vector<char*> argv = pointersTo(words), envp = pointersTo(variables);
    mProcess = fork();
    if (mProcess == 0) {
      // The terminal must be the controlling terminal, so that its keys send signals.
      setsid();
      ioctl(mTerminal.get(), TIOCSCTTY, 0);
      for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd) dup2(mTerminal.get(), fd);
      execve(argv[0], argv.data(), envp.data());
      _exit(127);
    }
  }

  // Reads the available data of both outputs; false at the end of both.
  bool readOne() {
    std::array<pollfd, 2> waited = {{{mOut.fd.get(), POLLIN, 0}, {mError.fd.get(), POLLIN, 0}}};
    if (mOut.fd.get() < 0 && mError.fd.get() < 0) return false;
    if (poll(waited.data(), waited.size(), kPatienceMs) <= 0) return false;
    if (waited[0].revents != 0) readInto(mOut);
    if (waited[1].revents != 0) readInto(mError);
    return true;
  }
  static void readInto(Stream& stream) {
    std::array<char, 65536> bytes;
    const ssize_t size = read(stream.fd.get(), bytes.data(), bytes.size());
    if (size > 0) {
      stream.text.append(bytes.data(), static_cast<size_t>(size));
    } else {
      stream.fd.reset();
    }
  }
  // Waits until the program has ended, and then reads the remaining output.
  bool drainTerminal() {
    const bool ended = reap(WNOHANG);
    pollfd waited = {mOut.fd.get(), POLLIN, 0};
    if (poll(&waited, 1, ended ? 0 : 50) > 0) {
      readInto(mOut);
      return true;
    }
    return !ended;
  }
  bool reap(int flags) {
    int status = 0;
    rusage usage = {};
    if (mProcess <= 0) return true;
    pid_t ended = 0;
    do {
      ended = wait4(mProcess, &status, flags, &usage);
    } while (ended < 0 && errno == EINTR);
    if (ended != mProcess) return false;
    mProcess = 0;
    mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    const auto ms = [](const timeval& time) { return time.tv_sec * 1000 + time.tv_usec / 1000; };
    mComputedMs = ms(usage.ru_utime) + ms(usage.ru_stime);
    return true;
  }

  pid_t mProcess = 0;
  int mStatus = -1;
  int64_t mComputedMs = 0;
  size_t mSeen = 0;
  UniqueFd mTerminal;  // kept open, so that its settings can be checked later
  Stream mOut, mError;
};

struct Result {
  int status;
  std::string out, error;
};

inline Result runOrbctl(const std::vector<std::string>& arguments, const Setting& setting = {}) {
  Orbctl program(arguments, setting);
  const int status = program.wait();
  return {status, program.out(), program.error()};
}

inline std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    lines.push_back(text.substr(at, end - at));
    at = end + 1;
  }
  return lines;
}

inline std::string contentOf(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return std::string(std::istreambuf_iterator<char>(file), {});
}

}  // namespace orbctltest
