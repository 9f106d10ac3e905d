// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <orb/lce.h>
#include <sys/resource.h>
#include <unistd.h>

#include <condition_variable>
#include <mutex>
#include <ostream>
#include <string>
#include <utility>
#include <vector>

#include "RecordingPlatform.h"
#include "lce.pb.h"
#include "orbsim/Daemon.h"

namespace lcetest {

using orbsim::Blob;
using orbsim::Frame;

// One call of one of the callbacks below.
struct Call {
  std::string callback;
  int status;
  LceEstimationReport report;
};

inline bool operator==(const Call& a, const Call& b) {
  return a.callback == b.callback && a.status == b.status && a.report.rate == b.report.rate &&
         a.report.confidenceLevel == b.report.confidenceLevel &&
         a.report.linkDirection == b.report.linkDirection &&
         a.report.queueSizeUL == b.report.queueSizeUL;
}

inline std::ostream& operator<<(std::ostream& out, const Call& call) {
  return out << call.callback << '(' << call.status << ", {" << call.report.rate << ' '
             << call.report.confidenceLevel << ' ' << call.report.linkDirection << ' '
             << call.report.queueSizeUL << "})";
}

using CallList = std::vector<Call>;

// The C callbacks have no user data, so what they get is kept per process. Never destroyed: a
// thread of the library may still call while the process exits.
struct CallLog {
  std::mutex mutex;  // guards all below
  std::condition_variable changed;
  CallList calls;

  static CallLog& get() {
    static CallLog* const log = new CallLog;
    return *log;
  }
  void add(Call call) {
    const std::lock_guard<std::mutex> lock(mutex);
    calls.push_back(std::move(call));
    changed.notify_all();
  }
};

inline CallList calls() {
  const std::lock_guard<std::mutex> lock(CallLog::get().mutex);
  return CallLog::get().calls;
}

inline void clearCalls() {
  const std::lock_guard<std::mutex> lock(CallLog::get().mutex);
  CallLog::get().calls.clear();
}

// Waits for at least @p count calls and returns all there are.
inline CallList waitForCalls(size_t count,
                             std::chrono::seconds timeout = std::chrono::seconds(10)) {
  CallLog& log = CallLog::get();
  std::unique_lock<std::mutex> lock(log.mutex);
  log.changed.wait_until(lock, std::chrono::system_clock::now() + timeout,
                         [&] { return log.calls.size() >= count; });
  return log.calls;
}

inline void onStatus(status_e status) { CallLog::get().add({"status", status, {}}); }
inline void onOtherStatus(status_e status) { CallLog::get().add({"other", status, {}}); }
inline void onV2(status_v2_e status) { CallLog::get().add({"v2", status, {}}); }
inline void onCriteria(LceReportingCriteriaStatus status) {
  CallLog::get().add({"criteria", status, {}});
}
inline void onLast(LceEstimationReportStatus status, LceEstimationReport report) {
  CallLog::get().add({"last", status, report});
}
inline void onOtherLast(LceEstimationReportStatus status, LceEstimationReport report) {
  CallLog::get().add({"otherLast", status, report});
}
inline void onReport(LceEstimationReportStatus status, LceEstimationReport report) {
  CallLog::get().add({"report", status, report});
}

// A line of the LCE service: function and message.
using LceLine = std::pair<std::string, std::string>;
using LceLines = std::vector<LceLine>;

// Splits "|Lce|Lce::function:NNN message"; false for any other line.
inline bool parseLceLine(const std::string& text, LceLine& line) {
  const std::string head = "|Lce|Lce::";
  if (text.compare(0, head.size(), head) != 0) return false;
  const size_t colon = text.find(':', head.size());
  const size_t blank = text.find(' ', head.size());
  if (colon == std::string::npos || blank == std::string::npos || blank < colon) return false;
  line = {text.substr(head.size(), colon - head.size()), text.substr(blank + 1)};
  return true;
}

// The recorded lines of the LCE service; all go out at debug priority under the default tag.
inline LceLines lceLines() {
  LceLines result;
  for (const recording::Line& line : recording::lines()) {
    LceLine parsed;
    if (!parseLceLine(line.text, parsed)) continue;
    EXPECT_EQ(3, line.priority) << line.text;
    EXPECT_FALSE(line.hasTag) << line.text;
    result.push_back(std::move(parsed));
  }
  return result;
}

inline LceLines lceLinesOf(const std::string& function) {
  LceLines result;
  for (LceLine& line : lceLines()) {
    if (line.first == function) result.push_back(std::move(line));
  }
  return result;
}

inline bool waitForLceLine(const std::string& function, const std::string& message) {
  return recording::waitFor([&](const recording::Line& line) {
    LceLine parsed;
    return parseLceLine(line.text, parsed) && parsed == LceLine(function, message);
  });
}

template <class Message>
Blob serialise(const Message& message) {
  Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

inline LceProto::ClientMsg statusInd(int status) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::STATUS_IND);
  message.mutable_data()->mutable_status_msg()->set_status(static_cast<LceProto::Status>(status));
  return message;
}

inline LceProto::ClientMsg criteriaResult(uint64_t id, bool success, const std::string& error) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
  message.set_transaction_id(id);
  auto* response = message.mutable_data()->mutable_set_reporting_criteria_resp();
  response->set_success(success);
  response->set_error(error);
  return message;
}

template <class Report>
void fill(Report* report, uint32_t rate, int confidence, int direction, uint32_t queue,
          const std::string& error) {
  report->set_rate(rate);
  report->set_confidence_level(static_cast<LceProto::ConfidenceLevel>(confidence));
  report->set_link_direction(static_cast<LceProto::LinkDirection>(direction));
  report->set_queue_size_ul(queue);
  report->set_error_string(error);
}

inline LceProto::ClientMsg lastReport(uint32_t rate, int confidence, int direction, uint32_t queue,
                                      const std::string& error) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  fill(message.mutable_data()->mutable_get_last_estimation_report_resp(), rate, confidence,
       direction, queue, error);
  return message;
}

inline LceProto::ClientMsg periodicReport(uint32_t rate, int confidence, int direction,
                                          uint32_t queue, const std::string& error) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  fill(message.mutable_data()->mutable_estimation_reports_resp(), rate, confidence, direction,
       queue, error);
  return message;
}

// The library against a daemon in the same process that answers only what the test sends.
class LceTest : public ::testing::Test {
 protected:
  void SetUp() override {
    mDaemon.setAutoAnswer(false);
    ASSERT_TRUE(mDaemon.start()) << mDaemon.error();
    recording::clear();
    clearCalls();
  }
  void TearDown() override {
    orb_lce_disable();
    mDaemon.stop();
  }

  orbsim::Daemon& daemon() { return mDaemon; }

  // Enables and waits until the daemon has the message: from then on it may send.
  void enable() {
    ASSERT_EQ(1, orb_lce_enable(onStatus));
    ASSERT_TRUE(mDaemon.waitForFrames(1));
  }
  void enableBoth() {
    enable();
    ASSERT_EQ(0, createLceClient(onV2));
    ASSERT_TRUE(mDaemon.waitForFrames(2));
  }

  static int64_t setCriteria() {
    const LceReportingCriteria criteria = {};
    const int64_t id = lceSetReportingCriteria(&criteria, onCriteria);
    EXPECT_GT(id, 0);
    return id;
  }

  void sendRaw(const Blob& blob) {
    ASSERT_TRUE(mDaemon.sendBlob(mSession, orbsim::kSdkTypeLce, blob));
  }
  void send(const LceProto::ClientMsg& message) { sendRaw(serialise(message)); }

  // Everything sent before has been dealt with once its status has arrived: frames are handled in
  // order. Returns the calls without that one.
  CallList settle() {
    send(statusInd(LceProto::NOT_SUPPORTED));
    const Call marker{"status", STATUS_NOT_SUPPORTED, {}};
    for (size_t seen = 1;; ++seen) {
      CallList all = waitForCalls(seen);
      if (all.size() < seen) {
        ADD_FAILURE() << "the marker did not arrive";
        return all;
      }
      if (all[seen - 1] == marker) {
        all.erase(all.begin() + static_cast<ptrdiff_t>(seen) - 1, all.end());
        return all;
      }
    }
  }

  uint32_t mSession = 1;

 private:
  static orbsim::Options options() {
    orbsim::Options options;
    options.reportInterval = std::chrono::milliseconds(0);
    return options;
  }
  orbsim::Daemon mDaemon{options()};
};

// Leaves just @p room descriptors for its lifetime.
class FewDescriptors {
 public:
  explicit FewDescriptors(size_t room) {
    getrlimit(RLIMIT_NOFILE, &mBefore);
    rlimit low = mBefore;
    low.rlim_cur = 256;
    setrlimit(RLIMIT_NOFILE, &low);
    for (int fd = 0; (fd = open("/dev/null", O_RDONLY | O_CLOEXEC)) >= 0;) mTaken.push_back(fd);
    for (size_t i = 0; i < room && !mTaken.empty(); ++i) giveOne();
  }
  FewDescriptors(const FewDescriptors&) = delete;
  FewDescriptors& operator=(const FewDescriptors&) = delete;
  ~FewDescriptors() {
    while (!mTaken.empty()) giveOne();
    setrlimit(RLIMIT_NOFILE, &mBefore);
  }

 private:
  void giveOne() {
    close(mTaken.back());
    mTaken.pop_back();
  }
  rlimit mBefore{};
  std::vector<int> mTaken;
};

}  // namespace lcetest
