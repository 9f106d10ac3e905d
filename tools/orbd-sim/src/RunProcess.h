// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <sys/types.h>

#include <functional>
#include <string>
#include <vector>

namespace orbsim {

// The child process of `orbd-sim run` and the signals that concern both. prepare() before threads
// are made, so that signals wait for wait(); all of it is the main thread's.
class RunProcess {
 public:
  // Until this is called a signal ends the program.
  static void prepare();

  // As shells have it: 127 when there is no such command, 126 when it cannot be run; 0 when it
  // runs. With `sheltered` the signals that end others do not end it: its parent tells it in
  // another way.
  int start(const std::vector<std::string>& command, const std::vector<std::string>& environment,
            bool sheltered);

  // Waits for the child's end; its status as shells have it, 128 and the signal's number for one
  // that was killed. `pass` is told the first signal that came to this process and not to the child
  // as well; a second one kills the child and ends this at once. After askToEnd() a child that ends
  // by SIGTERM has ended well, and one that does not end is killed after a while.
  int wait(const std::function<void(int signal)>& pass);
  // From any thread.
  static void askToEnd();
  void kill(int signal) const;

  bool started() const { return mChild > 0; }
  // Whether a second signal cut the waiting short.
  bool cutShort() const { return mCutShort; }

 private:
  pid_t mChild = -1;
  bool mCutShort = false;
};

}  // namespace orbsim
