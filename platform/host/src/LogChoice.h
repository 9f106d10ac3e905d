// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

namespace host {

// Decides which lines of the platform log are shown. If ORB_LOG_LEVEL names a lowest level, only
// the level decides. The default is for a person who runs an application: warnings and errors,
// without those that are part of every run, and lines of level debug that show a mistake of the
// application. Constant, so any thread and any signal handler may use it.
class LogChoice {
 public:
  // Reads the environment. An unknown level gives one line on standard error and the default.
  static LogChoice ofEnvironment();

  // False if no line of this level can be shown.
  bool mayShow(int level) const;
  // For a line with a level that can be shown.
  bool shows(int level, const char* text) const;

 private:
  explicit LogChoice(int lowest, bool levelAlone) : mLowest(lowest), mLevelAlone(levelAlone) {}

  const int mLowest;
  const bool mLevelAlone;
};

}  // namespace host
