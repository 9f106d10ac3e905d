// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "ChaosAccounts.h"

namespace torture {

// Application threads that enable, disable and make requests at random, as many calls as grant()
// allows. Sometimes a callback makes such a call, too. The owner starts and joins them. mMutex
// guards the granted number and is not held while the library is called. The accounts are never
// destroyed, because callbacks may come while the process exits.
class ChaosTraffic {
 public:
  static Accounts& accounts();

  ChaosTraffic(unsigned threads, uint64_t seed);
  ~ChaosTraffic() { join(); }
  ChaosTraffic(const ChaosTraffic&) = delete;
  ChaosTraffic& operator=(const ChaosTraffic&) = delete;

  void join();
  // Lets the threads make @p calls more calls and waits until the last one has begun.
  void grant(uint64_t calls);
  uint64_t granted() const { return mTotal; }

  // One call, recorded in the accounts. @p second: by the second generation's function.
  static void enable(Service service, bool second);
  static bool disable(Service service, bool second, bool insideCallback);

 private:
  void run(uint64_t seed);

  uint64_t mTotal = 0;  // the owner's thread only
  std::mutex mMutex;
  std::condition_variable mChanged;
  bool mStop = false;
  uint64_t mGranted = 0;
  std::vector<std::thread> mThreads;
};

}  // namespace torture
