// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Faults.h"

#include <poll.h>
#include <sys/socket.h>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <map>
#include <memory>
#include <mutex>
#include <vector>

#include "orbsim/Handshake.h"

namespace orbsim {

const char Faults::kHelp[] =
    "  refuse               The socket stays, but connections are refused.\n"
    "  no-accept            Connections are not accepted.\n"
    "  silent               The daemon sends nothing after it accepts a connection.\n"
    "  stop-after-init      The daemon sends only the first record of the handshake.\n"
    "  half-record          The daemon sends half of the first record and closes the connection.\n"
    "  wrong-id             The last record of the handshake has a wrong session id.\n"
    "  die-after-init       The daemon closes the connection after the first record.\n"
    "  die-after-response   The daemon closes the connection after the client's answer.\n"
    "  no-read              The daemon does not read what clients send.\n"
    "  no-answer            The daemon reads requests and does not answer them.\n"
    "  garbage              The daemon answers every request with bytes that are not a message.\n"
    "  cut-frame            The daemon answers a request with a part of a frame and closes the\n"
    "                       connection.\n"
    "  close-after=N        The daemon closes a connection after N frames.\n"
    "  connections=N        Only the first N connections have the faults; later connections are\n"
    "                       served correctly.\n"
    "\n"
    "Faults that exclude each other are refused. A word that is given twice and connections\n"
    "without another word are also refused:\n"
    "  refuse, no-accept, no-read           no other word\n"
    "  silent ... die-after-response        one of them, can have connections\n"
    "  no-answer, garbage                   one of them, can have close-after and connections\n"
    "  cut-frame                            can have connections\n"
    "  close-after                          can have no-answer, garbage and connections\n";

namespace {

// The subject of a fault. A fault also makes later subjects impossible: without a connection there
// is no handshake, without a handshake there are no requests, without reading there are no answers.
enum About : unsigned {
  kEntry = 1 << 0,
  kHandshake = 1 << 1,
  kInput = 1 << 2,
  kAnswer = 1 << 3,
  kEnd = 1 << 4,
  kNumberOfConnections = 1 << 5,
  kEverything = (1 << 6) - 1,
  kNoSession = kHandshake | kInput | kAnswer | kEnd
};

}  // namespace

// Two words exclude each other if one of them makes the subject of the other impossible. Each word
// also excludes itself, so it cannot be given twice.
struct Faults::Word {
  const char* name;
  bool takesNumber;
  unsigned about;
  unsigned excludes;
  void (*set)(Faults& faults, uint32_t number);

  bool excludesOrIsExcludedBy(const Word& other) const {
    return (excludes & other.about) != 0 || (other.excludes & about) != 0;
  }
};

// no-read stops reading on all connections at once, so it cannot be limited by connections=N.
const Faults::Word Faults::kWords[] = {
    {"refuse", false, kEntry, kEverything, [](Faults& f, uint32_t) { f.mRefuse = true; }},
    {"no-accept", false, kEntry, kEverything, [](Faults& f, uint32_t) { f.mNoAccept = true; }},
    {"silent", false, kHandshake, kNoSession,
     [](Faults& f, uint32_t) { f.mHandshake = Handshake::kSilent; }},
    {"stop-after-init", false, kHandshake, kNoSession,
     [](Faults& f, uint32_t) { f.mHandshake = Handshake::kStopAfterInit; }},
    {"half-record", false, kHandshake, kNoSession,
     [](Faults& f, uint32_t) { f.mHandshake = Handshake::kHalfRecord; }},
    {"wrong-id", false, kHandshake, kNoSession,
     [](Faults& f, uint32_t) { f.mHandshake = Handshake::kWrongId; }},
    {"die-after-init", false, kHandshake, kNoSession,
     [](Faults& f, uint32_t) { f.mHandshake = Handshake::kDieAfterInit; }},
    {"die-after-response", false, kHandshake, kNoSession,
     [](Faults& f, uint32_t) { f.mHandshake = Handshake::kDieAfterResponse; }},
    {"no-read", false, kInput, kEverything, [](Faults& f, uint32_t) { f.mNoRead = true; }},
    {"no-answer", false, kAnswer, kAnswer,
     [](Faults& f, uint32_t) { f.mAnswers = Answers::kNone; }},
    {"garbage", false, kAnswer, kAnswer,
     [](Faults& f, uint32_t) { f.mAnswers = Answers::kGarbage; }},
    {"cut-frame", false, kAnswer, kAnswer | kEnd,
     [](Faults& f, uint32_t) { f.mAnswers = Answers::kCut; }},
    {"close-after", true, kEnd, kEnd, [](Faults& f, uint32_t number) { f.mCloseAfter = number; }},
    {"connections", true, kNumberOfConnections, kNumberOfConnections,
     [](Faults& f, uint32_t number) { f.mConnections = number; }},
};

namespace {

bool parseNumber(const std::string& text, uint32_t& number) {
  if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) return false;
  errno = 0;
  const unsigned long value = std::strtoul(text.c_str(), nullptr, 10);
  if (errno != 0 || value == 0 || value > 1000000000) return false;
  number = static_cast<uint32_t>(value);
  return true;
}

// Sends nothing until the client disconnects.
void waitForHangUp(int fd) {
  pollfd hangUp = {fd, POLLRDHUP, 0};
  while (poll(&hangUp, 1, -1) < 0 && errno == EINTR) {
  }
}

// Counts events of each session; all copies of a hook share it.
class Counter {
 public:
  uint32_t next(uint32_t key) {
    const std::lock_guard<std::mutex> lock(mLock);
    return ++mCounts[key];
  }

 private:
  std::mutex mLock;
  std::map<uint32_t, uint32_t> mCounts;
};

}  // namespace

std::string Faults::words() {
  std::string all;
  for (const Word& word : kWords)
    all += std::string(all.empty() ? "" : ", ") + word.name + (word.takesNumber ? "=N" : "");
  return all;
}

bool Faults::parse(const std::string& list, std::string& error) {
  Faults read;
  std::vector<const Word*> given;
  for (size_t start = 0; start <= list.size();) {
    const size_t comma = std::min(list.find(',', start), list.size());
    const std::string item = list.substr(start, comma - start);
    start = comma + 1;
    const size_t equals = std::min(item.find('='), item.size());
    const std::string name = item.substr(0, equals);
    const Word* found = nullptr;
    for (const Word& word : kWords) {
      if (name == word.name) found = &word;
    }
    if (found == nullptr) {
      error = "no such fault: " + item + "; faults are " + words();
      return false;
    }
    uint32_t number = 0;
    const bool hasNumber = equals < item.size();
    if (hasNumber != found->takesNumber ||
        (hasNumber && !parseNumber(item.substr(equals + 1), number))) {
      error = (found->takesNumber ? "not a number from 1: " : "takes no number: ") + item;
      return false;
    }
    for (const Word* const other : given) {
      if (!found->excludesOrIsExcludedBy(*other)) continue;
      error = found == other ? "given twice: " + name
                             : std::string(other->name) + " and " + name + " exclude each other";
      return false;
    }
    given.push_back(found);
    found->set(read, number);
  }
  if (given.size() == 1 && given.front()->about == kNumberOfConnections) {
    error = std::string(given.front()->name) + " needs a fault that it limits: " + list;
    return false;
  }
  *this = read;
  return true;
}

const char* Faults::nameOf(Handshake how) {
  switch (how) {
    case Handshake::kProper:
      return "";
    case Handshake::kSilent:
      return "silent: no handshake";
    case Handshake::kStopAfterInit:
      return "stop-after-init: the handshake is not completed";
    case Handshake::kHalfRecord:
      return "half-record: half of the first record, then the end";
    case Handshake::kWrongId:
      return "wrong-id: the last record names another session";
    case Handshake::kDieAfterInit:
      return "die-after-init: closed after the first record";
    case Handshake::kDieAfterResponse:
      return "die-after-response: closed after the client's answer";
  }
  return "";
}

bool Faults::misbehave(Handshake how, Session& session) {
  const int fd = session.socket();
  const uint32_t id = session.id();
  const HandshakeTap& tap = session.tap();
  HandshakeReply reply;
  if (how != Handshake::kProper) session.log("fault %s", nameOf(how));
  switch (how) {
    case Handshake::kProper:
      return session.shakeHands();
    case Handshake::kSilent:
      waitForHangUp(fd);
      return false;
    case Handshake::kStopAfterInit:
      sendHandshakeRecord(fd, kHandshakeInit, id, tap);
      waitForHangUp(fd);
      return false;
    case Handshake::kHalfRecord: {
      const auto* const half = reinterpret_cast<const uint8_t*>(&kHandshakeInit);
      if (tap) tap(Direction::kToClient, half, sizeof kHandshakeInit);
      (void)::send(fd, half, sizeof kHandshakeInit, MSG_NOSIGNAL);
      return false;
    }
    case Handshake::kWrongId:
      if (sendHandshakeRecord(fd, kHandshakeInit, id, tap) && readHandshakeReply(fd, reply, tap)) {
        sendHandshakeRecord(fd, kHandshakeComplete, id + 1, tap);
        waitForHangUp(fd);
      }
      return false;
    case Handshake::kDieAfterInit:
      sendHandshakeRecord(fd, kHandshakeInit, id, tap);
      return false;
    case Handshake::kDieAfterResponse:
      if (sendHandshakeRecord(fd, kHandshakeInit, id, tap)) readHandshakeReply(fd, reply, tap);
      return false;
  }
  return false;
}

// Handles one frame of a connection with a fault. True: the frame needs no other handling.
bool Faults::misbehave(Answers how, bool isLast, Session& session, const Frame& frame) {
  switch (how) {
    case Answers::kProper:
      break;
    case Answers::kNone:
      session.log("fault no-answer: a request is left");
      break;
    case Answers::kGarbage:
      session.log("fault garbage: a request is answered with bytes that are no message");
      session.sendBlob(frame.sdkType(), Blob(16, 0xff));
      break;
    case Answers::kCut:
      session.log("fault cut-frame: a request is answered with a part of a frame, then the end");
      session.send(Blob(20, 0));
      session.close();
      break;
  }
  if (isLast) {
    session.log("fault close-after: closed");
    session.close();
  }
  return how != Answers::kProper || isLast;
}

void Faults::prepare(Daemon& daemon) const {
  if (mNoAccept) {
    daemon.setAccepting(false);
    daemon.log("fault no-accept: connections are not accepted");
  }
  if (mNoRead) {
    daemon.setReading(false);
    daemon.log("fault no-read: what clients send is not read");
  }
  const uint32_t affected = mConnections;
  if (mHandshake != Handshake::kProper) {
    const auto connections = std::make_shared<std::atomic<uint32_t>>(0);
    daemon.setSessionHandshake([=, how = mHandshake](Session& session) {
      const uint32_t number = ++*connections;
      return misbehave(affected == 0 || number <= affected ? how : Handshake::kProper, session);
    });
  }
  if (mAnswers == Answers::kProper && mCloseAfter == 0) return;
  const auto frames = std::make_shared<Counter>();
  daemon.setFrameHandler(
      [=, answers = mAnswers, last = mCloseAfter](Session& session, const Frame& frame) {
        // Sessions are numbered in the order of their connections.
        if (affected != 0 && session.id() > affected) return false;
        const bool isLast = frames->next(session.id()) >= last && last != 0;
        return misbehave(answers, isLast, session, frame);
      });
}

void Faults::apply(Daemon& daemon) const {
  if (!mRefuse) return;
  daemon.refuseConnections();
  daemon.log("fault refuse: nobody listens any more");
}

}  // namespace orbsim
