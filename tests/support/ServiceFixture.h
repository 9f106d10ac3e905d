// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gtest/gtest.h>
#include <orb/status.h>

#include <algorithm>
#include <string>
#include <type_traits>
#include <vector>

#include "CallLog.h"
#include "RecordingPlatform.h"
#include "ServiceLines.h"
#include "orbsim/Daemon.h"

// What the tests of the services share. A service is described by a class S (LceNames, LleNames,
// LliNames): names of functions, numbers on the wire, message types, and the four functions that
// every service has.
namespace servicetest {

using orbsim::Blob;
using orbsim::Frame;

// Function of the lines that a service's listener writes.
const char* const kBlobListener = "blobListener";

// Names the instances of the shared suites.
struct ServiceName {
  template <class S>
  static std::string GetName(int) {
    return S::kName;
  }
};

// A request function of a service, with a valid call and a call that is refused because of its
// argument: no callback, or a wrong number.
struct Request {
  const char* function;
  int64_t (*valid)();
  int64_t (*invalid)();  // null: the function accepts every argument
};

// The listener's lines about a message: that it came, and that its member is missing.
struct EventTexts {
  const char* name;
  const char* empty;
};

template <class Message>
Blob serialise(const Message& message) {
  Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

// An event's number on the wire.
template <class S>
typename S::ClientMsg event(int number) {
  typename S::ClientMsg message;
  message.set_event_id(static_cast<std::decay_t<decltype(message.event_id())>>(number));
  return message;
}

template <class S>
typename S::ClientMsg statusMessage(int status) {
  auto message = event<S>(0);
  auto* body = message.mutable_data()->mutable_status_msg();
  body->set_status(static_cast<std::decay_t<decltype(body->status())>>(status));
  return message;
}

// Callbacks and lines of one service.
template <class S>
class ServiceTools {
 protected:
  using Call = servicetest::Call<S>;
  using CallList = std::vector<Call>;

  static void onStatus(status_e status) { note("status", status); }
  static void onOtherStatus(status_e status) { note("other", status); }
  static void onV2(status_v2_e status) { note("v2", status); }
  static void note(const char* callback, int status) {
    CallLog<S>::get().add({callback, status, {}});
  }
  static CallList calls() { return CallLog<S>::get().all(); }
  static void clearCalls() { CallLog<S>::get().clear(); }
  static CallList waitForCalls(size_t count, std::chrono::seconds timeout = CallLog<S>::kPatience) {
    return CallLog<S>::get().waitForAll(count, timeout);
  }

  static LogLines lines() { return linesOfUnit(S::kName, S::kName); }
  static LogLines linesOf(const std::string& function) {
    LogLines result;
    for (LogLine& line : lines()) {
      if (line.function == function) result.push_back(std::move(line));
    }
    return result;
  }
  static bool waitForLine(const LogLine& wanted) {
    return recording::waitFor([&](const recording::Line& line) {
      LogLine parsed;
      return parseLine(line.text, S::kName, S::kName, parsed) && parsed == wanted;
    });
  }
  // The first line of each call of the listener.
  static LogLine entered() { return {kBlobListener, std::string(S::kName) + "::blobListener"}; }
  static LogLine said(const std::string& message) { return {kBlobListener, message}; }

  static void forgetAll() {
    recording::clear();
    clearCalls();
  }
};

// For tests that need neither client nor daemon.
template <class S>
class ServiceObject : public ::testing::Test, protected ServiceTools<S> {
 protected:
  void SetUp() override { this->forgetAll(); }
};

// The library against a daemon in the same process that answers only what the test sends.
template <class S>
class ServiceTest : public ::testing::Test, protected ServiceTools<S> {
 protected:
  using Tools = ServiceTools<S>;
  using typename Tools::Call;
  using typename Tools::CallList;

  void SetUp() override {
    mDaemon.setAutoAnswer(false);
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    this->forgetAll();
  }
  void TearDown() override {
    S::disable();
    mDaemon.stop();
  }

  orbsim::Daemon& daemon() { return mDaemon; }

  // Enables and waits until the daemon has the message: from then on it may send.
  void enable() {
    ASSERT_EQ(1, S::enable(Tools::onStatus));
    ASSERT_TRUE(mDaemon.waitForFrames(1));
  }
  void enableBoth() {
    enable();
    ASSERT_EQ(0, S::create(Tools::onV2));
    ASSERT_TRUE(mDaemon.waitForFrames(2));
  }
  // Enables, then removes the records of that.
  void enableQuietly() {
    enable();
    settle();
    this->forgetAll();
  }
  void enableBothQuietly() {
    enableBoth();
    settle();
    ASSERT_EQ(2u, this->waitForCalls(2).size());  // the marker's second call too
    this->forgetAll();
  }

  void sendRaw(const Blob& blob) { ASSERT_TRUE(mDaemon.sendBlob(mSession, S::kSdkType, blob)); }
  void send(const typename S::ClientMsg& message) { sendRaw(serialise(message)); }

  // Sends a status as a marker and waits for it. Then all earlier frames have been handled, because
  // they are handled in order. Returns the calls without the marker's.
  CallList settle() {
    send(statusMessage<S>(kMarker));
    const Call marker{"status", kMarker - 1, {}};
    for (size_t seen = 0;;) {
      CallList all = this->waitForCalls(seen + 1);
      if (all.size() <= seen) {
        ADD_FAILURE() << "the marker did not arrive";
        return all;
      }
      const auto found = std::find(all.begin() + static_cast<ptrdiff_t>(seen), all.end(), marker);
      if (found != all.end()) {
        all.erase(found, all.end());
        return all;
      }
      seen = all.size();
    }
  }
  // The listener's lines from the first one after the last clear() up to the marker of settle().
  static LogLines listenerLines() {
    LogLines lines = Tools::linesOf(kBlobListener);
    const LogLines marker{Tools::entered(), Tools::said("STATUS_IND"),
                          Tools::said("status_msg " + std::to_string(kMarker)),
                          Tools::said("status " + std::to_string(kMarker - 1))};
    const auto end = std::search(lines.begin(), lines.end(), marker.begin(), marker.end());
    EXPECT_NE(lines.end(), end);
    lines.erase(end, lines.end());
    return lines;
  }
  Frame frame(size_t index) {
    EXPECT_TRUE(mDaemon.waitForFrames(index + 1));
    const auto frames = mDaemon.frames();
    return index < frames.size() ? frames[index] : Frame{};
  }

  uint32_t mSession = 1;

 private:
  static constexpr int kMarker = 4;  // on the wire: "not supported"

  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(0);
    return options;
  }
  orbsim::Daemon mDaemon{options()};
};

}  // namespace servicetest
