// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The trace of the daemon stand-in and its relay, which gets all bytes of a connection. Input: a
// byte of switches, then the bytes of one direction: with switch 1 those to the client, with switch
// 2 those after the handshake. The rest of the byte selects the size of the pieces; 0 is all at
// once.
#include <algorithm>
#include <string>

#include "Check.h"
#include "FuzzTarget.h"
#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"
#include "orbsim/Trace.h"

namespace {

using orbsim::Direction;
using orbsim::TraceItem;

enum : uint8_t { kToClient = 1, kNoHandshake = 2 };

// No printed text can move a cursor or end a line.
void checkPrintable(const std::string& line) {
  FUZZ_CHECK(std::all_of(line.begin(), line.end(), [](char c) { return c >= ' ' && c <= '~'; }));
}

std::string linesOf(uint8_t switches, const uint8_t* data, size_t size, size_t piece) {
  const Direction direction = switches & kToClient ? Direction::kToClient : Direction::kToDaemon;
  std::string lines;
  orbsim::Tracer tracer(1, 0, [&lines](const TraceItem& item) {
    TraceItem untimed = item;
    untimed.time = {};
    const std::string text = traceText(untimed), json = traceJson(untimed);
    checkPrintable(text);
    checkPrintable(json);
    lines += text + "\n" + json + "\n";
  });
  if (switches & kNoHandshake) tracer.skipHandshake();
  for (size_t at = 0; at < size; at += piece)
    tracer.feed(direction, data + at, std::min(piece, size - at));
  tracer.end(direction);
  return lines;
}

// A message that the parser accepts is never reported as damaged.
template <class Message>
void checkDecoded(uint32_t sdkType, Direction direction, const uint8_t* data, size_t size) {
  orbsim::TraceMessage message;
  std::string reason;
  const bool decoded = orbsim::decodeTraceMessage(sdkType, direction,
                                                  orbsim::Blob(data, data + size), message, reason);
  FUZZ_CHECK(decoded == reason.empty());
  if (Message().ParseFromArray(data, static_cast<int>(size))) FUZZ_CHECK(decoded);
}

}  // namespace

int LLVMFuzzerInitialize(int*, char***) { return 0; }

int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  if (size == 0) return 0;
  const uint8_t switches = *data;
  const uint8_t* const passed = data + 1;
  const size_t count = size - 1;
  const size_t piece = switches >> 2;
  const std::string whole = linesOf(switches, passed, count, std::max<size_t>(count, 1));
  if (piece > 0) FUZZ_CHECK(linesOf(switches, passed, count, piece) == whole);
  checkDecoded<LceProto::ServiceMsg>(orbsim::kSdkTypeLce, Direction::kToDaemon, passed, count);
  checkDecoded<LceProto::ClientMsg>(orbsim::kSdkTypeLce, Direction::kToClient, passed, count);
  checkDecoded<LleProto::ServiceMsg>(orbsim::kSdkTypeLle, Direction::kToDaemon, passed, count);
  checkDecoded<LleProto::ClientMsg>(orbsim::kSdkTypeLle, Direction::kToClient, passed, count);
  checkDecoded<LliProto::ServiceMsg>(orbsim::kSdkTypeLli, Direction::kToDaemon, passed, count);
  checkDecoded<LliProto::ClientMsg>(orbsim::kSdkTypeLli, Direction::kToClient, passed, count);
  return 0;
}
