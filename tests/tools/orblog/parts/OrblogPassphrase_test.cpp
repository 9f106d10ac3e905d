// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The question for a passphrase, on a terminal.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include <array>

#include "Built.h"
#include "OrblogFiles.h"

using namespace orblogtest;

namespace {

constexpr int kPatienceMs = 60000;

// `orblog decrypt` with an encrypted key, in a separate session on a separate terminal. Standard
// input is a file.
class OrblogPassphrase : public testing::Test {
 protected:
  OrblogPassphrase() {
    Bytes bytes = keyPair().header(keyOf(1));
    bytes += Sealer(keyOf(1)).record("opened");
    writeFile(file, bytes);
    if (!shell("openssl pkcs8 -topk8 -v2 aes-256-cbc -passout pass:secret -in " + keyPair().path() +
               " -out " + key))
      std::abort();
    master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) std::abort();
    // Kept open, so that the terminal settings can be checked after the program.
    terminal = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
  }
  ~OrblogPassphrase() override {
    if (program > 0) {
      kill(program, SIGKILL);
      waitpid(program, nullptr, 0);
    }
    close(terminal);
    close(master);
  }
  void start(const std::string& what = "-") {
    const std::string name = ptsname(master), orblog = built(ORBLOG_PROGRAM);
    program = fork();
    if (program != 0) return;
    setsid();
    const int own = open(name.c_str(), O_RDWR);  // becomes the controlling terminal of the session
    const int input = open(file.c_str(), O_RDONLY);
    dup2(input, STDIN_FILENO);
    dup2(own, STDOUT_FILENO);
    dup2(own, STDERR_FILENO);
    execl(orblog.c_str(), orblog.c_str(), "decrypt", "--key", key.c_str(), what.c_str(), nullptr);
    _exit(127);
  }
  bool waitFor(const std::string& text) {
    while (seen.find(text) == std::string::npos) {
      pollfd waited = {master, POLLIN, 0};
      std::array<char, 4096> bytes;
      if (poll(&waited, 1, kPatienceMs) <= 0) return false;
      const ssize_t size = read(master, bytes.data(), bytes.size());
      if (size <= 0) return false;
      seen.append(bytes.data(), static_cast<size_t>(size));
    }
    return true;
  }
  bool waitForQuestion() { return waitFor("Passphrase for " + key + ": "); }
  void type(const std::string& text) const {
    ASSERT_EQ(write(master, text.data(), text.size()), static_cast<ssize_t>(text.size()));
  }
  int end() {
    int status = 0;
    waitpid(program, &status, 0);
    program = 0;
    return status;
  }
  bool echoes() const {
    termios settings = {};
    return tcgetattr(terminal, &settings) == 0 && (settings.c_lflag & ECHO) != 0;
  }
  void expectEndBySignal(int number) {
    const int status = end();
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == number) << status;
    EXPECT_TRUE(echoes());
  }
  void expectFailure(const std::string& reason) {
    EXPECT_TRUE(waitFor("orblog: " + key + ": " + reason + "\r\n")) << seen;
    const int status = end();
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 1) << status;
    EXPECT_TRUE(echoes());
  }

  TemporaryDirectory directory;
  const std::string file = (directory / "orb_log_p0_00").string();
  const std::string key = (directory / "locked.pem").string();
  int master = -1, terminal = -1;
  pid_t program = 0;
  std::string seen;
};

TEST_F(OrblogPassphrase, IsReadFromTheTerminalUnseenWhileALogComesThroughStandardInput) {
  start();
  ASSERT_TRUE(waitForQuestion()) << seen;
  EXPECT_FALSE(echoes());
  type("secret\n");
  ASSERT_TRUE(waitFor("opened\r\n")) << seen;
  EXPECT_EQ(end(), 0);
  EXPECT_TRUE(echoes());
  EXPECT_EQ(seen, "Passphrase for " + key + ": \r\nopened\r\n");
}

TEST_F(OrblogPassphrase, IsAskedForOnce) {
  start();
  ASSERT_TRUE(waitForQuestion()) << seen;
  type("wrong\n");
  expectFailure("the passphrase is wrong");
  EXPECT_EQ(seen.find("Passphrase"), seen.rfind("Passphrase"));
}

TEST_F(OrblogPassphrase, FirstCtrlCEndsTheQuestion) {
  start();
  ASSERT_TRUE(waitForQuestion()) << seen;
  type("sec\x03");
  expectEndBySignal(SIGINT);
}

TEST_F(OrblogPassphrase, SigtermEndsTheQuestion) {
  start();
  ASSERT_TRUE(waitForQuestion()) << seen;
  kill(program, SIGTERM);
  expectEndBySignal(SIGTERM);
}

TEST_F(OrblogPassphrase, FirstCtrlDEndsTheQuestion) {
  start();
  ASSERT_TRUE(waitForQuestion()) << seen;
  type("\x04");
  expectFailure(
      "the key is encrypted and there is no passphrase: what was typed is empty, so it is no "
      "passphrase");
}

TEST_F(OrblogPassphrase, CtrlDBehindIsTheEndOfWhatWasTyped) {
  start();
  ASSERT_TRUE(waitForQuestion()) << seen;
  type("secret\x04");
  ASSERT_TRUE(waitFor("opened\r\n")) << seen;
  EXPECT_EQ(end(), 0);
}

TEST_F(OrblogPassphrase, QuestionComesAgainAfterAStop) {
  start();
  ASSERT_TRUE(waitForQuestion()) << seen;
  seen.clear();
  // No shell could continue the program, so the system continues it at once.
  kill(program, SIGTSTP);
  ASSERT_TRUE(waitForQuestion()) << seen;
  type("secret\n");
  ASSERT_TRUE(waitFor("opened\r\n")) << seen;
  EXPECT_EQ(end(), 0);
}

TEST_F(OrblogPassphrase, NameCannotSteerTheTerminal) {
  const std::string odd = (directory / "\x1b]0;x\x07.pem").string();
  fs::rename(key, odd);
  const std::string name = ptsname(master), orblog = built(ORBLOG_PROGRAM);
  program = fork();
  if (program == 0) {
    setsid();
    const int own = open(name.c_str(), O_RDWR);
    dup2(own, STDERR_FILENO);
    execl(orblog.c_str(), orblog.c_str(), "decrypt", "--key", odd.c_str(), file.c_str(), nullptr);
    _exit(127);
  }
  ASSERT_TRUE(waitFor("\\x1b]0;x\\x07.pem: ")) << seen;
  kill(program, SIGTERM);
  expectEndBySignal(SIGTERM);
}

}  // namespace
