// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "EventManagerFixture.h"
#include "OrbEventHandler.h"

using Item = std::shared_ptr<int>;

class Handler : public orb::utils::OrbEventHandler<Item> {
 public:
  explicit Handler(orb::utils::EventManager* manager)
      : OrbEventHandler("numbers", nullptr, manager) {}
  void handleEvent(Item item) override {
    handled.push_back(item ? *item : -1);
    if (onItem) onItem(handled.back());
  }
  std::vector<int> handled;
  std::function<void(int)> onItem;
};

class OrbEventHandlerTest : public EventManagerTest {
 protected:
  void SetUp() override {
    EventManagerTest::SetUp();
    mFd = dup(STDERR_FILENO);  // the number that the handler's descriptor gets
    close(mFd);
    recording::clear();
    mHandler = std::make_unique<Handler>(mManager.get());
  }
  void TearDown() override {
    destroyHandler();
    EventManagerTest::TearDown();
  }
  void destroyHandler() {
    if (!mHandler) return;
    mHandler.reset();
    pass();  // the manager closes the descriptor in its next pass
  }
  void post(int number) { mHandler->postEvent(std::make_shared<int>(number)); }

  Entries fatalLines() {
    Entries errors;
    for (const Entry& entry : log()) {
      if (entry.first == ANDROID_LOG_ERROR) errors.push_back(entry);
    }
    return errors;
  }

  std::unique_ptr<Handler> mHandler;
  int mFd = -1;
};
