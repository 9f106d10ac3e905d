// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Encrypted logging in an application with closed standard streams. This program's read() and
// readdir() are used instead of the C library's and check the descriptors of the log.
#include <dirent.h>
#include <sys/syscall.h>

#include "Interposed.h"
#include "LogEncryptionFixture.h"

namespace {

int lowestRead = 1000;
int lowestListed = 1000;

// Whether the descriptor is for a file below the folder of the logs.
bool isOfTheLogs(int fd) {
  char target[256];
  const ssize_t size =
      readlink(("/proc/self/fd/" + std::to_string(fd)).c_str(), target, sizeof target);
  return size > 0 &&
         std::string(target, static_cast<size_t>(size)).find("orb_logs") != std::string::npos;
}

}  // namespace

extern "C" ssize_t read(int fd, void* buffer, size_t size) {
  if (isOfTheLogs(fd)) lowestRead = std::min(lowestRead, fd);
  return ORB_NEXT(read)(fd, buffer, size);
}

extern "C" struct dirent* readdir(DIR* directory) {
  if (isOfTheLogs(dirfd(directory))) lowestListed = std::min(lowestListed, dirfd(directory));
  return ORB_NEXT(readdir)(directory);
}

namespace logtest {
namespace {

class LogEncryptionStreamsTest : public LogEncryptionFixture {};

TEST_F(LogEncryptionStreamsTest, NoDescriptorOfTheLogTakesTheNumberOfOne) {
  configure();
  const pid_t child = fork();
  ASSERT_NE(-1, child);
  if (child == 0) {
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) close(fd);
    log.init("orb");
    for (int i = 0; i < 3002; ++i) say("text");  // into the second file
    bool free = true;
    for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
      free = free && fcntl(fd, F_GETFD) == -1;
    _exit(free && lowestRead > 2 && lowestRead < 1000 && lowestListed > 2 && lowestListed < 1000
              ? 7
              : 10 * lowestRead + lowestListed);
  }
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 7) << status;
  EXPECT_EQ(3001u, messagesOf(linesIn(fs::path(kMain) / "orb_log_p0_00")).size());
  EXPECT_EQ(1u, messagesOf(linesIn(fs::path(kMain) / "orb_log_p0_01")).size());
}

}  // namespace
}  // namespace logtest
