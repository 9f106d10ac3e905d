// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Ends the process with a message when a step does not come to its end within a minute: everything
// that these targets do takes less than a second, but the machine may be busy.
class Watchdog {
 public:
  // For a target whose system calls wait: keeps libFuzzer's own timer, which would interrupt them,
  // away from the present thread and those that it starts from now on.
  static void replaceAlarm();

  // One step on the present thread; any number of threads may be in steps of their own.
  class Step {
   public:
    explicit Step(const char* name);
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;
    ~Step();
  };
};
