// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <string>

#include "orbsim/Daemon.h"

namespace orbsim {

// Makes a daemon misbehave as a list of words says, to test the error paths of applications. kHelp
// lists the words and their combinations. Set up once by the owner of a daemon and not needed
// afterwards, because the daemon keeps the settings. The daemon's log reports each fault when it
// happens.
class Faults {
 public:
  static const char kHelp[];

  // Reads "word[=number],...". False with a message if a word is unknown, its number is missing,
  // not allowed or out of range, two words exclude each other, or connections has nothing to limit;
  // then nothing changes.
  bool parse(const std::string& list, std::string& error);
  // Sets up the faults. Call it before a client connects; for no-accept, before start().
  void prepare(Daemon& daemon) const;
  // Call it after start(): applies the faults that need a running daemon.
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

  static std::string words();  // all words
  static const char* nameOf(Handshake how);
  static bool misbehave(Handshake how, Session& session);
  static bool misbehave(Answers how, bool isLast, Session& session, const Frame& frame);

  Handshake mHandshake = Handshake::kProper;
  Answers mAnswers = Answers::kProper;
  bool mRefuse = false;
  bool mNoAccept = false;
  bool mNoRead = false;
  uint32_t mCloseAfter = 0;   // after this number of frames of a connection; 0: never
  uint32_t mConnections = 0;  // number of connections with faults; 0: all
};

}  // namespace orbsim
