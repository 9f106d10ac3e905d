// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace orbsim {

// The child process of `orbd-sim run`, and the signals for both. Call prepare() before threads are
// created, so that wait() receives the signals. Used by the main thread.
class RunProcess {
 public:
  // Before this call, a signal ends the program.
  static void prepare();

  // Returns 127 if there is no such command, 126 if it cannot be run, like shells; 0 if it runs.
  // With `sheltered`, signals that end other programs do not end the child: its parent passes them
  // in another way.
  int start(const std::vector<std::string>& command, const std::vector<std::string>& environment,
            bool sheltered);

  // Waits for the end of the child. Returns its status like shells: 128 plus the number of the
  // signal that killed it. `pass` gets the first signal that came to this process but not to the
  // child. A second signal kills the child and ends the wait at once. After askToEnd(), a child
  // that SIGTERM ends has ended normally, and a child that does not end is killed after some time.
  int wait(const std::function<void(int signal)>& pass);
  // Any thread may call it.
  static void askToEnd();
  void kill(int signal) const;

  bool started() const { return mChild > 0; }
  // Whether a second signal ended the wait early.
  bool cutShort() const { return mCutShort; }

 private:
  pid_t mChild = -1;
  bool mCutShort = false;
};

}  // namespace orbsim
