// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Reads the trace of the daemon stand-in's connections, for tests.

#pragma once

#include <string>
#include <vector>

#include "Recorder.h"
#include "orbsim/Trace.h"

namespace orbsimtest {

// The lines of a trace without the time.
class TraceLines {
 public:
  orbsim::TraceSink sink() {
    return [this](const orbsim::TraceItem& item) {
      const std::string line = orbsim::traceText(item);
      mLines.add(line.substr(line.find(' ') + 1));
    };
  }
  std::vector<std::string> get() { return mLines.all(); }

 private:
  Recorder<std::string> mLines;
};

inline const std::string kEnableText =
    "LCE ServiceMsg event_id: ENABLE transaction_id: 0 data { enable_msg { enable: true } }";

}  // namespace orbsimtest
