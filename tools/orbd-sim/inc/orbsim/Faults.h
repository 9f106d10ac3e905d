// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <string>

#include "orbsim/Daemon.h"

namespace orbsim {

// A daemon that misbehaves as a list of words says, for developers who want to see their error
// paths run. kHelp lists the words and says which can be combined. Set up once by the owner of a
// daemon and then not needed any more: the daemon keeps what it was told. Its log says of each
// fault when it happens.
class Faults {
 public:
  static const char kHelp[];

  // Reads "word[=number],...". False with a message when a word is unknown, its number is missing,
  // superfluous or out of range, two words exclude each other, or connections has nothing to limit;
  // nothing is changed then.
  bool parse(const std::string& list, std::string& error);
  // Before start(): a daemon with these faults.
  void prepare(Daemon& daemon) const;
  // After start(): what only a running daemon can do.
  void apply(Daemon& daemon) const;

 private:
  enum class Handshake {
    kProper,
    kSilent,
    kStopAfterInit,
    kHalfRecord,
    kWrongId,
    kDieAfterInit,
    kDieAfterResponse
  };
  enum class Answers { kProper, kNone, kGarbage, kCut };
  struct Word;

  static const Word kWords[];

  static std::string words();  // all that there are
  static const char* nameOf(Handshake how);
  static bool misbehave(Handshake how, Session& session);
  static bool misbehave(Answers how, bool isLast, Session& session, const Frame& frame);

  Handshake mHandshake = Handshake::kProper;
  Answers mAnswers = Answers::kProper;
  bool mRefuse = false;
  bool mNoAccept = false;
  bool mNoRead = false;
  uint32_t mCloseAfter = 0;   // frames of a connection; 0 for never
  uint32_t mConnections = 0;  // that the faults are for; 0 for all
};

}  // namespace orbsim
