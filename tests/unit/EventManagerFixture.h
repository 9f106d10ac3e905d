// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <gtest/gtest.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>
#include <iterator>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "Descriptors.h"
#include "EventManager.h"
#include "OrbTimer.h"
#include "RecordingPlatform.h"

using Entry = std::pair<int, std::string>;  // priority and text of a log line
using Entries = std::vector<Entry>;

__attribute__((format(printf, 1, 2))) inline std::string text(const char* format, ...) {
  char buffer[512];
  va_list args;
  va_start(args, format);
  std::vsnprintf(buffer, sizeof buffer, format, args);
  va_end(args);
  return buffer;
}

// The arguments of a handler's callbacks.
struct Calls {
  std::vector<int> events;
  std::vector<int> closes;

  static void onEvent(int fd, void* data) { static_cast<Calls*>(data)->events.push_back(fd); }
  static void onClose(int fd, void* data) { static_cast<Calls*>(data)->closes.push_back(fd); }
};

// A manager whose loop is run by the test. Every test must close the descriptors that it opened.
class EventManagerTest : public ::testing::Test {
 protected:
  using EventManager = orb::utils::EventManager;

  void SetUp() override {
    mOpenBefore = openDescriptors();
    mEpollFd = dup(STDERR_FILENO);  // the lowest free number, which the manager gets first
    close(mEpollFd);
    recording::clear();
    mManager = std::make_unique<EventManager>();
  }

  void TearDown() override {
    destroyManager();
    EXPECT_EQ(mOpenBefore, openDescriptors());
  }

  // Like the manager's owner: closes the two descriptors that the manager leaves open.
  void destroyManager() {
    if (mManager == nullptr) return;
    const int wakeFd = mManager->wakeFd();
    const int removeFd = mManager->removeFd();
    mManager.reset();
    EXPECT_EQ(0, close(wakeFd));
    EXPECT_EQ(0, close(removeFd));
  }

  // One pass that waits at most until a timer that is due at once.
  void pass() {
    OrbTimer timer(nullptr);
    timer.addTimedCallback(
        0, [](void*) { return -1; }, nullptr);
    mManager->processEvents(&timer);
  }

  // Runs the pending removals, like the manager's owner.
  void runRemovals() {
    mManager->lockRecursiveMutex();
    EventManager::processRemove(mManager->removeFd(), mManager.get());
    mManager->unlockRecursiveMutex();
  }

  // A descriptor that is readable from the start.
  static int readyFd() { return eventfd(1, EFD_NONBLOCK | EFD_CLOEXEC); }
  static int idleFd() { return eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC); }

  // Leaves an eventfd readable and at its maximum.
  static void fillUp(int eventFd) {
    const uint64_t most = 0xFFFFFFFFFFFFFFFE;
    ASSERT_EQ(static_cast<ssize_t>(sizeof most), write(eventFd, &most, sizeof most));
  }

  // All lines since the last clear; they have no tag, as the manager writes them.
  static Entries log() {
    Entries entries;
    for (const recording::Line& line : recording::lines()) {
      EXPECT_FALSE(line.hasTag) << line.text;
      entries.emplace_back(line.priority, line.text);
    }
    return entries;
  }

  static bool logged(int priority, const std::string& wanted) {
    for (const Entry& entry : log()) {
      if (entry == Entry(priority, wanted)) return true;
    }
    return false;
  }

  static std::string addLine(int fd, orb::utils::EventCallback callback, void* data,
                             orb::utils::CloseCallback closeCallback, int events) {
    return text(
        "addEventHandler(int %d, EventCallback %p, void* %p, CloseCallback %p, events %d) EX", fd,
        reinterpret_cast<void*>(callback), data, reinterpret_cast<void*>(closeCallback), events);
  }

  std::unique_ptr<EventManager> mManager;
  int mEpollFd = -1;  // the number of the manager's epoll instance

 private:
  size_t mOpenBefore = 0;
};
