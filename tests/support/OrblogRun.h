// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "Built.h"

namespace orblogtest {

// How the program is started, besides its arguments.
struct Start {
  Start(int most = -1) : descriptors(most) {}
  int descriptors;               // the limit of its open descriptors
  std::string input;             // standard input is this file
  int inputPipe = -1;            // or this end of a pipe
  const char* output = nullptr;  // standard output is this file
  bool closesOutput = false;     // or a pipe that nobody reads
  bool ignoresPipe = false;      // SIGPIPE is ignored
};

// The running program, with both outputs in pipes and without a terminal.
class Orblog {
 public:
  explicit Orblog(const std::vector<std::string>& arguments, const Start& start = {}) {
    std::array<int, 2> out = {}, err = {};
    if (pipe(out.data()) != 0 || pipe(err.data()) != 0) std::abort();
    std::vector<std::string> words = {built(ORBLOG_PROGRAM)};
    words.insert(words.end(), arguments.begin(), arguments.end());
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    if (start.closesOutput) close(std::exchange(out[0], -1));
    mProcess = fork();
    if (mProcess == 0) {
      setsid();
      ::signal(SIGPIPE, start.ignoresPipe ? SIG_IGN : SIG_DFL);
      dup2(out[1], STDOUT_FILENO);
      dup2(err[1], STDERR_FILENO);
      for (const int fd : {out[0], out[1], err[0], err[1]}) {
        if (fd >= 0) close(fd);
      }
      if (!start.input.empty()) moveTo(open(start.input.c_str(), O_RDONLY), STDIN_FILENO);
      if (start.inputPipe >= 0) moveTo(start.inputPipe, STDIN_FILENO);
      if (start.output != nullptr) moveTo(open(start.output, O_WRONLY), STDOUT_FILENO);
      if (start.descriptors >= 0) limitDescriptors(start.descriptors);
      execv(argv[0], argv.data());
      _exit(127);
    }
    close(out[1]);
    close(err[1]);
    mOut.fd = out[0];
    mErr.fd = err[0];
    mOut.open = !start.closesOutput;
  }
  Orblog(const Orblog&) = delete;
  Orblog& operator=(const Orblog&) = delete;
  ~Orblog() {
    if (mProcess > 0) kill(mProcess, SIGKILL);
    (void)wait();
    if (mOut.fd >= 0) close(mOut.fd);
    close(mErr.fd);
  }

  // Reads until an output contains the text; false if the outputs ended without it.
  bool waitForOut(const std::string& text) { return waitFor(mOut, text); }
  bool waitForErr(const std::string& text) { return waitFor(mErr, text); }
  void signal(int number) const { kill(mProcess, number); }
  // When this returns, the program is stopped. SIGCONT continues it.
  void stop() const {
    kill(mProcess, SIGSTOP);
    int status = 0;
    while (waitpid(mProcess, &status, WUNTRACED) < 0 && errno == EINTR) {
    }
  }
  // Reads both outputs to their ends. Returns the exit status, or -1 if a signal ended it.
  int wait() {
    while (mOut.open || mErr.open) {
      if (!readOne()) break;
    }
    if (mProcess > 0) {
      int status = 0;
      rusage usage = {};
      while (wait4(mProcess, &status, 0, &usage) < 0 && errno == EINTR) {
      }
      mProcess = 0;
      mPeakKb = usage.ru_maxrss;
      mStatus = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
      mEndedBy = WIFSIGNALED(status) ? WTERMSIG(status) : 0;
    }
    return mStatus;
  }
  const std::string& out() const { return mOut.text; }
  const std::string& err() const { return mErr.text; }
  // The signal that ended it, or 0.
  int endedBy() const { return mEndedBy; }
  // The most memory that the ended program had; not less than this test program has.
  long peakKb() const { return mPeakKb; }

 private:
  struct Output {
    int fd = -1;
    bool open = true;
    std::string text;
  };
  static constexpr int kPatienceMs = 60000;

  static void moveTo(int fd, int place) {
    if (dup2(fd, place) < 0) _exit(127);
    close(fd);
  }
  // Besides the standard streams. It inherits no other descriptors.
  static void limitDescriptors(int count) {
    for (int fd = STDERR_FILENO + 1; fd < 1024; ++fd) close(fd);
    rlimit limit = {};
    limit.rlim_cur = limit.rlim_max = static_cast<rlim_t>(STDERR_FILENO + 1 + count);
    if (startedByScript()) {
      setenv("ORB_STARTED_DESCRIPTORS", std::to_string(limit.rlim_cur).c_str(), 1);
      return;
    }
    if (setrlimit(RLIMIT_NOFILE, &limit) != 0) _exit(127);
  }

  bool waitFor(Output& output, const std::string& text) {
    while (output.text.find(text) == std::string::npos) {
      if (!output.open || !readOne()) return false;
    }
    return true;
  }
  bool readOne() {
    std::array<pollfd, 2> waited = {
        {{mOut.open ? mOut.fd : -1, POLLIN, 0}, {mErr.open ? mErr.fd : -1, POLLIN, 0}}};
    if (poll(waited.data(), waited.size(), kPatienceMs) <= 0) return false;
    for (Output* output : {&mOut, &mErr}) {
      if (waited[output == &mOut ? 0 : 1].revents == 0) continue;
      std::array<char, 65536> bytes;
      const ssize_t size = read(output->fd, bytes.data(), bytes.size());
      if (size > 0) output->text.append(bytes.data(), static_cast<size_t>(size));
      output->open = size > 0;
    }
    return true;
  }

  pid_t mProcess = 0;
  int mStatus = -1;
  int mEndedBy = 0;
  long mPeakKb = 0;
  Output mOut, mErr;
};

struct Result {
  int status;
  std::string out, err;
};

inline Result runOrblog(const std::vector<std::string>& arguments, const Start& start = {}) {
  Orblog program(arguments, start);
  const int status = program.wait();
  return {status, program.out(), program.err()};
}

}  // namespace orblogtest
