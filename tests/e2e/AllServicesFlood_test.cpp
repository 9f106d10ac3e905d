// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// As many indications of all services as the daemon can send, at the same time.
#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include "AllServicesFixture.h"
#include "Rounds.h"

namespace allservices {
namespace {

const uint32_t kIndications = fewerIf(emulated(), 100000u);

// The data of one service's receiver thread. Indications have numbers from 0, and each must be the
// next one. mMutex guards only the end.
class Flow {
 public:
  void arrive(uint64_t number) {
    const uint32_t due = mReceived.load();
    if (number != due) ++mOutOfTurn;
    mReceived = due + 1;
    // Without a log, because so many lines would fill the memory.
    if (due % 1024 == 0) recording::clear();
    if (due + 1 != kIndications) return;
    const std::lock_guard<std::mutex> lock(mMutex);
    mComplete = true;
    mChanged.notify_all();
  }
  bool waitComplete() {
    std::unique_lock<std::mutex> lock(mMutex);
    return mChanged.wait_until(lock, std::chrono::system_clock::now() + std::chrono::minutes(8),
                               [this] { return mComplete; });
  }
  uint32_t received() const { return mReceived; }
  uint32_t outOfTurn() const { return mOutOfTurn; }

 private:
  std::atomic<uint32_t> mReceived{0};
  std::atomic<uint32_t> mOutOfTurn{0};
  std::mutex mMutex;
  std::condition_variable mChanged;
  bool mComplete = false;
};

// Never destroyed, because callbacks can come while the process exits.
template <class S>
Flow& flow() {
  static Flow* const instance = new Flow;
  return *instance;
}

void onRate(LceEstimationReportStatus, LceEstimationReport report) {
  flow<LceNames>().arrive(report.rate);
}
void onLatency(int32_t, const LleEstimationReport* report) {
  flow<LleNames>().arrive(report->ulLatencyEstimation);
}
void onInterruption(LliHandoffIndType, LliPreHandoffState, const LliInterruptInfo* info) {
  flow<LliNames>().arrive(info->estimatedTimeToInterruption);
}

Blob rate(uint32_t number) { return serialise(lcetest::periodicReport(number, 7, 1, 1, "NONE")); }
Blob latency(uint32_t number) {
  return serialise(lletest::periodicReport({true, 1, number, 2, 1, 3, 4, 5, LleProto::LTE}));
}
Blob interruption(uint32_t number) {
  return serialise(llitest::indication({LliProto::HANDOFF_IMMINENT, 0, 3, 6, number, 40}));
}

struct Stream {
  const ServiceOps& service;
  Flow& flow;
  Blob (*indication)(uint32_t number);
};

class AllServicesFlood : public AllServicesTest {
 protected:
  // Sends all indications of one service as fast as the daemon accepts them.
  void push(const Stream& stream) {
    const uint32_t session = mSessions.at(stream.service.name);
    for (uint32_t number = 0; number < kIndications; ++number) {
      const bool sent =
          daemon().sendBlob(session, stream.service.sdkType, stream.indication(number));
      if (!sent) {
        ADD_FAILURE() << stream.service.name << " cannot take number " << number;
        return;
      }
    }
  }
};

TEST_F(AllServicesFlood, EveryIndicationArrivesOnceAndInOrder) {
  enableAll();
  ASSERT_EQ(0, lceRegEstimationReports(onRate));
  ASSERT_EQ(0, lleRegEstimationReports(onLatency));
  ASSERT_EQ(0, lliRegLinkInterruptInd(onInterruption));
  const Stream streams[] = {{kLce, flow<LceNames>(), rate},
                            {kLle, flow<LleNames>(), latency},
                            {kLli, flow<LliNames>(), interruption}};
  std::vector<std::thread> pushers;
  for (const Stream& stream : streams) pushers.emplace_back([&] { push(stream); });
  for (std::thread& pusher : pushers) pusher.join();
  for (const Stream& stream : streams) {
    EXPECT_TRUE(stream.flow.waitComplete())
        << stream.service.name << ": " << stream.flow.received();
  }
  // A repeated indication would come before this one.
  for (const Stream& stream : streams) expectHearsJustThis(stream.service);
  for (const Stream& stream : streams) {
    EXPECT_EQ(kIndications, stream.flow.received()) << stream.service.name;
    EXPECT_EQ(0u, stream.flow.outOfTurn()) << stream.service.name;
  }
}

}  // namespace
}  // namespace allservices
