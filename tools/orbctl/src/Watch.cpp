// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Watch.h"

#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "orbctl/Following.h"
#include "orbctl/Names.h"
#include "orbctl/QuietLog.h"
#include "orbctl/Screen.h"
#include "orbctl/Signals.h"
#include "orbctl/View.h"
#include "orbtool/Run.h"

namespace orbctl {
namespace {

using std::chrono::milliseconds;

// The refresh interval of the screen. Reports can come more often than this.
constexpr milliseconds kTick{250};
constexpr milliseconds kFastest{50};

// Moves events from the queue to the outputs until there is a reason to end. The main thread waits
// in one place for the queue, signals, keys and the next due time; it does not poll. Lives on the
// main thread while the command runs.
class Watcher {
 public:
  explicit Watcher(const WatchSettings& settings)
      : mSettings(settings),
        mStart(Clock::now()),
        mModel(mStart),
        mClient(mQueue),
        mFollowing(mClient, settings.services, settings.requests) {}

  int run() {
    if (mQueue.fd() < 0 || mSignals.fd() < 0) {
      end(orbtool::kExitFailed, std::string("no descriptor: ") + std::strerror(errno));
    } else {
      openOutputs();
    }
    while (!mStatus) {
      act();
      if (!mStatus) wait();
    }
    mScreen.reset();
    if (mLost > 0)
      mProblems.push_back("events lost because they came too fast: " + std::to_string(mLost));
    return *mStatus;
  }
  // Messages to print after the terminal is restored.
  const std::vector<std::string>& problems() const { return mProblems; }

 private:
  void openOutputs() {
    if (!mSettings.csv.empty()) {
      mCsv = makeCsv(mSettings.csv, mStart);
      if (mCsv == nullptr) {
        end(orbtool::kExitFailed, mSettings.csv + ": " + std::strerror(errno));
        return;
      }
    }
    const bool colored = mayColor(mSettings.color, STDOUT_FILENO);
    if (mSettings.json) {
      mText = makeJson(stdout, mStart);
    } else if (mSettings.csv != "-") {
      mScreen = openScreen(colored);
      if (mScreen == nullptr) mText = makeLines(stdout, colored);
    }
    // SIGPIPE from a file output must not end the program before the terminal is restored.
    if (mScreen != nullptr) signal(SIGPIPE, SIG_IGN);
  }

  // Does everything that needs no waiting.
  void act() {
    takeSignals();
    if (mScreen != nullptr && mScreen->keysFd() >= 0 && mScreen->readKeys())
      mStatus = orbtool::kExitDone;
    size_t lost = 0;
    for (const Event& event : mQueue.take(lost)) {
      if (mStatus) break;
      take(event);
    }
    mLost += lost;
    const Clock::time_point now = Clock::now();
    if (const auto news = mFollowing.advance(now)) show(*news);
    if (mFollowing.broken()) end(orbtool::kExitFailed, "the library cannot be set up");
    flush();
    draw(now);
    if (mSettings.time && now >= mStart + *mSettings.time && !mStatus) endOfTime();
  }

  void take(const Event& event) {
    std::optional<Event> more;
    if (mFollowing.handle(event, more)) {
      show(event);
      if (mSettings.endsWhenRefused) endIfRefused(event);
      if (isReport(event) && mSettings.count && ++mReports >= *mSettings.count)
        end(orbtool::kExitDone, "");
    }
    if (more) show(*more);
  }

  void show(const Event& event) {
    if (mCsv != nullptr) mCsv->show(event);
    if (mText != nullptr) mText->show(event);
    if (mScreen != nullptr) mModel.take(event);
    mChanged = true;
  }

  // Report the result of the given criteria.
  void endIfRefused(const Event& event) {
    const std::string name = nameOf(event.service);
    if (const auto* const criteria = std::get_if<CriteriaEvent>(&event.data)) {
      if (criteria->status != LCE_REPORTING_CRITERIA_STATUS_SUCCESS)
        end(orbtool::kExitFailed,
            name + ": the daemon refused the criteria: " + nameOf(criteria->status));
    } else if (const auto* const status = std::get_if<StatusEvent>(&event.data)) {
      if (status->status != STATUS_SUCCESS && status->status != STATUS_SERVICE_UP &&
          status->status != STATUS_SERVICE_DOWN)
        end(orbtool::kExitFailed, name + ": the daemon refused with " + nameOf(status->status));
    }
  }

  void takeSignals() {
    for (int signal = mSignals.next(); signal != 0; signal = mSignals.next()) {
      if (signal != SIGWINCH) {
        end(128 + signal, "");
      } else if (mScreen != nullptr) {
        mScreen->resize();
        mDrawn = {};
        mChanged = true;
      }
    }
  }

  void endOfTime() {
    if (mFollowing.everUp()) {
      end(orbtool::kExitDone, "");
    } else {
      end(orbtool::kExitFailed, "no service answered; see orbctl status");
    }
  }

  void flush() {
    for (const auto& output : {mCsv.get(), mText.get()}) {
      errno = 0;
      if (output == nullptr || output->flush()) continue;
      const std::string reason = std::strerror(errno);
      const bool toFile = output == mCsv.get() && mSettings.csv != "-";
      if (!toFile) orbtool::outputFailureIsTold();
      end(orbtool::kExitFailed, (toFile ? mSettings.csv : "standard output") + ": " + reason);
    }
  }

  void draw(Clock::time_point now) {
    if (mScreen == nullptr || mStatus || now < nextDrawing()) return;
    Situation situation;
    situation.services = mFollowing.services();
    for (const Service service : situation.services) {
      situation.states[indexOf(service)] = mFollowing.state(service);
      situation.statuses[indexOf(service)] = mFollowing.lastStatus(service);
    }
    situation.nextAttempt = mFollowing.nextAttempt();
    const Canvas canvas = {mScreen->columns(), mScreen->rows(), mScreen->unicode()};
    mScreen->draw(screenOf(mModel, situation, canvas, now, WallClock::now()));
    mDrawn = now;
    mChanged = false;
  }

  Clock::time_point nextDrawing() const { return mDrawn + (mChanged ? kFastest : kTick); }

  void wait() {
    std::optional<Clock::time_point> due = mFollowing.nextDue();
    const auto earlier = [&](Clock::time_point at) { due = due ? std::min(*due, at) : at; };
    if (mSettings.time) earlier(mStart + *mSettings.time);
    if (mScreen != nullptr) earlier(nextDrawing());
    int patience = -1;
    if (due) {
      const auto left = std::chrono::ceil<milliseconds>(*due - Clock::now()).count();
      patience = static_cast<int>(std::clamp<int64_t>(left, 0, 3600 * 1000));
    }
    std::array<pollfd, 3> waited = {{{mQueue.fd(), POLLIN, 0},
                                     {mSignals.fd(), POLLIN, 0},
                                     {mScreen != nullptr ? mScreen->keysFd() : -1, POLLIN, 0}}};
    (void)poll(waited.data(), waited.size(), patience);
    // A closed terminal would always be readable.
    if ((waited[2].revents & (POLLHUP | POLLERR)) != 0) end(128 + SIGHUP, "");
  }

  // The first reason is kept.
  void end(int status, const std::string& problem) {
    if (mStatus) return;
    mStatus = status;
    if (!problem.empty()) mProblems.push_back(problem);
  }
  const WatchSettings& mSettings;
  const Clock::time_point mStart;
  Signals mSignals;  // created before the library's threads
  EventQueue mQueue;
  Model mModel;
  LibraryClient mClient;  // destroyed before the queue
  Following mFollowing;
  std::unique_ptr<Output> mCsv, mText;
  std::unique_ptr<Screen> mScreen;
  Clock::time_point mDrawn;
  bool mChanged = true;
  uint64_t mReports = 0;
  uint64_t mLost = 0;
  std::optional<int> mStatus;
  std::vector<std::string> mProblems;
};

}  // namespace

int watch(const WatchSettings& settings) {
  int status = orbtool::kExitFailed;
  std::vector<std::string> problems;
  {
    const QuietLog quiet;
    Watcher watcher(settings);
    status = watcher.run();
    problems = watcher.problems();
  }
  for (const std::string& problem : problems)
    std::fprintf(stderr, "%s: %s\n", settings.name.c_str(), problem.c_str());
  return status;
}

}  // namespace orbctl
