// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Only the work of the whole path, to count its instructions: requests and their answers, or
// indications, one after the other, so that each run does the same. The daemon is another process,
// whose instructions do not count.
#include <limits.h>
#include <orb/sdl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Gate.h"
#include "LceFrames.h"

namespace {

constexpr char kDaemon[] = "--daemon";  // the argument with which the program starts itself

// Writes a byte when it is ready, then sends an indication for each byte that it gets.
int serve() {
  orbsim::Options options;
  options.record = false;
  orbsim::Daemon daemon(options);
  if (!daemon.start()) {
    std::fprintf(stderr, "path_work: %s; run it in scripts/sandbox\n", daemon.error().c_str());
    return EXIT_FAILURE;
  }
  lceframes::answerAtOnce(daemon);
  const orbsim::Blob indication = lceframes::indication();
  char byte = 0;
  bool open = write(STDOUT_FILENO, &byte, 1) == 1;
  while (open && read(STDIN_FILENO, &byte, 1) == 1) {
    open = daemon.sendBytes(lceframes::kFirstSession, indication);
  }
  return open ? EXIT_SUCCESS : EXIT_FAILURE;
}

// The daemon as a process. Created before there are threads. The destructor ends it and waits for
// its end. Any thread may ask it for indications.
class DaemonProcess {
 public:
  DaemonProcess() {
    std::array<int, 2> orders, news;
    std::array<char, PATH_MAX> self = {};
    if (pipe(orders.data()) != 0 || pipe(news.data()) != 0 ||
        readlink("/proc/self/exe", self.data(), self.size() - 1) <= 0) {
      return;
    }
    mProcess = fork();
    if (mProcess == 0) {
      dup2(orders[0], STDIN_FILENO);
      dup2(news[1], STDOUT_FILENO);
      for (const int fd : {orders[0], orders[1], news[0], news[1]}) close(fd);
      execl(self.data(), self.data(), kDaemon, nullptr);
      _exit(EXIT_FAILURE);
    }
    close(orders[0]);
    close(news[1]);
    mOrders = orders[1];
    char byte = 0;
    mReady = mProcess > 0 && read(news[0], &byte, 1) == 1;
    close(news[0]);
  }
  DaemonProcess(const DaemonProcess&) = delete;
  DaemonProcess& operator=(const DaemonProcess&) = delete;
  ~DaemonProcess() {
    if (mProcess <= 0) return;
    close(mOrders);
    waitpid(mProcess, nullptr, 0);
  }

  bool ready() const { return mReady; }
  bool indicate() const { return write(mOrders, "", 1) == 1; }

 private:
  pid_t mProcess = -1;
  int mOrders = -1;
  bool mReady = false;
};

// What callbacks use. Never destroyed, because they may come while the process exits.
struct Application {
  const DaemonProcess* daemon = nullptr;
  std::atomic<int> left{0};  // answers or indications that are still to come
  Gate done;
};
Application& application() {
  static Application* const instance = new Application;
  return *instance;
}

void onStatus(status_e) { application().done.raise(); }
void onAnswer(LceEstimationReportStatus, LceEstimationReport) {
  --application().left;
  application().done.raise();
}
void onIndication(LceEstimationReportStatus, LceEstimationReport) {
  if (--application().left == 0 || !application().daemon->indicate()) application().done.raise();
}

bool doRoundTrips(int count) {
  for (int i = 0; i < count; ++i) {
    if (lceGetLastEstimationReport(onAnswer) != 0) return false;
    application().done.wait();
  }
  return true;
}

bool takeIndications(int) {
  if (lceRegEstimationReports(onIndication) != 0 || !application().daemon->indicate()) return false;
  application().done.wait();
  return true;
}

int work(bool (*operations)(int), int count) {
  DaemonProcess daemon;
  application().daemon = &daemon;
  if (!daemon.ready() || orb_lce_enable(onStatus) != 1) return EXIT_FAILURE;
  application().done.wait();
  application().left = count;
  const bool done = operations(count) && application().left == 0;
  return orb_lce_disable() == 1 && done ? EXIT_SUCCESS : EXIT_FAILURE;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc == 2 && std::strcmp(argv[1], kDaemon) == 0) return serve();
  const int count = argc == 3 ? std::atoi(argv[2]) : 0;
  if (count > 0 && std::strcmp(argv[1], "round_trips") == 0) return work(doRoundTrips, count);
  if (count > 0 && std::strcmp(argv[1], "indications") == 0) return work(takeIndications, count);
  std::fprintf(stderr, "Usage: path_work round_trips|indications COUNT   in scripts/sandbox\n");
  return 2;
}
