// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The handshake of a session with a daemon that sends any bytes in any pieces. Input: for each
// connection a list of steps, each a byte:
//   0 to 63     sends so many of the next bytes in one piece
//   64 to 127   sends a record INIT; its session id is this number minus 64
//   128 to 191  sends a record COMPLETE; its session id is this number minus 128
//   192 to 223  the application closes the session
//   224 to 255  the daemon stops sending
// When the handshake has ended, one more byte says which side closes. Then the session connects
// again for the rest of the input.
#include <signal.h>

#include <condition_variable>
#include <cstring>
#include <mutex>
#include <thread>

#include "ByteReader.h"
#include "Check.h"
#include "FuzzPlatform.h"
#include "FuzzTarget.h"
#include "Handshaker.h"
#include "OrbIpcClientSession.h"
#include "ProcessState.h"
#include "Recorder.h"
#include "RegisteredSockets.h"
#include "Watchdog.h"

namespace {

using hostile::Bytes;

constexpr int kMostConnections = 4;

// The progress of the session: pieces that it has read, and what it reported.
Recorder<int, Keep::Counts>& receives() { return Recorder<int, Keep::Counts>::get(); }
Recorder<bool>& reports() { return Recorder<bool>::get(); }

// The handshake logs a line for each piece that it receives. So the line shows that it was read.
void observe(const char* text) {
  if (std::strstr(text, "::performHandshake:") == nullptr) return;
  if (std::strstr(text, " recv: len: ") != nullptr || std::strstr(text, " recv returns") != nullptr)
    receives().add(0);
}

int listener = -1;

enum class Outcome { Pending, Connected, Failed, ClosedByApplication };

// The state that follows from the records so far by the documented rules.
class Model {
 public:
  Outcome take(const Bytes& piece) {
    if (piece.size() != hostile::kRecordSize) return Outcome::Failed;
    const int32_t id = hostile::word(piece, 1);
    switch (hostile::word(piece, 0)) {
      case hostile::kInit:
        mExpected = id;
        mAnswers = true;
        return Outcome::Pending;
      case hostile::kComplete:
        return id == mExpected ? Outcome::Connected : Outcome::Failed;
      default:
        return Outcome::Failed;
    }
  }
  bool answers() { return std::exchange(mAnswers, false); }
  int32_t expected() const { return mExpected; }

 private:
  int32_t mExpected = 0;
  bool mAnswers = false;
};

void expectAnswer(int fd, int32_t sessionId) {
  Bytes answer(hostile::kResponseSize);
  FUZZ_CHECK(recv(fd, answer.data(), answer.size(), MSG_WAITALL) ==
             static_cast<ssize_t>(answer.size()));
  FUZZ_CHECK(hostile::word(answer, 0) == hostile::kResponse);
  FUZZ_CHECK(hostile::word(answer, 1) == sessionId);
  FUZZ_CHECK(hostile::word(answer, 2) == static_cast<int32_t>(ProcessId::LCE));
}

Outcome deliver(int fd, const Bytes& piece, Model& model) {
  const size_t before = receives().count();
  FUZZ_CHECK(send(fd, piece.data(), piece.size(), MSG_NOSIGNAL) ==
             static_cast<ssize_t>(piece.size()));
  receives().waitForCount(before + 1, Recorder<bool>::kWatched);
  const Outcome outcome = model.take(piece);
  if (model.answers()) expectAnswer(fd, model.expected());
  return outcome;
}

// Acts as the daemon until the handshake has ended.
Outcome play(int fd, ByteReader& input, OrbIpcClientSession& session, Model& model) {
  while (!input.empty()) {
    const uint8_t step = input.byte();
    Bytes piece;
    if (step < 64) {
      piece = input.bytes(step);
    } else if (step < 192) {
      piece = hostile::record(step < 128 ? hostile::kInit : hostile::kComplete, step % 64);
    } else if (step < 224) {
      session.beginClose();
      return Outcome::ClosedByApplication;
    } else {
      shutdown(fd, SHUT_WR);
      return Outcome::Failed;
    }
    if (piece.empty()) continue;
    const Outcome outcome = deliver(fd, piece, model);
    if (outcome != Outcome::Pending) return outcome;
  }
  shutdown(fd, SHUT_WR);
  return Outcome::Failed;
}

void expectReports(const std::vector<bool>& expected) { FUZZ_CHECK(reports().take() == expected); }

// Runs one connection; false if the session cannot connect again.
bool connectOnce(ByteReader& input, const std::shared_ptr<OrbIpcClientSession>& session) {
  std::thread application(
      [&session] { session->connectToServer([](bool connected) { reports().add(connected); }); });
  UniqueFd peer(accept4(listener, nullptr, nullptr, SOCK_CLOEXEC));
  FUZZ_CHECK(peer.get() >= 0);
  Model model;
  const Outcome outcome = play(peer.get(), input, *session, model);
  application.join();
  FUZZ_CHECK(session->isConnected() == (outcome == Outcome::Connected));
  if (outcome == Outcome::ClosedByApplication) {
    expectReports({});
    FUZZ_CHECK(session->awaitReceiver(std::chrono::seconds(60)));
    return false;
  }
  if (outcome == Outcome::Failed) {
    expectReports({false});
    return true;
  }
  FUZZ_CHECK(session->sessionId() == static_cast<unsigned int>(model.expected()));
  if (input.byte() % 2 == 0) {
    peer.reset();
    reports().waitForCount(2, Recorder<bool>::kWatched);
    FUZZ_CHECK(session->awaitReceiver(std::chrono::seconds(60)));
    expectReports({true, false});
  } else {
    session->cleanup();
    expectReports({true});
  }
  FUZZ_CHECK(!session->isConnected());
  return true;
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) {
  signal(SIGPIPE, SIG_IGN);  // the application's thread may write to a closed connection
  Watchdog::replaceAlarm();
  fuzzplatform::setObserver(observe);
  listener = hostile::listenAtSocket()->release();
  return 0;
}

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const Watchdog::Step step("handshake");
  const size_t descriptors = processstate::descriptors();
  {
    ByteReader input(data, size);
    const auto session = std::make_shared<OrbIpcClientSession>(ProcessId::LCE, false);
    for (int i = 0; i < kMostConnections; ++i) {
      if (!connectOnce(input, session) || input.empty()) break;
    }
    session->cleanup();
    expectReports({});
  }
  FUZZ_CHECK(!processstate::socketsRegistered());
  FUZZ_CHECK(processstate::descriptorsComeBackTo(descriptors));
  return 0;
}
