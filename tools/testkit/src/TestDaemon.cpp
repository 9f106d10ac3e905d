// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include <cstdlib>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

#include "ProcessRedirection.h"
#include "Words.h"
#include "orbsim/PrivateSocket.h"
#include "orbsim/Requests.h"
#include "orbsim/Scenario.h"
#include "orbsim/World.h"
#include "orbsim/testkit.h"

namespace orbsim::testkit {

namespace {

// Sends only answers; all other messages come from the test.
constexpr char kNoScenario[] =
    R"({"interval": 0, "begin": "listening", "model": {"handoffs": false}})";

}  // namespace

Milliseconds patience() {
  constexpr long kSeconds = 20;
  constexpr long kMostSeconds = 24 * 60 * 60;
  const char* const given = std::getenv("ORBSIM_TIMEOUT");
  const long seconds = given != nullptr ? std::strtol(given, nullptr, 10) : kSeconds;
  return std::chrono::seconds(seconds > 0 && seconds < kMostSeconds ? seconds : kSeconds);
}

// The state of a TestDaemon. The owner's thread starts and stops it. `mLock` guards the error and
// the pointer to the current run, which other threads share.
class TestDaemon::Impl {
 public:
  explicit Impl(Settings settings)
      : mSettings(std::move(settings)), mSocket(mSettings.socketPath) {}

  bool use(std::optional<Scenario> scenario, const std::string& error) {
    if (!scenario) return fail(error);
    mScenario = std::move(scenario);
    return true;
  }
  bool start();
  void stop();

  bool running() const {
    const std::lock_guard<std::mutex> lock(mLock);
    return mRunning;
  }
  // The current or the last run; null before the first.
  std::shared_ptr<ScenarioRun> run() const {
    const std::lock_guard<std::mutex> lock(mLock);
    return mRun;
  }
  const std::string& path() const { return mSocket.path(); }
  std::string error() const {
    const std::lock_guard<std::mutex> lock(mLock);
    return mError;
  }
  bool fail(const std::string& error) {
    const std::lock_guard<std::mutex> lock(mLock);
    mError = error;
    return false;
  }
  int send(Service service, const std::map<std::string, std::string>& words);
  // False with the error if no daemon runs.
  template <class Action>
  bool act(Action action) {
    if (!running()) return fail("the daemon is not running");
    action(run()->daemon());
    return true;
  }

 private:
  const Settings mSettings;
  PrivateSocket mSocket;
  std::optional<Scenario> mScenario;  // only for the owner's thread
  std::unique_ptr<ProcessRedirection> mRedirection;

  mutable std::mutex mLock;
  std::string mError;
  std::shared_ptr<ScenarioRun> mRun;
  bool mRunning = false;
};

bool TestDaemon::Impl::start() {
  if (running()) return true;
  if (mSocket.path().empty()) return fail(mSocket.error());
  if (!mScenario) {
    std::string error;
    mScenario = Scenario::fromText(kNoScenario, error);
    if (!mScenario) return fail(error);
  }
  Options options;
  options.socketPath = mSocket.path();
  options.log = mSettings.log;
  const auto run = std::make_shared<ScenarioRun>(*mScenario, options);
  if (mSettings.redirect) {
    mRedirection = std::make_unique<ProcessRedirection>(mSocket.path());
    const std::string error = mRedirection->error();
    if (!error.empty()) {
      mRedirection.reset();
      return fail(error);
    }
  }
  if (!run->start()) {
    mRedirection.reset();
    return fail(run->error());
  }
  const std::lock_guard<std::mutex> lock(mLock);
  mRun = run;
  mRunning = true;
  mError.clear();
  return true;
}

void TestDaemon::Impl::stop() {
  if (!running()) return;
  run()->stop();
  mRedirection.reset();
  const std::lock_guard<std::mutex> lock(mLock);
  mRunning = false;
}

int TestDaemon::Impl::send(Service service, const std::map<std::string, std::string>& words) {
  std::string error;
  const Blob blob = indicationOf(typeOf(service), words, error);
  if (!error.empty()) {
    fail(error);
    return -1;
  }
  int told = -1;
  act([&](Daemon& daemon) { told = static_cast<int>(daemon.sendToUsers(typeOf(service), blob)); });
  return told;
}

TestDaemon::TestDaemon(Settings settings) : mImpl(std::make_unique<Impl>(std::move(settings))) {}
TestDaemon::~TestDaemon() { stop(); }

bool TestDaemon::useScenarioFile(const std::string& file) {
  std::string error;
  auto scenario = Scenario::fromFile(file, error);
  return mImpl->use(std::move(scenario), error);
}

bool TestDaemon::useScenario(const std::string& text) {
  std::string error;
  auto scenario = Scenario::fromText(text, error);
  return mImpl->use(std::move(scenario), error);
}

bool TestDaemon::start() { return mImpl->start(); }
void TestDaemon::stop() { mImpl->stop(); }
bool TestDaemon::running() const { return mImpl->running(); }
std::string TestDaemon::error() const { return mImpl->error(); }
std::string TestDaemon::socketPath() const { return mImpl->path(); }

std::vector<Request> TestDaemon::requests() const {
  std::vector<Request> all;
  const auto run = mImpl->run();
  if (run == nullptr) return all;
  for (const Frame& frame : run->daemon().frames()) {
    if (isRequest(frame)) all.push_back(requestOf(frame));
  }
  return all;
}

size_t TestDaemon::connections() const {
  const auto run = mImpl->run();
  return run == nullptr ? 0 : run->daemon().sessionCount();
}

bool TestDaemon::waitForConnections(size_t made, Milliseconds timeout) const {
  const auto run = mImpl->run();
  return run != nullptr && run->daemon().waitForSessions(made, timeout);
}

bool TestDaemon::waitForDisconnections(size_t ended, Milliseconds timeout) const {
  const auto run = mImpl->run();
  return run != nullptr && run->daemon().waitForSessionsClosed(ended, timeout);
}

bool TestDaemon::waitForRequest(Service service, const std::string& name, size_t count,
                                Request* found, Milliseconds timeout) const {
  const auto run = mImpl->run();
  if (run == nullptr || count == 0) return false;
  Frame frame;
  // Checks each frame once, in the order of arrival.
  const bool came = run->daemon().waitForFrameDealtWith(
      [&, left = count](const Frame& candidate) mutable {
        if (!isRequest(candidate)) return false;
        const Request request = requestOf(candidate);
        return request.service == service && request.name == name && --left == 0;
      },
      &frame, timeout);
  if (came && found != nullptr) *found = requestOf(frame);
  return came;
}

void TestDaemon::forget() {
  const auto run = mImpl->run();
  if (run != nullptr) run->daemon().clearRecords();
}

int TestDaemon::send(const Capacity& capacity) {
  return mImpl->send(Service::kLce, wordsFor(capacity));
}
int TestDaemon::send(const Latency& latency) {
  return mImpl->send(Service::kLle, wordsFor(latency));
}
int TestDaemon::send(const HandoffPhase& phase) {
  return mImpl->send(Service::kLli, wordsFor(phase));
}
int TestDaemon::sendStatus(Service service, const std::string& status) {
  return mImpl->send(service, {{"status", status}});
}

void TestDaemon::setReportInterval(Milliseconds interval) {
  mImpl->act([&](Daemon& daemon) { daemon.setReportInterval(interval); });
}

bool TestDaemon::handoff(const Handoff& handoff) {
  if (!isTechnologyWord(handoff.target)) {
    return mImpl->fail("no such technology: " + handoff.target + "; there are " +
                       technologyWords());
  }
  std::string wrong;
  if (!mImpl->act([&](Daemon& daemon) { wrong = daemon.world().orderHandoff(orderFor(handoff)); }))
    return false;
  return wrong.empty() || mImpl->fail(wrong);
}

void TestDaemon::setRate(uint32_t rate) {
  mImpl->act([&](Daemon& daemon) { daemon.world().orderRate(Ramp{{}, rate, Milliseconds(0)}); });
}

void TestDaemon::setRate(uint32_t from, uint32_t to, Milliseconds over) {
  mImpl->act([&](Daemon& daemon) { daemon.world().orderRate(Ramp{from, to, over}); });
}

void TestDaemon::drop() {
  mImpl->act([](Daemon& daemon) { daemon.closeAll(); });
}

void TestDaemon::vanish() {
  mImpl->act([](Daemon& daemon) { daemon.vanish(); });
}

bool TestDaemon::comeBack() {
  bool back = false;
  if (!mImpl->act([&](Daemon& daemon) { back = daemon.reappear(); })) return false;
  return back || mImpl->fail("somebody else has the socket now: " + socketPath());
}

void TestDaemon::delayAnswers(Milliseconds delay) {
  mImpl->act([&](Daemon& daemon) { daemon.setAnswerDelay(delay); });
}

bool TestDaemon::refuse(const Refusal& refusal) {
  const orbsim::Refusal order{typeOf(refusal.service), refusal.request, refusal.with,
                              refusal.times};
  const std::string wrong = wrongWith(order);
  if (!wrong.empty()) return mImpl->fail(wrong);
  return mImpl->act([&](Daemon& daemon) { daemon.refuse(order); });
}

void TestDaemon::setAnswering(bool on) {
  mImpl->act([&](Daemon& daemon) { daemon.setAutoAnswer(on); });
}

bool TestDaemon::waitUntilDecided(Milliseconds timeout) {
  const auto run = mImpl->run();
  return run != nullptr && run->waitUntilDecided(timeout);
}

std::vector<std::string> TestDaemon::failures() const {
  const auto run = mImpl->run();
  return run == nullptr ? std::vector<std::string>{} : run->failures();
}

}  // namespace orbsim::testkit
