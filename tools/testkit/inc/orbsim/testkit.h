// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A daemon inside the process of a test, for tests of applications that use libOrbSdlSdk. It
// replaces the system's link daemon. The application's code and the library run unchanged; the test
// controls what the daemon does and checks what the application sends.
//
//   orbsim::testkit::TestDaemon daemon;
//   if (!daemon.start()) return fail(daemon.error());
//   ... the application calls createLceClient() and so on ...
//   daemon.waitForRequest(orbsim::testkit::Service::kLce, "start");
//   daemon.send(orbsim::testkit::Capacity{50000});  // kbit/s
//   daemon.vanish();                       // what does the application do?
//
// Link with the CMake target orbsim::testkit or with `pkg-config --libs orbsim`. It needs only the
// C++ standard library. It is for tests: never ship it.
#ifndef ORBSIM_TESTKIT_H
#define ORBSIM_TESTKIT_H

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace orbsim::testkit {

using Milliseconds = std::chrono::milliseconds;

// Link capacity, link latency, link interruption.
enum class Service { kLce, kLle, kLli };

// A request of the application, in the words of scenarios.
struct Request {
  uint32_t connection = 0;  // counted from 1 since the daemon's (re)start
  Service service = Service::kLce;
  // enable, disable, set-criteria, get-last-report, start, stop, reset, register, unregister;
  // unknown for other requests.
  std::string name;
  std::map<std::string, std::string> fields;  // for example those of the criteria

  // For a message: "lce set-criteria network=LTE ...".
  std::string text() const;
};

// A report of LCE. The daemon also sends such reports automatically while reports are started.
struct Capacity {
  uint32_t rate = 0;        // kbit/s
  uint32_t confidence = 7;  // 0 to 7
  bool downlink = true;
  uint32_t queueSizeUl = 0;    // bytes
  std::string error = "NONE";  // another value: the report is not valid
};

// A report of LLE, in microseconds and square microseconds.
struct Latency {
  uint64_t uplink = 0;
  uint64_t downlink = 0;
  uint64_t uplinkVariance = 0;
  uint64_t downlinkVariance = 0;
  std::string rat =
      "lte";  // the words for technologies are those of scenarios: lte, 5g, wcdma, ...
  bool valid = true;
};

// An indication of LLI, one phase of a handoff.
struct HandoffPhase {
  enum class Phase { kEntry, kImminent, kStart, kSuccess, kFailure, kExit };

  Phase phase = Phase::kEntry;
  std::string source = "lte";
  std::string target = "5g";
  Milliseconds timeToInterruption{0};
  Milliseconds interruption{0};
};

// A whole handoff with all phases at their times: announced at once, started after `notice`, ended
// after `duration`. The daemon's other reports change with it.
struct Handoff {
  enum class Outcome { kSuccess, kFailure, kCalledOff };

  std::string target = "5g";
  Milliseconds notice{1000};
  Milliseconds duration{100};
  Outcome outcome = Outcome::kSuccess;
};

// Refuses the next requests of a kind; the answer has the status.
struct Refusal {
  Service service = Service::kLce;
  std::string request = "set-criteria";
  // A status (NOT_SUPPORTED, SERVICE_DOWN, ...), or for criteria TYPE_MISMATCH, INVALID_ARGUMENTS.
  std::string with = "NOT_SUPPORTED";
  uint32_t times = 1;
};

// The time limit of waits: the seconds in ORBSIM_TIMEOUT, or 20. A wait ends at once when its
// condition is true.
Milliseconds patience();

// The settings of a daemon.
struct Settings {
  // The path of its socket; empty: in a temporary folder, which is removed at the end.
  std::string socketPath;
  // This process's connections to /dev/socket/orb go to this daemon while it runs, also after
  // vanish(). Only one daemon of a process at a time can have them.
  bool redirect = true;
  // Gets a line per event, from any thread: what clients do, what happens.
  std::function<void(const std::string&)> log;
};

// The daemon. One thread calls start(), stop(), the functions of the scenario and the destructor.
// Any thread may call all other functions while the daemon runs, also in callbacks of the library;
// the waits must not be called in callbacks. Without a scenario the daemon answers every request
// and sends nothing else automatically.
class TestDaemon {
 public:
  explicit TestDaemon(Settings settings = {});
  ~TestDaemon();  // stops
  TestDaemon(const TestDaemon&) = delete;
  TestDaemon& operator=(const TestDaemon&) = delete;

  // The scenario for the next start(): a file; the name of a ready scenario in the folder that the
  // environment variable ORB_SCENARIOS names; or the text of a scenario. False with error() if it
  // is wrong.
  bool useScenarioFile(const std::string& file);
  bool useScenario(const std::string& text);

  // Starts to listen. False with error() on failure.
  bool start();
  // Ends connections and threads. A stopped daemon can be started again, with a new state.
  void stop();
  bool running() const;
  // The reason why a call returned false, in one line.
  std::string error() const;
  std::string socketPath() const;

  // What the application did since the start or forget(). The waits return false after the timeout.
  std::vector<Request> requests() const;
  size_t connections() const;  // open ones with a completed handshake
  bool waitForConnections(size_t made, Milliseconds timeout = patience()) const;  // in total
  bool waitForDisconnections(size_t ended, Milliseconds timeout = patience()) const;
  // Waits until the daemon has handled this number of requests with that name, so what the test
  // does next comes after them; `found` gets the last one.
  bool waitForRequest(Service service, const std::string& name, size_t count = 1,
                      Request* found = nullptr, Milliseconds timeout = patience()) const;
  void forget();

  // Sends it now to every connection that has used that service; returns their number. -1 with
  // error() on failure.
  int send(const Capacity& capacity);
  int send(const Latency& latency);
  int send(const HandoffPhase& phase);
  // Sends a status by its name (SUCCESS, SERVICE_UP, SERVICE_DOWN, INTERNAL_ERROR, ...).
  int sendStatus(Service service, const std::string& status);

  // The moving device of the reports. After the application has requested reports, they are sent at
  // this interval; 0: no reports.
  void setReportInterval(Milliseconds interval);
  // False with error() if there is no such technology, or if the device already has it.
  bool handoff(const Handoff& handoff);
  // In kbit/s: a fixed value from now on, or a change from one value to the other.
  void setRate(uint32_t rate);
  void setRate(uint32_t from, uint32_t to, Milliseconds over);

  // Closes the connections; the daemon still listens.
  void drop();
  // vanish() acts like the end of the daemon, comeBack() like its restart without any state. False
  // with error() if the socket cannot be created again.
  void vanish();
  bool comeBack();
  // The following three apply to requests that arrive from now on, not to a request that
  // waitForRequest() has already reported. The delay of answers; 0: none.
  void delayAnswers(Milliseconds delay);
  bool refuse(const Refusal& refusal);
  // While off, services send neither answers nor reports automatically.
  void setAnswering(bool on);

  // For a scenario: waits until its timeline is over and every expectation is decided.
  bool waitUntilDecided(Milliseconds timeout = patience());
  // The expectations that the application did not meet, one line each; final after stop().
  std::vector<std::string> failures() const;

 private:
  class Impl;
  std::unique_ptr<Impl> mImpl;
};

const char* nameOf(Service service);  // lce, lle, lli

}  // namespace orbsim::testkit

#endif  // ORBSIM_TESTKIT_H
