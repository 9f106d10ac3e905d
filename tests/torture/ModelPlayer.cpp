// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ModelPlayer.h"

#include "Torture.h"

namespace torture {
namespace {

using std::chrono::microseconds;
using std::chrono::milliseconds;

constexpr milliseconds kWait(20);
constexpr milliseconds kEnabled(100);
constexpr std::chrono::seconds kHangs(60);
constexpr uint32_t kAllocations = 16;  // in a call, about

// The player that runs now, for callbacks; and the random choices of each thread of the library.
std::atomic<ModelPlayer*> gPlayer{nullptr};

// Gives other threads a moment to run; there is no condition to wait for.
void lag(microseconds time) {
  const auto end = std::chrono::steady_clock::now() + time;
  while (std::chrono::steady_clock::now() < end) sched_yield();
}

}  // namespace

const std::vector<Theme>& themes() {
  // name, threads, scenes, steps | enables, disables, requests, invalids, waits |
  // callsInside, lingers, lingering, stops | oneService, together, flood, harmful
  static const auto& all = *new std::vector<Theme>{
      {"healthy", 4, 6, 12, 20, 10, 40, 5, 5, 12, 24, 60, 8, false, false, 12, false},
      {"disable inside", 3, 8, 8, 40, 15, 10, 0, 20, 3, 3, 60, 8, false, false, 3, false},
      {"come and go", 3, 8, 10, 40, 30, 10, 0, 15, 32, 8, 25, 2, true, false, 120, false},
      {"overtaken", 4, 8, 12, 14, 10, 60, 4, 4, 64, 64, 20, 2, true, false, 60, false},
      {"together", 3, 4, 1, 0, 0, 0, 0, 0, 0, 0, 0, 0, false, true, 0, false},
      {"harmful", 4, 5, 14, 20, 10, 40, 5, 5, 12, 24, 60, 8, false, false, 12, true},
      {"harmful inside", 3, 5, 10, 30, 10, 20, 2, 15, 3, 8, 60, 8, false, false, 12, true},
      {"harmful to one", 4, 5, 12, 25, 15, 40, 2, 8, 16, 16, 30, 3, true, false, 40, true}};
  return all;
}

ModelPlayer::ModelPlayer(const Theme& theme, uint64_t seed)
    : mTheme(theme), mSeed(seed), mService(static_cast<Service>(seed % kServices)) {
  gPlayer = this;
  ModelCalls::setInside(inside);
  for (unsigned i = 0; i < theme.threads; ++i) {
    mThreads.emplace_back([this, i, seed] { run(i, seed * 1009 + i + 1); });
  }
}

ModelPlayer::~ModelPlayer() {
  for (std::thread& thread : mThreads) thread.join();
  gPlayer = nullptr;
}

// Waits until all threads of the round have arrived.
void ModelPlayer::meet() {
  std::unique_lock<std::mutex> lock(mMutex);
  const uint64_t meeting = mMeetings;
  if (++mArrived == mTheme.threads) {
    mArrived = 0;
    ++mMeetings;
    mChanged.notify_all();
  }
  mChanged.wait(lock, [&] { return mMeetings > meeting; });
}

void ModelPlayer::run(unsigned thread, uint64_t seed) {
  ModelHistory::nameThread("application " + std::to_string(thread + 1));
  Random random(static_cast<Random::result_type>(seed));
  random.discard(3);
  for (unsigned i = 0; i < mTheme.scenes; ++i) {
    meet();
    if (!ModelBooks::get().mistaken()) scene(thread, i, random);
  }
  const std::lock_guard<std::mutex> lock(mMutex);
  ++mDone;
  mChanged.notify_all();
}

void ModelPlayer::scene(unsigned thread, unsigned number, Random& random) {
  if (!mTheme.together) {
    for (auto steps = 1 + random() % mTheme.steps; steps > 0; --steps) step(random);
    return;
  }
  const auto service = static_cast<Service>(thread % kServices);
  if (number % 2 == 0) {
    const uint64_t before = ModelBooks::get().callbacks(service);
    ModelCalls::enable(service, random() % 2 == 0);
    ModelBooks::get().awaitCallback(service, before, kEnabled);
  } else {
    lag(microseconds(random() % 200));
    ModelCalls::disable(service, random() % 2 == 0);
  }
}

Service ModelPlayer::serviceOf(Random& random) const {
  return mTheme.oneService ? mService : static_cast<Service>(random() % kServices);
}

void ModelPlayer::step(Random& random) {
  const Service service = serviceOf(random);
  if (mTheme.stops > 0 && random() % mTheme.stops == 0) {
    ModelCalls::stopNextAt(static_cast<size_t>(1 + random() % kAllocations), 1 + random() % 12);
  }
  call(service, random);
}

void ModelPlayer::call(Service service, Random& random) {
  const bool second = random() % 2 == 0;
  const auto which = static_cast<uint32_t>(random());
  auto dice = static_cast<uint32_t>(random() % (mTheme.enables + mTheme.disables + mTheme.requests +
                                                mTheme.invalids + mTheme.waits));
  const auto isIn = [&dice](uint32_t share) {
    const bool in = dice < share;
    dice -= in ? 0 : share;
    return in;
  };
  if (isIn(mTheme.enables)) {
    ModelCalls::enable(service, second);
  } else if (isIn(mTheme.disables)) {
    ModelCalls::disable(service, second);
  } else if (isIn(mTheme.requests)) {
    ModelCalls::request(service, which);
  } else if (isIn(mTheme.invalids)) {
    ModelCalls::invalid(service, which);
  } else if (!ModelCalls::insideCallback()) {
    ModelBooks::get().awaitCallback(service, ModelBooks::get().callbacks(service), kWait);
  }
}

// The body of every callback, between its recorded beginning and end.
void ModelPlayer::inside(Kind kind, int account) {
  ModelPlayer* const player = gPlayer;
  if (player == nullptr || player->mClosing) return;
  const Theme& theme = player->mTheme;
  Random random(static_cast<Random::result_type>(player->mSeed * 31 + ++player->mCallbacks));
  random.discard(3);
  if (theme.callsInside > 0 && random() % theme.callsInside == 0) {
    ++player->mInside;
    if (!player->mClosing) player->step(random);
    --player->mInside;
  }
  if (theme.lingers > 0 && random() % theme.lingers == 0) {
    const milliseconds atMost(1 + random() % theme.lingering);
    ModelBooks::get().linger(kind, account, atMost);
  }
}

bool ModelPlayer::over() const {
  const std::lock_guard<std::mutex> lock(mMutex);
  return mDone == mTheme.threads;
}

void ModelPlayer::play(ModelDaemon& daemon) {
  ModelHistory::nameThread("round");
  ModelBooks& books = ModelBooks::get();
  Random random(static_cast<Random::result_type>(mSeed + 7));
  const auto latest = std::chrono::steady_clock::now() + kHangs;
  while (!over()) {
    if (std::chrono::steady_clock::now() > latest) hang();
    books.awaitProgress(random() % 60, kWait);
    if (mTheme.harmful && !over() && !books.mistaken()) daemon.act();
  }
  end();
}

// Comes earlier than the watchdog, which does not know what the threads did.
void ModelPlayer::hang() const {
  fprintf(stderr, "model: no end of the round of seed %llu, %s\n%s",
          static_cast<unsigned long long>(mSeed), mTheme.name,
          ModelBooks::get().history().text().c_str());
  abort();
}

// First no callback makes calls any more, then everything is disabled.
void ModelPlayer::end() {
  ModelBooks& books = ModelBooks::get();
  books.history().add("the end of the round");
  mClosing = true;
  if (!comesTo([this] { return mInside == 0; })) books.mistake("a call inside a callback hangs");
  for (const Service service : {kLce, kLle, kLli}) {
    while (ModelCalls::disable(service, false)) {
    }
  }
  if (!libraryThreadsEnd()) books.mistake("threads of the library do not end");
  if (!books.awaitSilence(milliseconds(0)))
    books.mistake("a callback never ended, but its thread did");
}

}  // namespace torture
