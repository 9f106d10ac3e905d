// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "Scenario.h"

namespace failcalls {

// What became of a run. Up to End all is as documented.
enum class Outcome : unsigned {
  NotReached,  // no such call was made
  Unnoticed,   // everything came, nothing was said
  Said,        // everything came, and a line tells of the failure
  Status,      // something did not come; a result or a status says so
  Message,     // something did not come; a line says so
  NotTold,     // something did not come; it is documented that nobody is told
  End,         // the documented end of the process
  Silent,      // something did not come, and nothing says so
  Late,        // a callback after its disable had returned
  Broken,      // threads or descriptors not given back, or the next enable does not work
  Hang,
  Crash,
  Terminate,
  OtherEnd,  // exit with another status, or for another reason
  kCount,
};
constexpr size_t kOutcomes = static_cast<size_t>(Outcome::kCount);
const char* nameOf(Outcome outcome);
inline bool isAllowed(Outcome outcome) { return outcome <= Outcome::End; }

// What a scenario does and says when nothing fails.
struct Baseline {
  std::vector<unsigned> reached = std::vector<unsigned>(kCalls);
  std::set<std::string> lines;
};

struct Result {
  Fault fault;
  Outcome outcome = Outcome::NotReached;
  std::string detail;              // of an outcome that is not allowed
  Stack stack = {};                // the library's frames at the failing call
  Stack terminator = {};           // and at the one that terminated
  std::vector<std::string> words;  // lines about failures that are not there without one
  unsigned slowest = 0;
  std::string slowestName;
  bool logStopped = false;
};

// Forks a process for each fault, some at a time, and judges what became of it. One thread, the
// program's only one.
class Runner {
 public:
  Runner(const Scenario& scenario, unsigned sideBySide);
  ~Runner();
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  // Runs without failure, as often as it takes to know it. False, after a word to standard error,
  // when the scenario does not get through.
  bool learn();
  const Baseline& baseline() const { return mBaseline; }

  // Runs all and hands over each result, in no order.
  void run(const std::vector<Fault>& faults, const std::function<void(const Result&)>& take);

 private:
  struct Slot;
  void start(Slot& slot, const Fault& fault, bool patient);
  Slot& awaitOne();
  Result judge(const Slot& slot) const;
  Outcome outcomeOf(const Slot& slot, Result& result) const;

  const Scenario& mScenario;
  Baseline mBaseline;
  std::vector<std::unique_ptr<Slot>> mSlots;
};

}  // namespace failcalls
