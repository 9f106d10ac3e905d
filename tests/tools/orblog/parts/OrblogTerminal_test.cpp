// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include "Built.h"
#include "OrblogFiles.h"
#include "OrblogRun.h"

using namespace orblogtest;

namespace {

class OrblogTerminal : public testing::Test {
 protected:
  void write(const std::vector<std::string>& lines) {
    Bytes bytes = keyPair().header(keyOf(1));
    Sealer sealer(keyOf(1));
    for (const std::string& line : lines) bytes += sealer.record(line);
    writeFile(file, bytes);
  }
  // The output of `orblog decrypt` on one descriptor that is a terminal.
  std::string decryptOnTerminal(int output) const {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) std::abort();
    const int terminal = open(ptsname(master), O_RDWR | O_NOCTTY | O_CLOEXEC);
    const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
    const std::string key = keyPair().path(), path = file.string();
    const std::string orblog = built(ORBLOG_PROGRAM);
    const pid_t program = fork();
    if (program == 0) {
      dup2(null, output == STDOUT_FILENO ? STDERR_FILENO : STDOUT_FILENO);
      dup2(terminal, output);
      execl(orblog.c_str(), orblog.c_str(), "decrypt", "--key", key.c_str(), path.c_str(), nullptr);
      _exit(127);
    }
    close(terminal);
    close(null);
    std::string text;
    std::array<char, 4096> bytes;
    ssize_t size = 0;
    // Fails when the last process with the terminal open has ended.
    while ((size = read(master, bytes.data(), bytes.size())) > 0)
      text.append(bytes.data(), static_cast<size_t>(size));
    close(master);
    int status = 0;
    waitpid(program, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0);
    return text;
  }

  TemporaryDirectory directory;
  const fs::path file = directory / "orb_log_p0_00";
};

TEST_F(OrblogTerminal, GetsNoControlCharacters) {
  setenv("NO_COLOR", "1", 1);
  write({lineAt("10:00:01.000", "a\x1b]0;title\x07z\tb")});
  EXPECT_EQ(decryptOnTerminal(STDOUT_FILENO),
            lineAt("10:00:01.000", "a\\x1b]0;title\\x07z\tb") + "\r\n");
}

TEST_F(OrblogTerminal, GetsColoursUnlessTheUserOrTheTerminalHasNone) {
  const std::string line = lineAt("10:00:01.000", "a\x1b[7m", 'W'),
                    safe = lineAt("10:00:01.000", "a\\x1b[7m", 'W');
  write({line});
  setenv("TERM", "xterm", 1);
  unsetenv("NO_COLOR");
  EXPECT_EQ(decryptOnTerminal(STDOUT_FILENO), "\x1b[33m" + safe + "\x1b[0m\r\n");
  setenv("NO_COLOR", "", 1);
  EXPECT_EQ(decryptOnTerminal(STDOUT_FILENO), "\x1b[33m" + safe + "\x1b[0m\r\n");
  setenv("NO_COLOR", "1", 1);
  EXPECT_EQ(decryptOnTerminal(STDOUT_FILENO), safe + "\r\n");
  unsetenv("NO_COLOR");
  setenv("TERM", "dumb", 1);
  EXPECT_EQ(decryptOnTerminal(STDOUT_FILENO), safe + "\r\n");
}

TEST_F(OrblogTerminal, IsNoPlaceToTypeALog) {
  const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  ASSERT_TRUE(master >= 0 && grantpt(master) == 0 && unlockpt(master) == 0);
  Start start;
  start.input = ptsname(master);
  const Result result = runOrblog({"decrypt", "--key", keyPair().path(), "-"}, start);
  EXPECT_EQ(result.err,
            "orblog decrypt: standard input is a terminal; give a file or a pipe; try "
            "'orblog decrypt --help'\n");
  EXPECT_EQ(result.status, 2);
  close(master);
}

TEST_F(OrblogTerminal, SeesTheProgressOfALongRead) {
  write(std::vector<std::string>(12000, lineAt("10:00:01.000", std::string(400, 'x'))));
  const std::string text = decryptOnTerminal(STDERR_FILENO);
  EXPECT_NE(text.find("\rorblog: reading,  50 % of 5 MB"), std::string::npos) << text;
  EXPECT_EQ(text.substr(text.size() - 4), "\r\033[K");
}

TEST_F(OrblogTerminal, SeesNothingOfAShortRead) {
  write({lineAt("10:00:01.000", "short")});
  EXPECT_EQ(decryptOnTerminal(STDERR_FILENO), "");
}

}  // namespace
