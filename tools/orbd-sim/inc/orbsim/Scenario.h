// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "orbsim/Daemon.h"

namespace orbsim {

struct ScenarioData;

// A scenario, read from JSON: events, and expectations for the client. It is immutable; copies
// share the data.
class Scenario {
 public:
  // Empty on failure, with a line for each fault that names its place: "FILE: /timeline/2/at:
  // reason". A name without a slash that is not a file is the name of a ready scenario.
  static std::optional<Scenario> fromFile(const std::string& file, std::string& error);
  static std::optional<Scenario> fromText(const std::string& text, std::string& error);
  // The file of a ready scenario.
  static std::string pathOf(const std::string& file);
  // The folders of ready scenarios, in the order of search: installed beside the program, or in the
  // sources that it was built from. ORB_SCENARIOS, if set, names the folder instead.
  static std::vector<std::string> folders();
  // The sorted names of the existing ready scenarios.
  static std::vector<std::string> readyNames();
  // The JSON schema for scenarios.
  static const std::string& schema();

  const std::string& name() const;
  const std::string& description() const;
  // When a command that still runs gets SIGTERM, relative to the scenario's start.
  std::optional<std::chrono::milliseconds> end() const;
  // Sets the daemon's options of the scenario: seed, interval and model.
  void configure(Options& options) const;

  const std::shared_ptr<const ScenarioData>& data() const { return mData; }

 private:
  explicit Scenario(std::shared_ptr<const ScenarioData> data) : mData(std::move(data)) {}

  std::shared_ptr<const ScenarioData> mData;
};

// A daemon that plays a scenario and checks what its clients do. The owner's thread calls start(),
// stop() and the destructor; any thread may call the other functions. It has one thread for timed
// events in addition to the daemon's threads.
class ScenarioRun {
 public:
  static constexpr std::chrono::milliseconds kTimeout{30000};

  // The caller sets socketPath, log and trace of the options; the scenario sets the others.
  explicit ScenarioRun(Scenario scenario, Options options = {});
  ~ScenarioRun();  // stops
  ScenarioRun(const ScenarioRun&) = delete;
  ScenarioRun& operator=(const ScenarioRun&) = delete;

  // Call it before start(). The callback is called on the run's thread when the end of the scenario
  // has come.
  void onEnd(std::function<void()> what);
  // Accepts orders on a socket of that path from now on, like ControlSocket. Empty, or the reason
  // of a failure.
  std::string control(const std::string& path);

  // Starts to listen and begins as the scenario says. False with error() on failure. Call it only
  // once.
  bool start();
  // Ends the run. Expectations whose time is not over are decided by the events so far.
  void stop();
  const std::string& error() const;

  // Waits until the timeline is over and every expectation is decided. False after the timeout, or
  // if the scenario never began.
  bool waitUntilDecided(std::chrono::milliseconds timeout = kTimeout);
  // The expectations that are not met so far, one line each; final after stop().
  std::vector<std::string> failures() const;

  Daemon& daemon();

 private:
  class Player;

  std::unique_ptr<Player> mPlayer;
};

}  // namespace orbsim
