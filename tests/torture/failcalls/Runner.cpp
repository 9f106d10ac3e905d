// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Runner.h"

#include <android/log.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <new>
#include <sstream>

#include "Interposer.h"
#include "RecordingPlatform.h"

namespace failcalls {

namespace {

constexpr std::chrono::milliseconds kPatience(60);
constexpr std::chrono::milliseconds kConnectPatience(260);  // attempts are 100 ms apart
constexpr std::chrono::milliseconds kLongPatience(1500);
constexpr int kLearningRuns = 4;
constexpr int kEndStatus = 255;
constexpr int kTerminateStatus = 86;
#ifdef ORB_SLOW_CHECKER
constexpr unsigned kWatchdog = 30;
#else
constexpr unsigned kWatchdog = 10;
#endif
constexpr unsigned kHangingCall = 5000;

const char* const kOutcomeNames[] = {"not reached", "unnoticed", "said",      "status",   "message",
                                     "not told",    "end",       "SILENT",    "LATE",     "BROKEN",
                                     "HANG",        "CRASH",     "TERMINATE", "OTHER END"};
static_assert(sizeof kOutcomeNames / sizeof *kOutcomeNames == kOutcomes, "a name for each");

// The documented ends of the process, with the line before each.
struct DocumentedEnd {
  Call call;
  const char* line;
};
const DocumentedEnd kEnds[] = {
    {Call::EpollCreate1, "Cannot create epoll instance"},
    {Call::Eventfd, "Cannot create eventfd instance"},
    {Call::Eventfd, "Cannot create removeFd instance"},
    {Call::Calloc, "malloc failed"},
    // The receiver takes half a header for a whole one, and the bytes after it for the next length.
    {Call::Recv, "malloc failed"},
};

// The library takes a short send for a sent message, also that of the handshake's reply.
bool mayStaySilent(const Fault& fault) {
  return fault.call == Call::Send && fault.failure.kind != Kind::Error;
}

// The kind of a line: the line without words that contain a digit (numbers, threads, addresses).
std::string kindOf(const std::string& line) {
  std::string kind;
  std::string word;
  bool number = false;
  const auto endWord = [&] {
    kind += number ? "#" : word;
    word.clear();
    number = false;
  };
  for (const char c : line) {
    if (std::isalnum(static_cast<unsigned char>(c)) != 0) {
      word += c;
      number = number || std::isdigit(static_cast<unsigned char>(c)) != 0;
      continue;
    }
    endWord();
    kind += c;
  }
  endWord();
  return kind;
}

// Lines below the level "warning" that also report a failure.
const char* const kTelling[] = {"sdkThread: ", "Created socket; mSocketFd: -", "Connect ret: -",
                                "Failed to get SDK"};

bool tells(const recording::Line& line) {
  return line.priority >= ANDROID_LOG_WARN ||
         std::any_of(std::begin(kTelling), std::end(kTelling),
                     [&](const char* text) { return line.text.find(text) != std::string::npos; });
}

std::set<std::string> linesIn(const Report& report) {
  std::set<std::string> lines;
  std::istringstream text(report.lines);
  for (std::string line; std::getline(text, line);) lines.insert(line);
  return lines;
}

// The rest runs in the run's process.
Run* ownRun = nullptr;
std::atomic<bool> ending{false};  // the scenario or the library ends the process

void noteLines() {
  std::set<std::string> kinds;
  for (const recording::Line& line : recording::lines()) {
    if (tells(line)) kinds.insert(kindOf(line.text));
  }
  std::string all;
  for (const std::string& kind : kinds) all += kind + '\n';
  put(ownRun->report.lines, all);
}

void noteEnd() {
  noteLines();
  if (ending.exchange(true)) return;
  disarm();
  if (ownRun->stopDaemon) ownRun->stopDaemon();
}

[[noreturn]] void noteTerminate() {
  disarm();
  ownRun->report.terminated = true;
  note(ownRun->report.terminator);
  _exit(kTerminateStatus);
}

// On a machine under load, a late callback looks lost. So the run is repeated with more time.
bool deservesSecondLook(Outcome outcome) {
  return outcome == Outcome::Silent || outcome == Outcome::Broken || outcome == Outcome::Hang;
}

}  // namespace

const char* nameOf(Outcome outcome) { return kOutcomeNames[static_cast<size_t>(outcome)]; }

struct Runner::Slot {
  pid_t process = 0;
  int status = 0;
  bool patient = false;
  Fault fault;
  std::string socketPath;
  Report* report = nullptr;
};

Runner::Runner(const Scenario& scenario, unsigned sideBySide) : mScenario(scenario) {
  for (unsigned i = 0; i < sideBySide; ++i) {
    auto slot = std::make_unique<Slot>();
    slot->socketPath = "/dev/socket/orb-" + std::to_string(getpid()) + "-" + std::to_string(i);
    void* const memory =
        mmap(nullptr, sizeof(Report), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    if (memory == MAP_FAILED) std::abort();
    slot->report = static_cast<Report*>(memory);
    mSlots.push_back(std::move(slot));
  }
}

Runner::~Runner() {
  for (const auto& slot : mSlots) munmap(slot->report, sizeof(Report));
}

void Runner::start(Slot& slot, const Fault& fault, bool patient) {
  slot.fault = fault;
  slot.patient = patient;
  std::memset(static_cast<void*>(slot.report), 0, sizeof(Report));
  slot.process = fork();
  if (slot.process < 0) std::abort();
  if (slot.process != 0) return;

  const auto patience = fault.call == Call::Connect ? kConnectPatience : kPatience;
  Run run{*slot.report, fault, slot.socketPath, patient ? kLongPatience : patience, {}};
  ownRun = &run;
#ifndef ORB_SLOW_CHECKER
  // Drops what other libraries print about a failure. A sanitizer's report must stay visible.
  if (std::freopen("/dev/null", "w", stderr) == nullptr) std::abort();
#endif
  std::set_terminate(noteTerminate);
  std::atexit(noteEnd);
  alarm(patient ? 3 * kWatchdog : kWatchdog);  // without a handler it ends the process
  redirectTo(slot.socketPath.c_str());
  mScenario.run(run);
  if (ending.exchange(true)) {
    for (;;) pause();  // another thread is already in exit()
  }
  slot.report->finished = true;
  put(slot.report->phase, "exit");
  std::exit(0);
}

Runner::Slot& Runner::awaitOne() {
  for (;;) {
    int status = 0;
    const pid_t ended = waitpid(-1, &status, 0);
    for (const auto& slot : mSlots) {
      if (slot->process != ended) continue;
      slot->process = 0;
      slot->status = status;
      unlink(slot->socketPath.c_str());  // a daemon that was killed leaves it
      return *slot;
    }
  }
}

bool Runner::learn() {
  for (int i = 0; i < kLearningRuns; ++i) {
    start(*mSlots.front(), Fault(), false);
    const Slot& slot = awaitOne();
    const Report& report = *slot.report;
    const bool through = slot.status == 0 && report.finished && report.lost == 0 &&
                         report.late == 0 && report.refused == 0 && report.broken[0] == '\0';
    if (!through) {
      std::fprintf(stderr,
                   "%s: does not get through without failures: status %#x in \"%s\", lost %u (%s), "
                   "refused %u, late %u (%s), broken: %s\n",
                   mScenario.name, static_cast<unsigned>(slot.status), report.phase, report.lost,
                   report.firstLost, report.refused.load(), report.late, report.firstLate,
                   report.broken);
      return false;
    }
    for (size_t call = 0; call < kCalls; ++call) {
      mBaseline.reached[call] =
          std::max(mBaseline.reached[call], report.probe.reached[call].load());
    }
    mBaseline.lines.merge(linesIn(report));
  }
  return true;
}

void Runner::run(const std::vector<Fault>& faults, const std::function<void(const Result&)>& take) {
  size_t next = 0;
  size_t running = 0;
  for (const auto& slot : mSlots) {
    if (next == faults.size()) break;
    start(*slot, faults[next++], false);
    ++running;
  }
  while (running != 0) {
    Slot& slot = awaitOne();
    const Result result = judge(slot);
    if (deservesSecondLook(result.outcome) && !slot.patient) {
      start(slot, slot.fault, true);
      continue;
    }
    take(result);
    if (next < faults.size()) {
      start(slot, faults[next++], false);
    } else {
      --running;
    }
  }
}

Result Runner::judge(const Slot& slot) const {
  const Report& report = *slot.report;
  Result result;
  result.fault = slot.fault;
  result.stack = report.probe.stack;
  result.terminator = report.terminator;
  result.slowest = report.slowest;
  result.slowestName = report.slowestName;
  result.logStopped = report.logStopped;
  for (const std::string& line : linesIn(report)) {
    if (mBaseline.lines.count(line) == 0) result.words.push_back(line);
  }
  result.outcome = outcomeOf(slot, result);
  if (!isAllowed(result.outcome)) {
    result.detail += std::string(" [in \"") + report.phase + "\"]";
  }
  return result;
}

Outcome Runner::outcomeOf(const Slot& slot, Result& result) const {
  const Report& report = *slot.report;
  if (WIFSIGNALED(slot.status)) {
    result.detail = strsignal(WTERMSIG(slot.status));
    return WTERMSIG(slot.status) == SIGALRM ? Outcome::Hang : Outcome::Crash;
  }
  if (report.terminated) return Outcome::Terminate;
  const int status = WEXITSTATUS(slot.status);
  if (status != 0) {
    for (const DocumentedEnd& end : kEnds) {
      if (status != kEndStatus || end.call != slot.fault.call) continue;
      const std::string text = std::string("\n") + report.lines;
      if (text.find(std::string("\n") + end.line + "\n") != std::string::npos) return Outcome::End;
    }
    result.detail = "exit status " + std::to_string(status);
    return Outcome::OtherEnd;
  }
  if (!report.finished) {
    result.detail = "exit status 0 too early";
    return Outcome::OtherEnd;
  }
  if (report.slowest >= kHangingCall) {
    result.detail =
        std::string(report.slowestName) + " took " + std::to_string(report.slowest) + " ms";
    return Outcome::Hang;
  }
  if (report.late != 0) {
    result.detail = report.firstLate;
    return Outcome::Late;
  }
  if (report.broken[0] != '\0') {
    result.detail = report.broken;
    return Outcome::Broken;
  }
  if (report.probe.injected == 0) return Outcome::NotReached;
  const bool told = report.errors != 0 || report.downs != 0 || report.refused != 0;
  const bool said = !result.words.empty();
  const bool complete = report.lost == 0 && report.refused == 0;
  if (complete) return said || told ? Outcome::Said : Outcome::Unnoticed;
  if (told) return Outcome::Status;
  if (said) return Outcome::Message;
  if (mayStaySilent(slot.fault)) return Outcome::NotTold;
  result.detail = std::string("lost: ") + report.firstLost;
  return Outcome::Silent;
}

}  // namespace failcalls
