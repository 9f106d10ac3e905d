// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "Expectations.h"

#include <algorithm>
#include <cstdio>

#include "orbsim/Service.h"

namespace orbsim {
namespace {

using Kind = Expectation::Kind;

constexpr Milliseconds kSecond{1000};

std::string seconds(Milliseconds time) {
  char text[32];
  std::snprintf(text, sizeof text, "%.3f", static_cast<double>(time.count()) / 1000.0);
  std::string all = text;
  while (all.back() == '0') all.pop_back();
  if (all.back() == '.') all.pop_back();
  return all + " s";
}

std::string nameOf(const Expectation& what) {
  std::string name = what.sdkType != 0 ? serviceName(what.sdkType) : "";
  if (!what.request.empty()) name += (name.empty() ? "" : " ") + what.request;
  for (const auto& field : what.fields) name += " " + field.first + "=" + field.second;
  return name;
}

bool matches(const Expectation& what, const RequestWords& request) {
  if (what.sdkType != 0 && what.sdkType != request.sdkType) return false;
  if (!what.request.empty() && what.request != request.request) return false;
  return std::all_of(what.fields.begin(), what.fields.end(), [&](const auto& field) {
    const auto found = request.fields.find(field.first);
    return found != request.fields.end() && found->second == field.second;
  });
}

std::string at(Expectations::Time time) {
  return time ? "at " + seconds(*time) : std::string("before the beginning");
}

}  // namespace

bool Expectations::Watch::inTime(Time time) const {
  if (what.after && (!time || *time < *what.after)) return false;
  const auto last = end();
  return !last || !time || *time <= *last;
}

std::optional<Milliseconds> Expectations::Watch::end() const {
  if (!what.within) return std::nullopt;
  return what.after.value_or(Milliseconds(0)) + *what.within;
}

std::string Expectations::Watch::missing() const {
  std::string text = what.place + ": ";
  text += what.kind == Kind::kReconnects ? "no reconnection" : "no " + nameOf(what);
  if (what.within) text += " within " + seconds(*what.within);
  if (what.after) text += " after " + seconds(*what.after);
  return text;
}

Expectations::Expectations(const std::vector<Expectation>& expectations) {
  for (const Expectation& expectation : expectations)
    mWatches.push_back({expectation, false, {}, {}});
}

void Expectations::request(const RequestWords& request, Time time) {
  const std::lock_guard<std::mutex> lock(mLock);
  for (Watch& watch : mWatches) {
    if (!watch.inTime(time) || !matches(watch.what, request)) continue;
    if (watch.what.kind == Kind::kSends) watch.met = true;
    if (watch.what.kind == Kind::kAtMost) count(watch, time);
    if (watch.what.kind == Kind::kSendsNot && watch.violation.empty()) {
      watch.violation = watch.what.place + ": " + nameOf(watch.what) + " " + at(time);
    }
  }
}

void Expectations::session(const SessionView& session, bool open, Time time) {
  const std::lock_guard<std::mutex> lock(mLock);
  if (!open) {
    if (session.process != 0)
      mEndedProcesses.insert(session.process);  // it may have no number here
    mEndedEndpoints.insert(session.endpoint);
    return;
  }
  // A client can be back before the daemon has noticed the disconnection.
  const bool known = !mClients.insert({session.process, session.endpoint}).second;
  if (!known && !isBack(session)) return;
  for (Watch& watch : mWatches) {
    if (watch.what.kind == Kind::kReconnects && watch.inTime(time)) watch.met = true;
  }
}

// Whether the session continues an ended one: of the same process, or of the same endpoint in
// another process, as after a restart of an application.
bool Expectations::isBack(const SessionView& session) const {
  return mEndedProcesses.count(session.process) != 0 ||
         mEndedEndpoints.count(session.endpoint) != 0;
}

// Requests before the start have no time, so they are not counted.
void Expectations::count(Watch& watch, Time time) {
  if (!time || !watch.violation.empty()) return;
  watch.recent.push_back(*time);
  while (*time - watch.recent.front() >= kSecond) watch.recent.pop_front();
  if (watch.recent.size() <= watch.what.most) return;
  watch.violation = watch.what.place + ": " + std::to_string(watch.recent.size()) +
                    " requests in the second up to " + seconds(*time) + ", at most " +
                    std::to_string(watch.what.most) + " expected";
}

std::optional<Milliseconds> Expectations::watchUntil(Milliseconds timelineEnd) const {
  const std::lock_guard<std::mutex> lock(mLock);
  std::optional<Milliseconds> last;
  for (const Watch& watch : mWatches) {
    if (watch.met || !watch.violation.empty()) continue;
    last = std::max(last.value_or(Milliseconds(0)), watch.end().value_or(timelineEnd));
  }
  return last;
}

std::vector<std::string> Expectations::failures(Time now, bool atEnd) const {
  const std::lock_guard<std::mutex> lock(mLock);
  std::vector<std::string> all;
  for (const Watch& watch : mWatches) {
    const auto end = watch.end();
    const bool over = atEnd || (now && end && *now > *end);
    if (!watch.violation.empty()) all.push_back(watch.violation);
    if (watch.wanted() && !watch.met && over) all.push_back(watch.missing());
  }
  return all;
}

}  // namespace orbsim
