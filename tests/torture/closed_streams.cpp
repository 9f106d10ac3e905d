// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// An application that has closed its standard streams, uses all services and prints all the time.
// No text may reach the library's descriptors, so none of these may get a number from 0 to 2.
// Argument: how often it enables and disables the services. Ends with kExpected, or with a number
// that says what was wrong.
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <thread>

#include "CountedCalls.h"

using namespace torture;
using process_end::Traffic;

namespace {

constexpr int kRefused = 1;
constexpr int kOneOfOurs = 2;

// Prints through stdio and directly to the numbers. The latter by a system call, because a
// sanitizer takes a number for the file that had it last.
void print() {
  static const char kText[] = "printed by the application, which has nowhere to print to\n";
  printf("%s", kText);
  fflush(stdout);
  fprintf(stderr, "%s", kText);
  for (int fd = 0; fd <= STDERR_FILENO; ++fd) syscall(SYS_write, fd, kText, sizeof(kText) - 1);
}

// Whether the number of a standard stream belongs to a connection, an event descriptor or a log
// file.
bool libraryHasAStream() {
  for (int fd = 0; fd <= STDERR_FILENO; ++fd) {
    char link[64];
    char target[128] = "";
    snprintf(link, sizeof(link), "/proc/self/fd/%d", fd);
    if (readlink(link, target, sizeof(target) - 1) < 0) continue;
    for (const char* ours : {"socket:", "anon_inode:[event", "/data/"}) {
      if (strncmp(target, ours, strlen(ours)) == 0) return true;
    }
  }
  return false;
}

int useServices(int rounds) {
  for (int round = 0; round < rounds; ++round) {
    if (!enableEach() || !askForReports()) return kRefused;
    process_end::awaitTraffic();
    if (libraryHasAStream()) return kOneOfOurs;
    if (!disableEach()) return kRefused;
  }
  return process_end::kExpected;
}

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? atoi(argv[1]) : 1;
  alarm(process_end::kAlarmSeconds);
#ifdef __SANITIZE_ADDRESS__
  // The sanitizer checks types through its own pipe, which gets the free numbers for a moment.
  signal(SIGPIPE, SIG_IGN);
#endif
  for (int fd = 0; fd <= STDERR_FILENO; ++fd) close(fd);
  std::atomic<bool> done{false};
  std::thread printer([&done] {
    while (!done) print();
  });
  const int result = useServices(rounds);
  done = true;
  printer.join();
  return result;
}
