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

// The result of a run. All values up to End are as documented.
enum class Outcome : unsigned {
  NotReached,  // no such call was made
  Unnoticed,   // everything came, and no line reports the failure
  Said,        // everything came, and a line reports the failure
  Status,      // something did not come; a result or a status reports that
  Message,     // something did not come; a line reports that
  NotTold,     // something did not come; it is documented that nothing reports that
  End,         // the documented end of the process
  Silent,      // something did not come, and nothing reports that
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

// The calls and lines of a scenario when nothing fails.
struct Baseline {
  std::vector<unsigned> reached = std::vector<unsigned>(kCalls);
  std::set<std::string> lines;
};

struct Result {
  Fault fault;
  Outcome outcome = Outcome::NotReached;
  std::string detail;              // of an outcome that is not allowed
  Stack stack = {};                // the library's frames at the failing call
  Stack terminator = {};           // those at std::terminate
  std::vector<std::string> words;  // lines about failures that a run without a failure lacks
  unsigned slowest = 0;
  std::string slowestName;
  bool logStopped = false;
};

// Forks a process for each fault, several at a time, and judges its result. Used by the program's
// only thread.
class Runner {
 public:
  Runner(const Scenario& scenario, unsigned sideBySide);
  ~Runner();
  Runner(const Runner&) = delete;
  Runner& operator=(const Runner&) = delete;

  // Runs the scenario without a failure, until its calls are known. False, after a line to standard
  // error, if the scenario does not succeed.
  bool learn();
  const Baseline& baseline() const { return mBaseline; }

  // Runs all faults and passes each result on, in any order.
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
