// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Campaign.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Interposer.h"

namespace failcalls {

namespace {

constexpr unsigned kSlack = 2;  // runs differ a little in how many calls they make
constexpr size_t kPrintedLine = 150;

// If the library contains a C++ runtime, its calls cannot be distinguished from the library's.
// LLVM's runtime ends the process if a clock fails, which no kernel's clock does.
#ifdef ORB_CXX_RUNTIME_INSIDE
constexpr bool kRuntimeInside = true;
#else
constexpr bool kRuntimeInside = false;
#endif

// Lasting failures are those of a resource that has run out.
bool mayLast(Call call) {
  switch (call) {
    case Call::Socket:
    case Call::Eventfd:
    case Call::EpollCreate1:
    case Call::PthreadCreate:
    case Call::Malloc:
    case Call::Calloc:
    case Call::OperatorNew:
    case Call::Open:
      return true;
    default:
      return false;
  }
}

bool isRuntime(const std::string& frame) {
  return frame.find("std::") == 0 || frame.find("void std::") == 0;
}

// Lines of a program's output, without those of the C++ runtime's templates.
std::string outputOf(const std::string& command) {
  const std::unique_ptr<FILE, int (*)(FILE*)> pipe(popen(command.c_str(), "r"), pclose);
  if (!pipe) return {};
  std::string text;
  char line[4096];
  while (std::fgets(line, sizeof line, pipe.get()) != nullptr) {
    std::string shown(line, std::strcspn(line, "\n"));
    const size_t place = shown.rfind(" at ");  // the place, without long names of templates
    if (shown.size() > kPrintedLine && place != std::string::npos) {
      shown = shown.substr(0, kPrintedLine) + "..." + shown.substr(place);
    }
    if (!isRuntime(shown)) text += "      " + shown + "\n";
  }
  return text;
}

std::string textOf(const Stack& stack) {
  std::string command = std::string("addr2line -Cfpse ") + libraryFile();
  for (unsigned i = 0; i < stack.depth; ++i) {
    char offset[32];
    // The byte before the return address belongs to the call.
    std::snprintf(offset, sizeof offset, " 0x%lx",
                  static_cast<unsigned long>(libraryOffset(stack.frames[i]) - 1));
    command += offset;
  }
  return stack.depth != 0 ? outputOf(command + " 2>/dev/null") : std::string();
}

}  // namespace

bool Campaign::run() {
  bool good = true;
  for (const Scenario* const scenario : {&kServicesScenario, &kLogScenario}) {
    if (!mSettings.scenario.empty() && mSettings.scenario != scenario->name) continue;
    if (scenario == &kLogScenario) prepareLogScenario();
    good = runScenario(*scenario) && good;
  }
  std::printf(
      "failcalls: %zu points, %zu places in the library, %zu findings of %zu kinds\n"
      "failcalls: slowest function %s with %u ms; %zu runs without the log's threads\n",
      mPoints, mSites.size(), mFindings, mKinds.size(), mSlowestName.c_str(), mSlowest,
      mLogStopped);
  if (mSettings.words) {
    for (const auto& [line, count] : mWords) std::printf("%6u %s\n", count, line.c_str());
  }
  return good && mFindings == 0 && mPoints != 0;
}

bool Campaign::runScenario(const Scenario& scenario) {
  mRows.clear();
  Runner runner(scenario, mSettings.sideBySide);
  if (!runner.learn()) return false;
  const std::vector<Fault> faults = planOf(scenario, runner.baseline());
  runner.run(faults, [&](const Result& result) { take(scenario, result); });
  printTable(scenario);
  return true;
}

std::vector<Fault> Campaign::planOf(const Scenario& scenario, const Baseline& baseline) const {
  std::vector<std::vector<Fault>> groups;
  for (const Call call : scenario.calls) {
    if (call == Call::ClockGettime && kRuntimeInside) continue;
    if (!mSettings.call.empty() && mSettings.call != nameOf(call)) continue;
    const unsigned reached = baseline.reached[static_cast<size_t>(call)];
    if (reached == 0) continue;
    for (const bool lasting : {false, true}) {
      if (lasting && !mayLast(call)) continue;
      for (const Failure& failure : failuresOf(call)) {
        std::vector<Fault> group;
        for (unsigned nth = 1; nth <= reached + kSlack; ++nth) {
          const Fault fault{call, failure, nth, lasting};
          if (mSettings.fault.empty() || mSettings.fault == fault.text()) group.push_back(fault);
        }
        if (!group.empty()) groups.push_back(std::move(group));
        if (lasting) break;  // all reasons have the same effect
      }
    }
  }
  return sampleOf(groups);
}

// Takes more points of a large group than of a small one, but not in proportion. They are spread
// evenly over the group, and are not always the same.
std::vector<Fault> Campaign::sampleOf(const std::vector<std::vector<Fault>>& groups) const {
  double total = 0;
  for (const auto& group : groups) total += std::sqrt(static_cast<double>(group.size()));
  std::vector<Fault> faults;
  for (size_t g = 0; g < groups.size(); ++g) {
    const auto& group = groups[g];
    const size_t size = group.size();
    const double part = std::sqrt(static_cast<double>(size)) / total;
    const auto share = static_cast<size_t>(part * static_cast<double>(mSettings.sample));
    const size_t wanted = mSettings.sample == 0 ? size : std::clamp<size_t>(share, 1, size);
    for (size_t i = 0; i < wanted; ++i) faults.push_back(group[(i * size + g * 7 % size) / wanted]);
  }
  return faults;
}

void Campaign::take(const Scenario& scenario, const Result& result) {
  if (result.outcome == Outcome::NotReached) return;
  const std::string failure =
      std::string(result.fault.failure.name) + (result.fault.lasting ? "+" : "");
  Row& row = mRows[{result.fault.call, failure}];
  row.reached = std::max(row.reached, result.fault.nth);
  ++row.points;
  ++row.outcomes[static_cast<size_t>(result.outcome)];
  ++mPoints;
  const uintptr_t site = result.stack.frames[0];
  ++mSites[site];
  if (result.logStopped) ++mLogStopped;
  for (const std::string& line : result.words) ++mWords[line];
  if (result.slowest > mSlowest) {
    mSlowest = result.slowest;
    mSlowestName = result.slowestName + " (" + result.fault.text() + ")";
  }
  if (isAllowed(result.outcome)) return;
  ++mFindings;
  // Only one finding of a kind is shown in full: same call, same place, same end.
  if (mKinds[{result.outcome, result.fault.call, site}]++ == 0) printFinding(scenario, result);
}

void Campaign::printFinding(const Scenario& scenario, const Result& result) const {
  std::printf("FINDING %s %s\n    scripts/torture failcalls -- --scenario %s --fault %s\n",
              nameOf(result.outcome), result.detail.c_str(), scenario.name,
              result.fault.text().c_str());
  for (const std::string& line : result.words) std::printf("    said: %s\n", line.c_str());
  std::printf("    the call:\n%s", textOf(result.stack).c_str());
  if (result.terminator.depth != 0) {
    std::printf("    the end:\n%s", textOf(result.terminator).c_str());
  }
  std::fflush(stdout);
}

void Campaign::printTable(const Scenario& scenario) const {
  std::printf("%-8s %-14s %-12s %7s %6s %9s %6s %6s %7s %8s %5s %4s\n", scenario.name, "call",
              "failure", "reached", "points", "unnoticed", "said", "status", "message", "not told",
              "end", "BAD");
  for (const auto& [key, counts] : mRows) {
    const Row& row = counts;  // a lambda cannot capture a structured binding
    unsigned bad = 0;
    for (size_t i = 0; i < kOutcomes; ++i) {
      if (!isAllowed(static_cast<Outcome>(i))) bad += row.outcomes[i];
    }
    const auto of = [&row](Outcome outcome) { return row.outcomes[static_cast<size_t>(outcome)]; };
    std::printf("%-8s %-14s %-12s %7u %6u %9u %6u %6u %7u %8u %5u %4u\n", scenario.name,
                nameOf(key.first), key.second.c_str(), row.reached, row.points,
                of(Outcome::Unnoticed), of(Outcome::Said), of(Outcome::Status),
                of(Outcome::Message), of(Outcome::NotTold), of(Outcome::End), bad);
  }
  std::fflush(stdout);
}

}  // namespace failcalls
