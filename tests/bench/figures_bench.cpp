// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Figures of single parts of the library as "name value unit" lines, to compare with other programs
// that do the same work. It can also do only the work of one figure, to count its instructions.
#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <string>

#include "Log.h"
#include "LogWork.h"
#include "LoopFigures.h"
#include "SdkLog.h"
#include "TimerWork.h"
#include "Timers.h"

namespace {

// Constant lines and lines with conversions alternate, as in real traffic.
void sdkLines(int count) {
  for (int i = 0; i < count; ++i) {
    if (i % 2 != 0) {
      SDK_LOG("ORB", "send: length: %ld", static_cast<long>(i));
    } else {
      SDK_LOG("ORB", "Found message handler; calling handler");
    }
  }
}
void records(int count) {
  for (int i = 0; i < count; ++i) {
    if (i % 2 != 0) {
      ORB_LOGD("send: length: %ld", static_cast<long>(i));
    } else {
      ORB_LOGD("Found message handler; calling handler");
    }
  }
}

// One kind of log call: the state of the log, and the call.
struct LogFigure {
  const char* name;
  int operations;
  const char* logging;
  bool listening, encrypted;
  void (*work)(int count);
};
// Encryption comes last, because it cannot be switched off again.
constexpr LogFigure kLogFigures[] = {
    {"log.call.project", 200000, "0", false, false, sdkLines},
    {"log.queued.project", 200000, "1", false, false, records},
    {"log.diag.project", 200000, "0", true, false, records},
    {"log.full.project", 20000, "0", false, true, records},
};

void setUp(const LogFigure& figure) {
  if (figure.encrypted && !logwork::configureEncryption()) std::exit(EXIT_FAILURE);
  logwork::setUpAgain(figure.logging, figure.listening);
}

void print(const LogFigure& figure, bool brief) {
  setUp(figure);
  const int operations = brief ? 100 : figure.operations;
  figure.work(operations / 10);
  const auto start = std::chrono::steady_clock::now();
  figure.work(operations);
  const std::chrono::duration<double, std::nano> time = std::chrono::steady_clock::now() - start;
  figures::put(figure.name, time.count() / operations);
}

// Does only the work of one figure; false if that is not possible.
bool runAlone(const std::string& name, int operations) {
  for (const LogFigure& figure : kLogFigures) {
    if (name != figure.name) continue;
    setUp(figure);
    figure.work(operations);
    return true;
  }
  if (name == "loop1.project.ping") {
    figures::dispatch(operations);
    return true;
  }
  TimerWork<SteppingTimer> timers;
  if (name == "timer.project.add" || name == "timer.project.fire") {
    timers.addAndRun(operations);
    return true;
  }
  if (name == "timer.project.remove") {
    timers.removeAndAdd(operations);
    return true;
  }
  return false;
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app(
      "Print figures of parts of the library, in nanoseconds. To be run in scripts/sandbox.");
  bool brief = false;
  std::string only;
  int operations = 1;
  app.add_flag("--brief", brief, "Few operations: the figures mean nothing then.");
  CLI::Option* const run =
      app.add_option("--run", only, "Do the work of this figure, and measure nothing.");
  app.add_option("--operations", operations, "So many times.")
      ->needs(run)
      ->check(CLI::Range(1, 100000000));
  try {
    app.parse(argc, argv);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? EXIT_SUCCESS : 2;
  }
  if (!only.empty()) {
    if (runAlone(only, operations)) return EXIT_SUCCESS;
    std::fprintf(stderr, "figures_bench: not to be run alone: %s\n", only.c_str());
    return 2;
  }
  figures::printLoop(brief);
  figures::printTimers(brief);
  for (const LogFigure& figure : kLogFigures) print(figure, brief);
  return EXIT_SUCCESS;
}
