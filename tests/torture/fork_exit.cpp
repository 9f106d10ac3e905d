// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Forks many times while all services are enabled and traffic is under way, and checks how each
// child ends. Arguments: the logging property, the number of forks.
#include <poll.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "Functions.h"
#include "NullPlatform.h"
#include "QuietThreads.h"
#include "Torture.h"
#include "process_end.h"

#ifdef __SANITIZE_ADDRESS__
// A child has the memory of the parent's other threads, but not the threads; that is no leak.
extern "C" __attribute__((used)) const char* __asan_default_options() { return "detect_leaks=0"; }
#endif

using namespace torture;
using std::chrono::milliseconds;

namespace {

// The exit status of a child. kNotRefused plus a function's number: that call was not refused.
enum Status { kGood = 20, kCallback, kGrandchild, kNotRefused };

// A child that takes longer hangs. Long enough for a machine under load.
constexpr int kDeadline = 10000;
// While a callback waits for a child that hangs, no answer comes.
constexpr milliseconds kPatience(4 * kDeadline);
// After so many children that hang, the program gives up.
constexpr uint64_t kHangs = 20;
// One fork in so many is made inside a callback.
constexpr uint64_t kInsideEvery = 8;

const pid_t gProgram = getpid();

// A callback in a child is a mistake.
void hearInProgram(Slot slot, int value) {
  if (getpid() != gProgram) _exit(kCallback);
  hear(slot, value);
}
const Callbacks& callbacks() { return callbacksTo<hearInProgram>(); }

bool isReport(const Heard& call) { return call.slot == kLceReportCb || call.slot == kLleReportCb; }
bool isDown(const Heard& call) {
  const bool mayBe = call.slot == slotOf(kStatus, kLce) || call.slot == slotOf(kStatus, kLle);
  return mayBe && call.value == STATUS_SERVICE_DOWN;
}
HeardCalls::Which of(Slot slot) {
  return [slot](const Heard& call) { return call.slot == slot; };
}

// Threads that make a request after each answer, and one that enables and disables LLI.
class Askers {
 public:
  Askers() {
    keep(kLceLastCb, "LCE gave no report", [] { lceGetLastEstimationReport(callbacks().lceLast); });
    keep(kLleLastCb, "LLE gave no report", [] { lleGetLastEstimationReport(callbacks().lleLast); });
    keep(slotOf(kStatus, kLli), "LLI was not enabled", [] {
      orb_lli_disable();
      orb_lli_enable(callbacks().lliStatus);
    });
  }
  ~Askers() {
    mStop = true;
    for (std::thread& thread : mThreads) thread.join();
  }

 private:
  void keep(Slot answer, const char* unanswered, void (*ask)()) {
    mThreads.emplace_back([this, answer, unanswered, ask] {
      while (!mStop) {
        const size_t before = heard().count(of(answer));
        ask();
        if (heard().waitFor(of(answer), before + 1, kPatience)) continue;
        printf("fork exit: %s\n", unanswered);
        abort();
      }
    });
  }
  std::atomic<bool> mStop{false};
  std::vector<std::thread> mThreads;
};

int64_t refusalOf(const std::string& name) {
  if (name.find("able") != std::string::npos) return 0;  // enable and disable
  if (name.find("create") == 0 || name.find("destroy") == 0) return -1;
  return -5;
}
void callAll() {
  int number = 0;
  for (const Function& function : functions()) {
    if (function.call(callbacks()) != refusalOf(function.name)) _exit(kNotRefused + number);
    ++number;
  }
}

const char* gOnlyWay = nullptr;
bool gCallsAtExit = false;

// The ways for a child to end.
struct Way {
  const char* name;
  void (*end)();
};
const Way kWays[] = {
    {"exit", [] { exit(kGood); }},
    {"_exit", [] { _exit(kGood); }},
    {"calls, then exit",
     [] {
       callAll();
       exit(kGood);
     }},
    {"calls in an exit handler",
     [] {
       gCallsAtExit = true;
       exit(kGood);
     }},
    {"exit of a child's child", [] {
       const pid_t child = fork();
       if (child == 0) {
         prctl(PR_SET_PDEATHSIG, SIGKILL);
         exit(kGood);
       }
       int status = 0;
       waitpid(child, &status, 0);
       exit(WIFEXITED(status) && WEXITSTATUS(status) == kGood ? kGood : kGrandchild);
     }}};

const Way& wayOf(uint64_t fork) {
  for (const Way& way : kWays) {
    if (gOnlyWay != nullptr && strcmp(gOnlyWay, way.name) == 0) return way;
  }
  return kWays[fork % std::size(kWays)];
}

// Forks children, and counts how they ended, by a description of each end.
class Children {
 public:
  // A child that ends as @p way wants.
  void fork(const Way& way) {
    ++mForks;
    const pid_t child = ::fork();
    if (child == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      way.end();
      abort();
    }
    if (child < 0) {
      ++mEnds["not forked"];
      return;
    }
    if (!ends(child)) {
      kill(child, SIGKILL);
      ++mHangs;
      ++mEnds[std::string(way.name) + ": hung"];
    }
    int status = 0;
    waitpid(child, &status, 0);
    if (WIFEXITED(status)) {
      told(way, WEXITSTATUS(status));
    } else if (WTERMSIG(status) != SIGKILL) {
      ++mEnds[std::string(way.name) + ": " + strsignal(WTERMSIG(status))];
    }
  }
  bool allGood() const { return mEnds.empty(); }
  bool hopeless() const { return mHangs >= kHangs; }
  void print() const {
    printf("fork exit: %llu forks", static_cast<unsigned long long>(mForks));
    for (const auto& [end, count] : mEnds) {
      printf("; %llu %s", static_cast<unsigned long long>(count), end.c_str());
    }
    printf("\n");
  }

 private:
  static bool ends(pid_t child) {
    pollfd end = {static_cast<int>(syscall(SYS_pidfd_open, child, 0)), POLLIN, 0};
    if (end.fd < 0) abort();
    const bool ended = poll(&end, 1, kDeadline) != 0;
    close(end.fd);
    return ended;
  }
  void told(const Way& way, int status) {
    if (status == kGood) return;
    std::string end = std::string(way.name) + ": status " + std::to_string(status);
    if (status == kCallback) end = "callback in a child";
    if (status == kGrandchild) end = "the child's child did not end well";
    if (status >= kNotRefused && status < kNotRefused + static_cast<int>(functions().size())) {
      end = std::string(functions()[static_cast<size_t>(status - kNotRefused)].name) +
            " was not refused";
    }
    ++mEnds[end];
  }

  uint64_t mForks = 0;
  uint64_t mHangs = 0;
  std::map<std::string, uint64_t> mEnds;
};

void startServices() {
  enable(callbacks(), kLce);
  enable(callbacks(), kLle);
  enable(callbacks(), kLli);
  if (!heard().waitFor(of(slotOf(kStatus, kLli)), 1, kPatience)) abort();
}
void startReports() {
  setCriteria(callbacks().lceCriteria);
  lceRegEstimationReports(callbacks().lceReport);
  lcePerformReportingAction(LCE_REPORTING_ACTION_START);
  lleRegEstimationReports(callbacks().lleReport);
  lleSetReportingCriteria(1);
}
bool reportsFlow() { return heard().waitForMore(isReport, 30, kPatience); }

bool forkUnderTraffic(Children& children, uint64_t forks) {
  startReports();
  if (!reportsFlow()) return false;
  const Askers askers;
  for (uint64_t i = 0; i < forks && !children.hopeless(); ++i) {
    const Way& way = wayOf(i);
    Watchdog::step("fork %llu, %s", static_cast<unsigned long long>(i + 1), way.name);
    if (i % kInsideEvery == 0) {
      heard().inNext(isReport, [&] { children.fork(way); });
      heard().waitDone(HeardCalls::kWatched);
    } else {
      children.fork(way);
    }
  }
  return reportsFlow();
}
// A sanitizer's allocator has locks that may stay locked for ever in a child. So it forks only
// while the other threads sleep.
bool forkInSilence(Children& children, uint64_t forks) {
  for (uint64_t i = 0; i < forks && !children.hopeless(); ++i) {
    const Way& way = wayOf(i);
    Watchdog::step("fork %llu, %s", static_cast<unsigned long long>(i + 1), way.name);
    quiet::awaitThreads();
    children.fork(way);
  }
  startReports();
  return reportsFlow();
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) return 2;
  gOnlyWay = argv[3];
  nullplatform::setLogging(argv[1]);
  nullplatform::setListening(true);
  setvbuf(stdout, nullptr, _IONBF, 0);  // a child must not write what its parent has not written
  atexit([] {
    if (gCallsAtExit) callAll();
  });
  startServices();
  const uint64_t forks = strtoull(argv[2], nullptr, 10);
  Children children;
  const bool flows = kChecked ? forkInSilence(children, forks) : forkUnderTraffic(children, forks);
  children.print();
  const size_t downs = heard().count(isDown);
  if (!flows) printf("fork exit: the reports have ended\n");
  if (downs > 0) printf("fork exit: %zu connections lost\n", downs);
  bool disabled = true;
  for (const Service service : {kLce, kLle, kLli}) disabled = disable(service) == 1 && disabled;
  if (!disabled) printf("fork exit: a disable was refused\n");
  const bool good = children.allGood() && flows && downs == 0 && disabled;
  return good ? process_end::kExpected : 1;
}
