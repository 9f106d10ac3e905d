// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <google/protobuf/stubs/logging.h>

#include <memory>
#include <vector>

#include "CallRecord.h"
#include "Check.h"
#include "Service.h"
#include "orbsim/Daemon.h"

// A service that is enabled in both generations, with a daemon that does not answer. So its
// listener gets only what the target passes to it. Created once and kept until the process ends.
class QuietService {
 public:
  QuietService(int (*enable)(SdkBase::StatusCallback), int (*create)(SdkBase::StatusV2Callback),
               ServiceSlot& slot) {
    google::protobuf::SetLogHandler(nullptr);  // it would report each invalid text
    mDaemon.setAutoAnswer(false);
    FUZZ_CHECK(mDaemon.start());
    FUZZ_CHECK(enable(onStatus) == 1);
    FUZZ_CHECK(create(onStatusV2) == 0);
    forgetRequests(2);
    mObject = slot.get();
    FUZZ_CHECK(mObject != nullptr);
  }

  // Waits until the library has sent so many requests.
  void forgetRequests(size_t count) {
    FUZZ_CHECK(mDaemon.waitForFrames(count));
    mDaemon.clearRecords();
  }

  // As the SDK client does on the receiver thread, but on the caller's thread.
  void deliver(const std::vector<uint8_t>& blob) {
    mObject->blobListener(SdkClientBase::BlobReceived, blob);
  }

  // The message that the service reads from a blob. If the blob does not parse: the default
  // message.
  template <class Message>
  static Message messageIn(const std::vector<uint8_t>& blob) {
    Message message;
    if (!message.ParseFromArray(blob.data(), static_cast<int>(blob.size()))) message.Clear();
    return message;
  }

 private:
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(0);
    return options;
  }
  orbsim::Daemon mDaemon{options()};
  std::shared_ptr<Service> mObject;
};
