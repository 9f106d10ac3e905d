// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>

#include "ServiceFixture.h"
#include "Transcript.h"
#include "WireTap.h"

namespace golden {

// One service of the shipped library with the daemon stand-in. Records the bytes that a call sends,
// the bytes of an indication and the arguments of its callbacks. S describes the service, see
// ServiceFixture.h; the test adds the names of its calls. All bytes of the session number are
// different.
template <class S>
class GoldenService : public servicetest::ServiceTest<S> {
 protected:
  using Base = servicetest::ServiceTest<S>;
  using Call = servicetest::Call<S>;
  static constexpr uint32_t kSession = 0x01020304;
  static constexpr size_t kEnablePieces = 4;  // three of the handshake, and the message

  void SetUp() override {
    Base::SetUp();
    this->daemon().setNextSessionId(kSession);
    this->mSession = kSession;
    wiretap::clear();
  }

  // The bytes that a call of the application sends, with the call and its arguments.
  template <class Function>
  void record(Transcript& transcript, const std::string& text, const Function& call,
              size_t pieces = 1) {
    transcript.part(text + " returns " + std::to_string(call()));
    addPieces(transcript, wiretap::take(pieces), pieces);
  }
  // Both generations, each with a separate connection.
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

  // Both generations on one connection, with no pending messages.
  void enableBothQuietly() {
    ASSERT_EQ(1, S::enable(Base::onStatus));
    ASSERT_TRUE(this->daemon().waitForFrames(1));
    ASSERT_EQ(0, S::create(Base::onV2));
    ASSERT_TRUE(this->daemon().waitForFrames(2));
    (void)callsUpTo(kMarker);
    wiretap::clear();
  }
  // A message of the daemon and its callbacks; `describe` makes a line of a callback.
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
  // The start and the end of a complete session; the test does the part in between.
  void beginSession(Transcript& transcript) {
    record(
        transcript, std::string(S::kCreate) + "(cb)", [] { return S::create(Base::onV2); },
        kEnablePieces);
    ASSERT_TRUE(this->daemon().waitForFrames(1));  // the daemon may send from then on
    tell(transcript, "STATUS_IND, SUCCESS", servicetest::statusMessage<S>(1));
  }
  void endSession(Transcript& transcript) {
    recordEnd(transcript, S::kDestroy, S::destroy, 1);
    transcript.line("library closes the connection");
  }
  // A message of the daemon in the session; when this returns, the callback was called.
  void tell(Transcript& transcript, const std::string& text, const typename S::ClientMsg& message) {
    transcript.part(text);
    this->send(message);
    addPieces(transcript, wiretap::take(1), 1);
    EXPECT_EQ(1u, this->waitForCalls(1).size()) << text;
    this->clearCalls();
  }
  // Every status that a message can have, and some that it cannot.
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
  // Sends a status and waits until both callbacks got it, so that everything before it is handled.
  // Returns the calls without these two.
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
