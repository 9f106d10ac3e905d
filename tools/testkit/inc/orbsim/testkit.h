// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A daemon inside the process of a test, for tests of applications that use libOrbSdlSdk. It stands
// in for the system's link daemon: the application's code runs as it is, against the library as it
// is, and the test says what the daemon does and sees what the application sends.
//
//   orbsim::testkit::TestDaemon daemon;
//   if (!daemon.start()) return fail(daemon.error());
//   ... the application calls createLceClient() and so on ...
//   daemon.waitForRequest(orbsim::testkit::Service::kLce, "start");
//   daemon.send(orbsim::testkit::Capacity{50000});  // kbit/s
//   daemon.vanish();                       // what does the application do?
//
// Link with the CMake target orbsim::testkit or with `pkg-config --libs orbsim`. Nothing but the
// C++ standard library is needed with it. It is for tests: never ship it.
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

// Something that the application asked the daemon for, in the words that scenarios use.
struct Request {
  uint32_t connection = 0;  // numbered from 1 on since the daemon's (re)start
  Service service = Service::kLce;
  // enable, disable, set-criteria, get-last-report, start, stop, reset, register, unregister, and
  // unknown for what is none of these.
  std::string name;
  std::map<std::string, std::string> fields;  // such as those of the criteria

  // For a message: "lce set-criteria network=LTE ...".
  std::string text() const;
};

// A report of LCE, as the daemon sends it by itself while reports are started.
struct Capacity {
  uint32_t rate = 0;        // kbit/s
  uint32_t confidence = 7;  // 0 to 7
  bool downlink = true;
  uint32_t queueSizeUl = 0;    // bytes
  std::string error = "NONE";  // anything else: the report is not valid
};

// A report of LLE. Microseconds and their squares.
struct Latency {
  uint64_t uplink = 0;
  uint64_t downlink = 0;
  uint64_t uplinkVariance = 0;
  uint64_t downlinkVariance = 0;
  std::string rat = "lte";  // technologies are named as in scenarios: lte, 5g, wcdma, ...
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

// A whole handoff, phase by phase in its time: announced at once, begun after `notice`, over after
// `duration`. The daemon's other reports follow it.
struct Handoff {
  enum class Outcome { kSuccess, kFailure, kCalledOff };

  std::string target = "5g";
  Milliseconds notice{1000};
  Milliseconds duration{100};
  Outcome outcome = Outcome::kSuccess;
};

// The next requests of a kind are not carried out; the answer says why.
struct Refusal {
  Service service = Service::kLce;
  std::string request = "set-criteria";
  // A status (NOT_SUPPORTED, SERVICE_DOWN, ...), or for criteria TYPE_MISMATCH, INVALID_ARGUMENTS.
  std::string with = "NOT_SUPPORTED";
  uint32_t times = 1;
};

// How long a wait lasts for what does not come: the seconds in ORBSIM_TIMEOUT, 20 without. What
// comes ends it at once.
Milliseconds patience();

// How a daemon is set up.
struct Settings {
  // Where it listens; empty: in a folder of its own, which goes with it.
  std::string socketPath;
  // This process's connections to /dev/socket/orb go to this daemon while it runs, also while it
  // has vanished. One daemon of a process at a time can have that.
  bool redirect = true;
  // A line per event, from any thread: what clients do, what happens.
  std::function<void(const std::string&)> log;
};

// The daemon. start(), stop(), the scenario and the destructor belong to one thread; everything
// else may be called from any thread while it runs, callbacks of the library included, and the
// waits only from others. Without a scenario it answers every request and sends nothing by itself.
class TestDaemon {
 public:
  explicit TestDaemon(Settings settings = {});
  ~TestDaemon();  // stops
  TestDaemon(const TestDaemon&) = delete;
  TestDaemon& operator=(const TestDaemon&) = delete;

  // What the next start() plays: a file, or the name of a ready scenario in the folder that the
  // environment variable ORB_SCENARIOS names; or the text of one. False with error() when that is
  // none.
  bool useScenarioFile(const std::string& file);
  bool useScenario(const std::string& text);

  // Listens. False with error() when that fails.
  bool start();
  // Ends connections and threads. A daemon that was stopped can be started again, afresh.
  void stop();
  bool running() const;
  // Why a call has returned false, in one line.
  std::string error() const;
  std::string socketPath() const;

  // What the application did since the start or forget(). The waits return false when the time is
  // up.
  std::vector<Request> requests() const;
  size_t connections() const;  // that are open, handshake completed
  bool waitForConnections(size_t made, Milliseconds timeout = patience()) const;  // in all
  bool waitForDisconnections(size_t ended, Milliseconds timeout = patience()) const;
  // Until so many requests of that name have come; the last of them is put into `found`.
  bool waitForRequest(Service service, const std::string& name, size_t count = 1,
                      Request* found = nullptr, Milliseconds timeout = patience()) const;
  void forget();

  // Sends it now, to every connection on which that service was asked for anything; how many those
  // are. With -1 and error() when it cannot be sent.
  int send(const Capacity& capacity);
  int send(const Latency& latency);
  int send(const HandoffPhase& phase);
  // A status by its name (SUCCESS, SERVICE_UP, SERVICE_DOWN, INTERNAL_ERROR, ...).
  int sendStatus(Service service, const std::string& status);

  // The moving device behind the reports. They come at an interval, 0 for none, once the
  // application has asked for them.
  void setReportInterval(Milliseconds interval);
  // False with error() when there is no such technology, or the device is on it already.
  bool handoff(const Handoff& handoff);
  // Kilobits a second, held from then on, or on its way from one to the other.
  void setRate(uint32_t rate);
  void setRate(uint32_t from, uint32_t to, Milliseconds over);

  // Closes the connections; the daemon goes on to listen.
  void drop();
  // As a daemon that has ended, and as one that is back and knows nothing any more. False with
  // error() when the socket cannot be had again.
  void vanish();
  bool comeBack();
  // These three hold for the requests that come from now on, not for one that waitForRequest() has
  // seen already. How late answers come; 0: at once.
  void delayAnswers(Milliseconds delay);
  bool refuse(const Refusal& refusal);
  // While off, services neither answer nor report by themselves.
  void setAnswering(bool on);

  // Of a scenario: until its timeline is over and every expectation is decided.
  bool waitUntilDecided(Milliseconds timeout = patience());
  // What the application did not do as the scenario expects, a line each; final after stop().
  std::vector<std::string> failures() const;

 private:
  class Impl;
  std::unique_ptr<Impl> mImpl;
};

const char* nameOf(Service service);  // lce, lle, lli

}  // namespace orbsim::testkit

#endif  // ORBSIM_TESTKIT_H
