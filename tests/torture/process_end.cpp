// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Ends in the way that its argument names, while all services are enabled and traffic is under way.
// Without an argument it lists the ways.
#include "process_end.h"

#include <signal.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <future>
#include <thread>

#include "CountedCalls.h"
#include "FewDescriptors.h"
#include "ReentryProbe.h"
#include "WorkerAllocation.h"

using namespace torture;
using process_end::breakConnections;
using process_end::kExpected;
using process_end::Traffic;

namespace {

constexpr size_t kManagerDescriptors = 3;  // too few for the client

// After this time an enable that waits for another thread's enable may be refused.
std::atomic<bool> ending{false};

void enableAll(const Callbacks& callbacks) {
  for (const Service service : {kLce, kLle, kLli}) {
    const bool enabled = enable(callbacks, service) == 1 && create(callbacks, service) == 0;
    if (!enabled && !ending) _exit(1);
  }
}
void askAll(const Callbacks& callbacks) {
  for (const Function& function : functions()) {
    if (strstr(function.name, "Report") != nullptr || strstr(function.name, "lliReg") != nullptr) {
      function.call(callbacks);
    }
  }
}
void startTraffic() {
  enableAll(counting());
  askAll(counting());
  process_end::awaitTraffic();
}
// Threads that make requests all the time, also while the process ends.
void keepAsking(bool comeAndGo) {
  static std::atomic<int> running{0};
  for (int i = 0; i < 2; ++i) {
    std::thread([comeAndGo] {
      ++running;
      for (;;) {
        askAll(counting());
        if (!comeAndGo) continue;
        disableEach();
        enableAll(counting());
      }
    }).detach();
  }
  while (running < 2) std::this_thread::yield();
}

// Calls exit() inside the callback of this kind.
[[noreturn]] void exitInside(Slot slot, int value, void (*provoke)()) {
  arm(slot, value, [] { exit(kExpected); });
  enableAll(hearing());
  if (provoke != nullptr) provoke();
  askAll(hearing());
  for (;;) pause();
}
constexpr int kAny = kAnyValue;

int returnFromMain() {
  startTraffic();
  return kExpected;
}
int returnWhileOthersAsk() {
  startTraffic();
  keepAsking(false);
  return kExpected;
}
int returnWhileOthersComeAndGo() {
  startTraffic();
  keepAsking(true);
  ending = true;
  return kExpected;
}
int exitOnAThread() {
  startTraffic();
  std::thread([] { exit(kExpected); }).join();
  return 1;
}
int endAtOnce() {
  startTraffic();
  _exit(kExpected);
}
int endByQuickExit() {
  startTraffic();
  quick_exit(kExpected);
}
int terminated() {
  startTraffic();
  kill(getpid(), SIGTERM);
  for (;;) pause();
}
int disableInAtexit() {
  atexit([] { disableEach(); });
  startTraffic();
  return kExpected;
}
int disableInEarlierStatic() {
  // Created before anything of the library, so it is destroyed later.
  static const struct Last {
    ~Last() { disableEach(); }
  } last;
  startTraffic();
  return kExpected;
}
int connecting() {
  enableEach();
  return kExpected;
}
int exitInCriteria() { exitInside(kLceCriteriaCb, kAny, nullptr); }
int exitInLceLast() { exitInside(kLceLastCb, kAny, nullptr); }
int exitInLceReport() { exitInside(kLceReportCb, kAny, nullptr); }
int exitInLleLast() { exitInside(kLleLastCb, kAny, nullptr); }
int exitInLleReport() { exitInside(kLleReportCb, kAny, nullptr); }
int exitInLliIndication() { exitInside(kLliInterruptCb, kAny, nullptr); }
int exitInStatus() { exitInside(slotOf(kStatus, kLle), STATUS_SUCCESS, nullptr); }
int exitInStatusV2() { exitInside(slotOf(kStatusV2, kLli), STATUS_V2_SUCCESS, nullptr); }
int exitInDownOnReceiver() {
  startTraffic();
  exitInside(slotOf(kStatus, kLce), STATUS_SERVICE_DOWN, breakConnections);
}
// The test makes the daemon close this way's connections.
int exitInDownOnWorker() { exitInside(slotOf(kStatus, kLli), STATUS_SERVICE_DOWN, nullptr); }
// When the answer has come, the worker has sent all earlier requests.
void awaitAnswer() {
  static std::promise<void> answered;
  const LceReportingCriteria criteria = {};
  lceSetReportingCriteria(&criteria, [](LceReportingCriteriaStatus) { answered.set_value(); });
  answered.get_future().wait();
}
int exitInSendFailure() {
  startTraffic();
  exitInside(slotOf(kStatus, kLle), STATUS_INTERNAL_ERROR, [] {
    awaitAnswer();
    static const WorkerAllocation moment([] {
      breakConnections();
      // Every callback gets the loss of each service.
      awaitHeard(slotOf(kStatus, kLle), STATUS_SERVICE_DOWN, kServices);
    });
    // The callbacks are replaced on the way to the daemon's first answer.
    lleSetReportingCriteria(0x7fffffff);
  });
}
// A sanitizer needs descriptors when it meets a type for the first time.
void wholeCycle() {
  startTraffic();
  disableEach();
}
int exitInFailedEnable() {
  wholeCycle();
  const FewDescriptors few(kManagerDescriptors);
  arm(slotOf(kStatus, kLce), STATUS_INTERNAL_ERROR, [] { exit(kExpected); });
  enable(hearing(), kLce);
  return 1;
}
int exitInFailedDisable() {
  wholeCycle();
  const FewDescriptors few(kManagerDescriptors);
  enable(hearing(), kLce);
  arm(slotOf(kStatus, kLce), STATUS_INTERNAL_ERROR, [] { exit(kExpected); });
  disable(kLce);
  return 1;
}

const char* gProgram = nullptr;

int forkAndExec() {
  startTraffic();
  const pid_t child = fork();
  if (child == 0) {
    execl(gProgram, gProgram, "lookAtDescriptors", nullptr);
    _exit(1);
  }
  int status = 0;
  if (waitpid(child, &status, 0) != child || !WIFEXITED(status)) return 1;
  if (WEXITSTATUS(status) != kExpected) return 2;
  process_end::awaitTraffic();  // the parent still works
  disableEach();
  return kExpected;
}
// In the child: no descriptor of the library is open.
int lookAtDescriptors() {
  for (int fd = 3; fd < 256; ++fd) {
    char link[64];
    char target[128] = "";
    snprintf(link, sizeof(link), "/proc/self/fd/%d", fd);
    if (readlink(link, target, sizeof(target) - 1) < 0) continue;
    if (process_end::isConnection(fd) || strncmp(target, "anon_inode:[event", 17) == 0) return 1;
  }
  return kExpected;
}

struct Way {
  const char* name;
  int (*end)();
};
const Way kWays[] = {{"returnFromMain", returnFromMain},
                     {"returnWhileOthersAsk", returnWhileOthersAsk},
                     {"returnWhileOthersComeAndGo", returnWhileOthersComeAndGo},
                     {"returnWhileConnecting", connecting},
                     {"exitOnAThread", exitOnAThread},
                     {"endAtOnce", endAtOnce},
                     {"endByQuickExit", endByQuickExit},
                     {"terminated", terminated},
                     {"disableInAtexit", disableInAtexit},
                     {"disableInEarlierStatic", disableInEarlierStatic},
                     {"exitInCriteria", exitInCriteria},
                     {"exitInLceLast", exitInLceLast},
                     {"exitInLceReport", exitInLceReport},
                     {"exitInLleLast", exitInLleLast},
                     {"exitInLleReport", exitInLleReport},
                     {"exitInLliIndication", exitInLliIndication},
                     {"exitInStatus", exitInStatus},
                     {"exitInStatusV2", exitInStatusV2},
                     {"exitInDownOnReceiver", exitInDownOnReceiver},
                     {"exitInDownOnWorker", exitInDownOnWorker},
                     {"exitInSendFailure", exitInSendFailure},
                     {"exitInFailedEnable", exitInFailedEnable},
                     {"exitInFailedDisable", exitInFailedDisable},
                     {"forkAndExec", forkAndExec}};

}  // namespace

int main(int argc, char** argv) {
  gProgram = argv[0];
  alarm(process_end::kAlarmSeconds);
  if (argc > 1 && strcmp(argv[1], "lookAtDescriptors") == 0) return lookAtDescriptors();
  for (const Way& way : kWays) {
    if (argc < 2) puts(way.name);
    if (argc > 1 && strcmp(argv[1], way.name) == 0) return way.end();
  }
  return argc < 2 ? 0 : 2;
}
