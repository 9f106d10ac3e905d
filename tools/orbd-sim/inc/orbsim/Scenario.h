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

// What is to happen and what a client is to do, read from JSON. Never changes; copies share it.
class Scenario {
 public:
  // Nothing with a line for each fault, which names its place: "FILE: /timeline/2/at: what is
  // wrong". A name without a slash that is no file is that of a ready scenario.
  static std::optional<Scenario> fromFile(const std::string& file, std::string& error);
  static std::optional<Scenario> fromText(const std::string& text, std::string& error);
  // The file that such a name means.
  static std::string pathOf(const std::string& file);
  // Where ready scenarios are looked for, in this order: installed beside the program, or in the
  // sources that it was built from. ORB_SCENARIOS, if set, names the folder instead.
  static std::vector<std::string> folders();
  // The names of the ready scenarios that are there, in order.
  static std::vector<std::string> readyNames();
  // The JSON schema that scenarios are checked with.
  static const std::string& schema();

  const std::string& name() const;
  const std::string& description() const;
  // When a command that still runs is asked to end, counted from the scenario's beginning.
  std::optional<std::chrono::milliseconds> end() const;
  // The daemon's options as the scenario has them: seed, interval and model.
  void configure(Options& options) const;

  const std::shared_ptr<const ScenarioData>& data() const { return mData; }

 private:
  explicit Scenario(std::shared_ptr<const ScenarioData> data) : mData(std::move(data)) {}

  std::shared_ptr<const ScenarioData> mData;
};

// A daemon that plays a scenario and watches what its clients do. start(), stop() and the
// destructor belong to the owner's thread, all else may be called from any. It has a thread of its
// own besides those of the daemon, for what happens at its time.
class ScenarioRun {
 public:
  static constexpr std::chrono::milliseconds kTimeout{30000};

  // Of the options, socketPath, log and trace are the caller's and the rest the scenario's.
  explicit ScenarioRun(Scenario scenario, Options options = {});
  ~ScenarioRun();  // stops
  ScenarioRun(const ScenarioRun&) = delete;
  ScenarioRun& operator=(const ScenarioRun&) = delete;

  // Before start(): called when the end that the scenario names has come, from the run's thread.
  void onEnd(std::function<void()> what);
  // Takes orders on a socket of that path from now on, as ControlSocket. Empty, or why not.
  std::string control(const std::string& path);

  // Listens, and begins as the scenario says. False with error() set when that fails. Once only.
  bool start();
  // Ends it in order. Expectations whose time was not over yet are decided by what has come.
  void stop();
  const std::string& error() const;

  // Until the timeline is over and every expectation is decided. False when the time is up first,
  // or the scenario never began.
  bool waitUntilDecided(std::chrono::milliseconds timeout = kTimeout);
  // What was not as expected, so far, one line each; final after stop().
  std::vector<std::string> failures() const;

  Daemon& daemon();

 private:
  class Player;

  std::unique_ptr<Player> mPlayer;
};

}  // namespace orbsim
