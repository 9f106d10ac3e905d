// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>

#include "ServiceFixture.h"
#include "Transcript.h"
#include "WireTap.h"

namespace golden {

// One service of the shipped library against the daemon stand-in: writes down what a call puts on
// the socket, and what an indication is on the socket and in the callbacks. S describes the
// service, see ServiceFixture.h; the test adds how its calls are named. The session number is one
// whose bytes all differ.
template <class S>
class GoldenService : public servicetest::ServiceTest<S> {
 protected:
  using Base = servicetest::ServiceTest<S>;
  using Call = servicetest::Call<S>;
  static constexpr uint32_t kSession = 0x01020304;
  static constexpr size_t kEnablePieces = 4;  // three of the handshake and the message

  void SetUp() override {
    Base::SetUp();
    this->daemon().setNextSessionId(kSession);
    this->mSession = kSession;
    wiretap::clear();
  }

  // What a call of the application, named with its arguments, puts on the socket.
  template <class Function>
  void record(Transcript& transcript, const std::string& text, const Function& call,
              size_t pieces = 1) {
    transcript.part(text + " returns " + std::to_string(call()));
    addPieces(transcript, wiretap::take(pieces), pieces);
  }
  // Both generations, each with a connection of its own.
  void recordEnableAndDisable(Transcript& transcript) {
    record(
        transcript, std::string(S::kEnable) + "(cb)", [] { return S::enable(Base::onStatus); },
        kEnablePieces);
    recordEnd(transcript, S::kDisable, S::disable, 1);
    record(
        transcript, std::string(S::kCreate) + "(cb)", [] { return S::create(Base::onV2); },
        kEnablePieces);
    recordEnd(transcript, S::kDestroy, S::destroy, 2);
  }

  // Both generations on one connection, and nothing on the way.
  void enableBothQuietly() {
    ASSERT_EQ(1, S::enable(Base::onStatus));
    ASSERT_TRUE(this->daemon().waitForFrames(1));
    ASSERT_EQ(0, S::create(Base::onV2));
    ASSERT_TRUE(this->daemon().waitForFrames(2));
    (void)callsUpTo(kMarker);
    wiretap::clear();
  }
  // A message of the daemon, and how the callbacks see it; `describe` makes a line of a call.
  template <class Describe>
  void indicate(Transcript& transcript, const std::string& text,
                const typename S::ClientMsg& message, const Describe& describe,
                int marker = kMarker) {
    transcript.part(text);
    wiretap::clear();
    this->send(message);
    addPieces(transcript, wiretap::take(1), 1);
    const auto calls = callsUpTo(marker);
    for (const Call& call : calls) transcript.line(describe(call));
    if (calls.empty()) transcript.line("no callback");
  }
  // A session from the first byte to the last: its begin and its end; the test tells the middle.
  void beginSession(Transcript& transcript) {
    record(
        transcript, std::string(S::kCreate) + "(cb)", [] { return S::create(Base::onV2); },
        kEnablePieces);
    ASSERT_TRUE(this->daemon().waitForFrames(1));  // it may send from then on
    tell(transcript, "STATUS_IND, SUCCESS", servicetest::statusMessage<S>(1));
  }
  void endSession(Transcript& transcript) {
    recordEnd(transcript, S::kDestroy, S::destroy, 1);
    transcript.line("library closes the connection");
  }
  // A message of the daemon within it; a callback has it when this returns.
  void tell(Transcript& transcript, const std::string& text, const typename S::ClientMsg& message) {
    transcript.part(text);
    this->send(message);
    addPieces(transcript, wiretap::take(1), 1);
    EXPECT_EQ(1u, this->waitForCalls(1).size()) << text;
    this->clearCalls();
  }
  // Every status that a message can carry, and some that it cannot.
  template <class Describe>
  void indicateStatuses(Transcript& transcript, const Describe& describe) {
    for (const int status : {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 0x7fffffff, -1}) {
      indicate(transcript, "STATUS_IND, status " + std::to_string(status),
               servicetest::statusMessage<S>(status), describe,
               status == kMarker ? kMarker + 1 : kMarker);
    }
    indicate(transcript, "STATUS_IND without its member", servicetest::event<S>(0), describe);
    indicate(transcript, "an unknown event", servicetest::event<S>(99), describe);
  }

  static std::string describeStatus(const Call& call) {
    return std::string(call.callback == "v2" ? S::kCreate : S::kEnable) + "'s callback: status " +
           std::to_string(call.status);
  }

 private:
  static constexpr int kMarker = 4;  // on the wire: "not supported"

  static void addPieces(Transcript& transcript, const std::vector<wiretap::Piece>& pieces,
                        size_t expected) {
    EXPECT_EQ(expected, pieces.size());
    for (const wiretap::Piece& piece : pieces) {
      transcript.bytes(piece.fromDaemon ? "daemon to library" : "library to daemon", piece.bytes);
    }
  }
  void recordEnd(Transcript& transcript, const char* name, int (*call)(), size_t closed) {
    record(transcript, std::string(name) + "()", call);
    ASSERT_TRUE(this->daemon().waitForSessionsClosed(closed));
  }
  // A status that was sent last has come to both callbacks, so everything before it has been dealt
  // with. Returns the calls without those two.
  std::vector<Call> callsUpTo(int marker) {
    this->send(servicetest::statusMessage<S>(marker));
    const Call last{"status", marker - 1, {}};
    for (size_t wanted = 2;; ++wanted) {
      std::vector<Call> calls = this->waitForCalls(wanted);
      if (calls.size() < wanted) {
        ADD_FAILURE() << "the marker did not arrive";
        return calls;
      }
      const Call& first = calls[calls.size() - 2];
      if (first == last && calls.back().callback == "v2") {
        this->clearCalls();
        wiretap::clear();
        calls.resize(calls.size() - 2);
        return calls;
      }
    }
  }
};

}  // namespace golden
