// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ModelDaemon.h"

#include <poll.h>
#include <sys/socket.h>

#include <array>

#include "orbsim/Handshake.h"

namespace torture {
namespace {

using Guard = std::lock_guard<std::mutex>;
using std::chrono::milliseconds;
using What = ModelBooks::What;

constexpr milliseconds kPause(15);

// The endpoint of the first service; those of the others follow.
constexpr int kFirstEndpoint = 105;

}  // namespace

orbsim::Options ModelDaemon::options() {
  orbsim::Options options;
  options.reportInterval = milliseconds(0);
  options.record = false;
  options.maxQueuedBytes = size_t{1} << 20;
  return options;
}

ModelDaemon::ModelDaemon() {
  mDaemon.setHandshake([this](int fd, uint32_t sessionId) { return greet(fd, sessionId); });
  mDaemon.setFrameHandler([this](orbsim::Session& session, const orbsim::Frame& frame) {
    return handle(session, frame);
  });
}

bool ModelDaemon::begin(const Manners& manners, uint64_t seed) {
  {
    const Guard lock(mMutex);
    mManners = manners;
    mRandom.seed(static_cast<Random::result_type>(seed));
    mBlind = false;
    mNumber = 0;
    mConnections.clear();
    mBySession.clear();
  }
  return mDaemon.start();
}

uint32_t ModelDaemon::random(uint32_t below) {
  const Guard lock(mMutex);
  return static_cast<uint32_t>(mRandom() % below);
}

bool ModelDaemon::silentFor(int endpoint) const {
  const Guard lock(mMutex);
  return mManners.silentFor == endpoint - kFirstEndpoint;
}

ModelDaemon::Connection& ModelDaemon::accepted(int fd, uint32_t sessionId) {
  constexpr Plan kHarmful[] = {Plan::Silent, Plan::SlowToGreet,   Plan::Refuse,
                               Plan::Close,  Plan::NoMoreReading, Plan::NoMoreWriting};
  const Guard lock(mMutex);
  Connection& connection = mConnections[++mNumber];
  mBySession[sessionId] = mNumber;
  connection.number = mNumber;
  connection.fd = fd;
  connection.touched = mBlind;
  if (mManners.harmful && mRandom() % 3 == 0) {
    connection.plan = kHarmful[mRandom() % std::size(kHarmful)];
    connection.framesToGo = static_cast<uint32_t>(1 + mRandom() % 6);
  }
  ModelBooks::get().history().add("connection %llu accepted, plan %d, session %u",
                                  static_cast<unsigned long long>(mNumber),
                                  static_cast<int>(connection.plan), sessionId);
  return connection;
}

// Runs on the session's thread. The thread that stops the daemon shuts the socket down and waits.
bool ModelDaemon::greet(int fd, uint32_t sessionId) {
  ModelHistory::nameThread("daemon");
  const Connection& connection = accepted(fd, sessionId);
  const auto untilTheClientLeaves = [fd] {
    pollfd end = {fd, POLLRDHUP, 0};
    poll(&end, 1, -1);
    return false;
  };
  if (connection.plan == Plan::Refuse) {
    ModelBooks::get().harm();
    const uint32_t stage = random(3);
    if (stage > 0) orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeInit, sessionId);
    orbsim::HandshakeReply reply;
    if (stage > 1) orbsim::readHandshakeReply(fd, reply);
    return false;
  }
  if (connection.plan == Plan::Silent && random(2) == 0) return untilTheClientLeaves();
  if (connection.plan == Plan::SlowToGreet) {
    std::unique_lock<std::mutex> lock(mMutex);
    mChanged.wait_for(lock, kPause, [this] { return mBlind; });
  }
  orbsim::HandshakeReply reply;
  if (!orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeInit, sessionId) ||
      !orbsim::readHandshakeReply(fd, reply)) {
    return false;
  }
  if (connection.plan == Plan::Silent || silentFor(reply.endpoint)) return untilTheClientLeaves();
  return orbsim::sendHandshakeRecord(fd, orbsim::kHandshakeComplete, sessionId);
}

bool ModelDaemon::handle(orbsim::Session& session, const orbsim::Frame& frame) {
  Connection* connection = nullptr;
  {
    const Guard lock(mMutex);
    connection = &mConnections[mBySession[session.id()]];
  }
  Asked asked;
  if (!modelanswers::parse(frame, asked)) {
    ModelBooks::get().mistake("connection %llu: not a request",
                              static_cast<unsigned long long>(connection->number));
    return true;
  }
  note(*connection, asked);
  if (!asked.disables) answer(session, asked, connection->number);
  if (mManners.harmful) misbehave(session, *connection);
  return true;
}

void ModelDaemon::note(Connection& connection, const Asked& asked) {
  ModelBooks& books = ModelBooks::get();
  const auto number = static_cast<unsigned long long>(connection.number);
  books.history().add("connection %llu: %s event %d%s, request %u", number, nameOf(asked.service),
                      asked.event, asked.disables ? ", disable message" : "", asked.tag);
  if (connection.frames == 0) books.connectionStands(connection.number);
  if (asked.tag != 0) books.arrived(asked.tag, connection.latestStart);
  const Guard lock(mMutex);
  if (connection.disableMessages > 0)
    books.mistake("connection %llu: more after the disable message", number);
  if (connection.service >= 0 && connection.service != asked.service) {
    books.mistake("connection %llu has messages of two services", number);
  }
  connection.service = asked.service;
  ++connection.frames;
  if (asked.disables) ++connection.disableMessages;
  if (asked.enable) ++connection.enables;
}

void ModelDaemon::answer(orbsim::Session& session, const Asked& asked, uint64_t connection) {
  uint32_t times = 1;
  {
    const Guard lock(mMutex);
    if (mManners.flood > 0 && mRandom() % 2 == 0)
      times += static_cast<uint32_t>(mRandom() % mManners.flood);
    if (mManners.harmful && mRandom() % 8 == 0) times = 0;
  }
  for (const orbsim::Blob& blob : modelanswers::answers(asked, connection)) {
    for (uint32_t i = 0; i < times; ++i)
      session.sendBlob(modelanswers::typeOf(asked.service), blob);
  }
}

// Follows the plan of the connection after this frame, and sends messages without a request.
void ModelDaemon::misbehave(orbsim::Session& session, Connection& connection) {
  const uint32_t dice = random(16);
  const uint32_t type = modelanswers::typeOf(static_cast<Service>(connection.service));
  if (dice == 0) {
    ModelBooks::get().harm();
    session.sendBlob(type, modelanswers::serviceDown());
  } else if (dice == 1) {
    session.sendBlob(type, {0xff, 0xff, 0xff});
  } else if (dice == 2) {
    session.sendFrame(session.headerFor(77, 4), {1, 2, 3, 4});
  }
  const Guard lock(mMutex);
  if (connection.framesToGo == 0 || --connection.framesToGo > 0) return;
  if (connection.plan != Plan::Close && connection.plan != Plan::NoMoreReading &&
      connection.plan != Plan::NoMoreWriting) {
    return;
  }
  ModelBooks::get().harm();
  connection.touched = true;
  ModelBooks::get().history().add("connection %llu: plan %d",
                                  static_cast<unsigned long long>(connection.number),
                                  static_cast<int>(connection.plan));
  if (connection.plan == Plan::Close) session.close();
  if (connection.plan == Plan::NoMoreReading) shutdown(connection.fd, SHUT_RD);
  if (connection.plan == Plan::NoMoreWriting) shutdown(connection.fd, SHUT_WR);
}

// From now on the connections may break at any time.
void ModelDaemon::touchAll() {
  const Guard lock(mMutex);
  mBlind = true;
  for (auto& [number, connection] : mConnections) {
    if (connection.disableMessages == 0) connection.touched = true;
  }
  mChanged.notify_all();
}

void ModelDaemon::restart() {
  ModelBooks& books = ModelBooks::get();
  books.harm();
  touchAll();
  books.history().add("the daemon ends");
  mDaemon.stop();
  if (random(2) == 0) books.awaitProgress(random(60), milliseconds(60));
  books.history().add("the daemon starts, session ids from 1");
  const bool started = mDaemon.start();
  if (!started) books.mistake("the daemon does not start: %s", mDaemon.error().c_str());
}

void ModelDaemon::act() {
  ModelBooks& books = ModelBooks::get();
  switch (random(5)) {
    case 0:
      restart();
      break;
    case 1:
      books.harm();
      touchAll();
      books.history().add("the daemon closes all connections");
      mDaemon.closeAll();
      break;
    case 2:
      touchAll();
      books.history().add("the daemon does not read");
      mDaemon.setReading(false);
      books.awaitProgress(random(100), milliseconds(60));
      mDaemon.setReading(true);
      books.history().add("the daemon reads");
      break;
    case 3:
      books.history().add("the daemon does not accept");
      mDaemon.setAccepting(false);
      books.awaitProgress(random(60), milliseconds(60));
      mDaemon.setAccepting(true);
      books.history().add("the daemon accepts");
      break;
    default:
      books.awaitProgress(random(100), milliseconds(20));
      break;
  }
  const Guard lock(mMutex);
  mBlind = false;
}

void ModelDaemon::finish() {
  ModelBooks& books = ModelBooks::get();
  if (!mDaemon.waitForConnectionsClosed(mDaemon.totals().connections)) {
    books.mistake("a connection stays open");
  }
  std::array<size_t, kServices> disableMessages{};
  std::array<size_t, kServices> enables{};
  const Guard lock(mMutex);
  for (const auto& [number, connection] : mConnections) {
    check(connection);
    if (connection.service < 0) continue;
    disableMessages[static_cast<size_t>(connection.service)] += connection.disableMessages;
    enables[static_cast<size_t>(connection.service)] += connection.enables;
  }
  for (const Service service : {kLce, kLle, kLli}) {
    if (disableMessages[service] > books.accepted(What::Disable, service) ||
        enables[service] > books.accepted(What::Enable, service)) {
      books.mistake("%s: %zu enables and %zu disable messages are too many", nameOf(service),
                    enables[service], disableMessages[service]);
    }
  }
}

void ModelDaemon::check(const Connection& connection) {
  const bool healthy = connection.plan == Plan::Healthy || connection.plan == Plan::SlowToGreet;
  if (!healthy || connection.touched || connection.frames == 0 || connection.disableMessages == 1)
    return;
  if (ModelBooks::get().starved()) return;  // threads did not run in time to send it
  ModelBooks::get().mistake(
      "connection %llu of %s ended after %zu messages with %zu disable messages",
      static_cast<unsigned long long>(connection.number),
      nameOf(static_cast<Service>(connection.service)), connection.frames,
      connection.disableMessages);
}

}  // namespace torture
