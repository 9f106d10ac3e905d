// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Ends the process with a message if a step does not end within a minute. All steps of these
// targets take less than a second, but the machine may be under load.
class Watchdog {
 public:
  // For a target whose system calls wait. libFuzzer's own timer would interrupt them. This blocks
  // its signal on the current thread and on the threads that it starts from now on.
  static void replaceAlarm();

  // One step on the current thread. Several threads may each be in a step.
  class Step {
   public:
    explicit Step(const char* name);
    Step(const Step&) = delete;
    Step& operator=(const Step&) = delete;
    ~Step();
  };
};
