// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// How the cost of single parts grows, with the library's own objects: posts to the event loop with
// the number of threads that post, timers with the number of waiting timers, records with the
// number of waiting records. The floors are simple forms of each: a locked deque and an eventfd, an
// ordered map, a locked deque of texts.
#include <android/log.h>
#include <diag/diag.h>
#include <sys/time.h>
#include <time.h>

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>
#include <mutex>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Growth.h"
#include "Loops.h"
#include "NullPlatform.h"
#include "OrbTimer.h"
#include "RecordDump.h"

namespace {

constexpr size_t kPosts = 16000;
constexpr size_t kLeastTimers = 2000;    // in one measurement
constexpr size_t kLeastRecords = 20000;  // in one measurement

// All threads begin together. The measurement ends when the last item is handled.
template <class Loop>
double postFrom(size_t threads, size_t each) {
  Loop loop;
  loop.handled.expect(static_cast<int>(threads * each));
  std::atomic<bool> begin{false};
  std::vector<std::thread> posting;
  for (size_t t = 0; t < threads; ++t) {
    posting.emplace_back([&] {
      while (!begin) std::this_thread::yield();
      for (size_t i = 0; i < each; ++i) loop.post(1);
    });
  }
  return Growth::costOfOne(threads * each, [&] {
    begin = true;
    for (std::thread& thread : posting) thread.join();
    loop.handled.wait();
  });
}

void growPosts(const Growth& growth) {
  const auto each = [&](size_t threads) { return growth.operations(kPosts) / threads + 1; };
  growth.curve(
      "posting_threads", 2, {1, 2, 4, 8, 16},
      [&](size_t threads) { return postFrom<EventLoop>(threads, each(threads)); },
      [&](size_t threads) { return postFrom<BareLoop>(threads, each(threads)); });
}

constexpr long kSoonMs = 1000;  // all timers are due in this second
constexpr time_t kJump = 2;

size_t fired = 0;

int fire(void*) {
  ++fired;
  return -1;
}

// The library's queue, on a clock that the benchmark can advance.
class JumpingTimer : public OrbTimer {
 public:
  JumpingTimer() : OrbTimer(nullptr) {}
  void jump() { mAhead += kJump; }
  void add(long delay) { mIds.push_back(addTimedCallback(delay, fire, nullptr)); }
  void remove(size_t number) { removeTimedCallback(mIds[number]); }
  void run() { processEvents(); }

 protected:
  int now(timespec& t) const override {
    const int result = OrbTimer::now(t);
    t.tv_sec += mAhead;
    return result;
  }

 private:
  time_t mAhead = 0;
  std::vector<int> mIds;
};

// The same with an ordered map. It reads the clock as often as the library.
class BareTimer {
 public:
  void jump() { mAhead += kJump; }
  void add(long delay) {
    mTimers.push_back(mQueue.emplace(now() + delay * 1000000, std::make_pair(fire, nullptr)));
  }
  void remove(size_t number) { mQueue.erase(mTimers[number]); }
  void run() {
    while (!mQueue.empty() && mQueue.begin()->first <= now()) {
      const auto [callback, data] = mQueue.begin()->second;
      mQueue.erase(mQueue.begin());
      callback(data);
    }
  }

 private:
  using Queue = std::multimap<int64_t, std::pair<int (*)(void*), void*>>;
  int64_t now() const {
    timespec t = {};
    clock_gettime(CLOCK_BOOTTIME, &t);
    return (static_cast<int64_t>(t.tv_sec) + mAhead) * 1000000000 + t.tv_nsec;
  }

  int64_t mAhead = 0;
  Queue mQueue;
  std::vector<Queue::iterator> mTimers;
};

enum class Step { kAdd, kFire, kRemove };

// One step of queues with that many timers each; so many queues that a step is long enough to
// measure. A tenth of the timers, chosen at random, is removed.
template <class Timer>
double timers(const Growth& growth, Step measured, size_t count) {
  const size_t queues = 1 + growth.operations(kLeastTimers) / count;
  const size_t removed = std::max<size_t>(1, count / 10);
  std::mt19937 random(1);  // the same delays in every run
  std::vector<long> delays(count);
  for (long& delay : delays) delay = 1 + static_cast<long>(random() % kSoonMs);
  std::vector<Timer> all(queues);
  fired = 0;
  const double add = Growth::costOfOne(queues * count, [&] {
    for (Timer& timer : all) {
      for (const long delay : delays) timer.add(delay);
    }
  });
  const double remove = Growth::costOfOne(queues * removed, [&] {
    for (Timer& timer : all) {
      for (size_t i = 0; i < removed; ++i) timer.remove(i * (count / removed));
    }
  });
  const size_t left = queues * (count - removed);
  for (Timer& timer : all) timer.jump();
  const double fire = Growth::costOfOne(left, [&] {
    for (Timer& timer : all) timer.run();
  });
  if (fired != left) {
    std::fprintf(stderr, "growth_parts_bench: %zu of %zu timers fired\n", fired, left);
    std::exit(EXIT_FAILURE);
  }
  return measured == Step::kAdd ? add : measured == Step::kFire ? fire : remove;
}

void growTimers(const Growth& growth) {
  const Growth::Sizes sizes{10, 100, 1000, 10000, 100000};
  const std::pair<const char*, Step> steps[] = {
      {"timer_add", Step::kAdd}, {"timer_fire", Step::kFire}, {"timer_remove", Step::kRemove}};
  for (const auto& [name, step] : steps) {
    growth.curve(
        name, 100, sizes,
        [&, measured = step](size_t n) { return timers<JumpingTimer>(growth, measured, n); },
        [&, measured = step](size_t n) { return timers<BareTimer>(growth, measured, n); });
  }
}

// A line as the transport writes it.
constexpr char kText[] =
    "|ORB|IpcReceiver::receive:142 handling a message of the daemon, number 5 of 9, kind report";

// Records as the log queues them, and as a dump formats them for a client that takes packets.
class Records {
 public:
  void add() {
    RecordStamp stamp;
    stamp.stamp(ANDROID_LOG_DEBUG);
    mDump.queueRecord(stamp, kText);
  }
  void dump() { mDump.dump(DumpRequest::USER_COMMAND); }

 private:
  RecordDump mDump{[](const char*, int) {}};
};

// Texts with their time in a locked deque, formatted by one call of the C library.
class BareRecords {
 public:
  void add() {
    timeval time = {};
    gettimeofday(&time, nullptr);
    const std::lock_guard<std::mutex> lock(mLock);
    mQueue.emplace_back(time, kText);
  }
  void dump() {
    for (;;) {
      std::pair<timeval, std::string> record;
      {
        const std::lock_guard<std::mutex> lock(mLock);
        if (mQueue.empty()) return;
        record = std::move(mQueue.front());
        mQueue.pop_front();
      }
      void* const packet = log_alloc(0, 512);
      std::snprintf(static_cast<char*>(packet), 512, "%ld.%06ld %d %d %s", record.first.tv_sec,
                    record.first.tv_usec, 1, 1, record.second.c_str());
      log_commit(packet);
    }
  }

 private:
  std::mutex mLock;
  std::deque<std::pair<timeval, std::string>> mQueue;
};

// The cost of one record that is queued, or dumped, in a queue that grows to @p count.
template <class Queue>
double records(const Growth& growth, bool dumping, size_t count) {
  const size_t queues = 1 + growth.operations(kLeastRecords) / count;
  double adding = 0, dump = 0;
  for (size_t q = 0; q < queues; ++q) {
    Queue queue;
    adding += Growth::costOfOne(count, [&] {
      for (size_t i = 0; i < count; ++i) queue.add();
    });
    dump += Growth::costOfOne(count, [&] { queue.dump(); });
  }
  return (dumping ? dump : adding) / static_cast<double>(queues);
}

void growRecords(const Growth& growth) {
  nullplatform::setListening(true);
  for (const bool dumping : {false, true}) {
    growth.curve(
        dumping ? "record_dump" : "record_queue", 1000, {100, 1000, 10000, 100000, 1000000},
        [&](size_t n) { return records<Records>(growth, dumping, n); },
        [&](size_t n) { return records<BareRecords>(growth, dumping, n); });
  }
}

}  // namespace

int main(int argc, char** argv) {
  const Growth growth(argc, argv);
  growPosts(growth);
  growTimers(growth);
  growRecords(growth);
  return EXIT_SUCCESS;
}
