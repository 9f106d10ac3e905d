// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/InputStream.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <utility>

#include "orblog/FileStart.h"
#include "orblog/LogFiles.h"

namespace orblog {
namespace {

constexpr size_t kPieceSize = size_t{64} << 10;

bool wouldWait() {
  pollfd input = {STDIN_FILENO, POLLIN, 0};
  return poll(&input, 1, 0) == 0;
}

}  // namespace

const char kInputName[] = "standard input";

InputStream::InputStream(const PrivateKey& key, KeyRing& ring, KeyFinder& finder, Console& console,
                         std::function<void()> beforeWaiting)
    : mKey(key),
      mRing(ring),
      mConsole(console),
      mBeforeWaiting(std::move(beforeWaiting)),
      mParser(ring, [&finder](ByteView header) { return finder.open(header, kInputName); }) {
  mParser.setSearchBudget(kLeastBudget);
}

bool InputStream::readPiece(Parsed& out) {
  if (wouldWait()) mBeforeWaiting();
  std::array<uint8_t, kPieceSize> piece;
  ssize_t size = 0;
  do {
    size = ::read(STDIN_FILENO, piece.data(), piece.size());
  } while (size < 0 && errno == EINTR);
  if (size < 0) mConsole.problem(std::string(kInputName) + ": " + std::strerror(errno));
  // Nothing is lost, as with an empty file. But often the writing program has failed, so a note
  // helps.
  if (size == 0 && mStart.empty())
    mConsole.note(std::string(kInputName) + ": empty, it ended before its first byte");
  if (size <= 0) {
    mParser.finish(out);
    return false;
  }
  const size_t filled = static_cast<size_t>(size);
  const size_t lacking = std::min(kStartSize - mStart.size(), filled);
  mStart.insert(mStart.end(), piece.begin(), piece.begin() + static_cast<std::ptrdiff_t>(lacking));
  mParser.addSearchBudget(filled * kBudgetPerByte);
  mParser.feed({piece.data(), filled}, out, true);
  return true;
}

std::vector<Record> InputStream::read() {
  Parsed parsed;
  while (!mEnded && parsed.records.empty()) {
    parsed.findings.clear();
    mEnded = !readPiece(parsed);
    explainHeaders(parsed.findings, {mStart.data(), mStart.size()}, mKey, mRing);
    mConsole.report(kInputName, parsed.findings);
  }
  return std::move(parsed.records);
}

}  // namespace orblog
