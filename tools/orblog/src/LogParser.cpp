// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/LogParser.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "orblog/Format.h"

namespace orblog {
namespace {

constexpr uint64_t kNowhere = std::numeric_limits<uint64_t>::max();
// About a second of work. Random bytes look like a record's length at one of a hundred places, so
// an undamaged file never comes near this limit.
constexpr uint64_t kSearchBudget = uint64_t{512} << 20;
// Lengths that the library never writes are followed only this often, because each wrong one costs
// 64 KiB.
constexpr uint64_t kLongBudget = uint64_t{256} << 20;
constexpr uint64_t kAttemptCost = 256;  // fixed cost of an attempt, in addition to its bytes
// This number of keys is tried for every record, even without a budget, because two processes can
// alternate in a file.
constexpr size_t kFreeTrials = 2;
// Each costs an RSA operation, so a file may have only a few more than its own header.
constexpr int kHeaderAttempts = 8;

}  // namespace

LogParser::LogParser(KeyRing& keys, HeaderOpener opener)
    : mKeys(&keys),
      mOpener(std::move(opener)),
      mBudget(kSearchBudget),
      mLongBudget(kLongBudget),
      mHeaderAttempts(kHeaderAttempts) {}

void LogParser::setSearchBudget(uint64_t bytes) {
  mBudget = std::min(bytes, kSearchBudget);
  mLongBudget = std::min(bytes, kLongBudget);
}

void LogParser::addSearchBudget(uint64_t bytes) {
  mBudget = std::min(kSearchBudget, mBudget + std::min(bytes, kSearchBudget));
  mLongBudget = std::min(kLongBudget, mLongBudget + std::min(bytes, kLongBudget));
}

bool LogParser::feed(ByteView bytes, Parsed& out, bool more) {
  mBuffer.insert(mBuffer.end(), bytes.data, bytes.data + bytes.size);
  process(more ? Rest::There : Rest::Later, out);
  return !out.isFull();
}

void LogParser::finish(Parsed& out) { process(Rest::None, out); }

uint64_t LogParser::restart() {
  // There may be many waiting parsers, so unused memory is released.
  std::vector<uint8_t>().swap(mBuffer);
  return mBase;
}

bool LogParser::passZeros(uint64_t end) {
  // The last byte may be the first byte of a length.
  if (!mGap || !mBuffer.empty() || mGap->next != mBase || end < mBase + 2) return false;
  if (mGap->declared >= mBase && mGap->declared < end) return false;
  if (mBudget == 0 || !hasKeys()) mGap->gaveUp = true;
  mGap->next = end - 1;
  mBase = end - 1;
  return true;
}

bool LogParser::goBack(uint64_t size) {
  if (size >= mBase) return true;
  if (!mGap || size < mGap->first) return false;
  mBuffer.clear();
  mBase = mGap->first;
  const bool silent = mGap->silent;
  mGap.reset();
  if (silent) openSilentGap(mBase);
  return true;
}

void LogParser::process(Rest rest, Parsed& out) {
  if (mHeaderRead || readHeader(rest, out)) {
    while ((rest == Rest::None || !out.isFull()) &&
           (mGap ? search(rest, out) : readRecord(rest, out))) {
    }
  }
  dropRead();
}

void LogParser::dropRead() {
  const uint64_t done = std::min(mGap ? mGap->next : mPosition, end());
  mBuffer.erase(mBuffer.begin(), mBuffer.begin() + static_cast<std::ptrdiff_t>(done - mBase));
  mBase = done;
}

// True if parsing continues after the header, or at offset 0 without a header.
bool LogParser::readHeader(Rest rest, Parsed& out) {
  const size_t size = mBuffer.size();
  // Attempts are expensive, so nothing is tried twice because of the split into pieces.
  if (rest == Rest::There && size < kHeaderSize) return false;
  if (size >= kHeaderSize) {
    const ByteView field = view(0, kHeaderSize);
    const bool zero =
        std::all_of(field.data, field.data + kHeaderSize, [](uint8_t byte) { return byte == 0; });
    const std::optional<size_t> key = zero || !mOpener ? std::nullopt : mOpener(field);
    if (key) {
      prefer(*key);
      mPosition = kHeaderSize;
      return mHeaderRead = true;
    }
    const Outcome outcome = zero ? Outcome::Failed : attempt(0);
    // In a file without a header, the first record may be longer than a header.
    if (waits(0, outcome, rest)) return false;
    if (outcome != Outcome::Opened) {
      mHeaderRead = true;
      takeUnreadableHeader(zero, out);
      return true;
    }
  } else if (attempt(0) != Outcome::Opened) {
    if (rest != Rest::None) return false;
    mPosition = end();
    if (size > 0) {
      Finding finding;
      finding.kind = Finding::Kind::HeaderCut;
      finding.end = size;
      out.findings.push_back(finding);
    }
    return mHeaderRead = true;
  }
  Finding finding;
  finding.kind = Finding::Kind::NoHeader;
  finding.origin = mKeys->origin(mRecent.front());
  out.findings.push_back(finding);
  return mHeaderRead = true;
}

// The records after such a header may have the session key of another file. If not, nothing more is
// reported.
void LogParser::takeUnreadableHeader(bool zero, Parsed& out) {
  Finding finding;
  finding.kind = zero ? Finding::Kind::HeaderZero : Finding::Kind::HeaderUnreadable;
  finding.end = kHeaderSize;
  out.findings.push_back(finding);
  openSilentGap(zero ? kHeaderSize : 1);
}

void LogParser::openSilentGap(uint64_t first) {
  Gap gap;
  gap.silent = true;
  gap.declared = kHeaderSize;
  gap.first = first;
  gap.next = first;
  mGap = gap;
}

uint64_t LogParser::sizeAt(uint64_t at) const {
  return kLengthSize + readLength(view(at, kLengthSize).data);
}

LogParser::Outcome LogParser::attempt(uint64_t at) {
  if (end() - at < kLengthSize) return Outcome::Short;
  const uint64_t size = sizeAt(at);
  const size_t sealed = static_cast<size_t>(size - kLengthSize);
  if (sealed < kSealSize) return Outcome::WrongLength;
  if (end() - at < size) return Outcome::Short;
  uint64_t& budget = sealed > kLongestSeal ? mLongBudget : mBudget;
  if (sealed > kLongestSeal && budget == 0) return Outcome::Failed;
  const ByteView bytes = view(at + kLengthSize, sealed);
  size_t tried = 0;
  const auto mayTry = [&tried, &budget] { return tried++ < kFreeTrials || budget > 0; };
  for (size_t i = 0; i < mRecent.size() && mayTry(); ++i) {
    if (opens(mRecent[i], bytes, budget)) return Outcome::Opened;
  }
  for (size_t key = 0; key < knownKeys(); ++key) {
    if (std::find(mRecent.begin(), mRecent.end(), key) != mRecent.end()) continue;
    if (!mayTry()) break;
    if (opens(key, bytes, budget)) return Outcome::Opened;
  }
  return Outcome::Failed;
}

bool LogParser::opens(size_t key, ByteView sealed, uint64_t& budget) {
  if (mKeys->opens(key, sealed, mText)) {
    prefer(key);
    return true;
  }
  budget -= std::min<uint64_t>(budget, kLengthSize + sealed.size + kAttemptCost);
  return false;
}

void LogParser::prefer(size_t key) {
  const auto place = std::find(mRecent.begin(), mRecent.end(), key);
  if (place == mRecent.end()) {
    mRecent.insert(mRecent.begin(), key);
  } else {
    std::rotate(mRecent.begin(), place, place + 1);
  }
}

void LogParser::emit(uint64_t at, Parsed& out) {
  mPosition = at + sizeAt(at);
  out.size += sizeof(Record) + mText.size();
  // A copy, because the text has the capacity of the longest attempt.
  out.records.push_back({at, mText});
}

bool LogParser::readRecord(Rest rest, Parsed& out) {
  const uint64_t at = mPosition;
  if (at == end()) return false;
  const Outcome outcome = attempt(at);
  if (outcome == Outcome::Opened) {
    emit(at, out);
    return true;
  }
  if (waits(at, outcome, rest)) return false;
  openGap(outcome);
  return true;
}

void LogParser::openGap(Outcome fault) {
  Gap gap;
  gap.start = mPosition;
  gap.first = gap.start;
  gap.next = gap.start;
  gap.declared = gap.start;
  gap.fault = fault;
  gap.length = end() - gap.start < kLengthSize ? 0 : sizeAt(gap.start) - kLengthSize;
  mGap = gap;
}

bool LogParser::isPlausible(uint64_t at) const {
  if (end() - at < kLengthSize) return true;
  const uint64_t size = sizeAt(at);
  return size >= kLengthSize + kSealSize && size <= kLengthSize + kLongestSeal;
}

// Whether more bytes are needed before a decision about this place. At the current end of the file,
// a length that the library never writes does not delay what follows.
bool LogParser::waits(uint64_t at, Outcome outcome, Rest rest) const {
  if (outcome != Outcome::Short || rest == Rest::None) return false;
  return rest == Rest::There || isPlausible(at);
}

bool LogParser::mayBeHeader(uint64_t at) const {
  return mOpener && mHeaderAttempts > 0 && at == mGap->declared && at != mGap->noHeader;
}

bool LogParser::takeHeader(uint64_t at) {
  if (!mayBeHeader(at) || end() - at < kHeaderSize) return false;
  --mHeaderAttempts;
  mGap->noHeader = at;
  const std::optional<size_t> key = mOpener(view(at, kHeaderSize));
  if (key) prefer(*key);
  return key.has_value();
}

// Tries every place at which a record can begin, because the damaged part can be the length of the
// failed record; following that length could skip good records. True if parsing continues; false if
// there is no more data now.
bool LogParser::search(Rest rest, Parsed& out) {
  uint64_t incomplete = kNowhere;  // the first place that more bytes could complete
  while (mGap->next < end()) {
    const uint64_t at = mGap->next;
    if (at == mGap->declared || (mBudget > 0 && isPlausible(at))) {
      if (rest == Rest::There && mayBeHeader(at) && end() - at < kHeaderSize) return false;
      const Outcome outcome = attempt(at);
      if (outcome == Outcome::Opened) {
        closeGap(at, true, out);
        emit(at, out);
        return true;
      }
      if (takeHeader(at)) {
        closeGap(at, true, out);
        Finding finding;
        finding.kind = Finding::Kind::SecondHeader;
        finding.offset = at;
        finding.end = at + kHeaderSize;
        out.findings.push_back(finding);
        mPosition = finding.end;
        return true;
      }
      // At `declared` a record can have any length.
      const bool partOfRecord =
          outcome == Outcome::Short && (at == mGap->declared || isPlausible(at));
      if (rest != Rest::None && (partOfRecord || mayBeHeader(at))) {
        if (rest == Rest::There) return false;
        incomplete = std::min(incomplete, at);
        // It may not be a record, and good records may follow.
        ++mGap->next;
        continue;
      }
    }
    if (!step(rest == Rest::None)) break;
  }
  if (rest != Rest::None) {
    mGap->next = std::min(mGap->next, incomplete);
    return false;
  }
  closeGap(end(), false, out);
  mPosition = end();
  return false;
}

// Keeps track of the places to which the lengths lead.
void LogParser::followLength(bool final) {
  Gap& gap = *mGap;
  const uint64_t left = end() - gap.declared;
  const uint64_t size = left < kLengthSize ? 0 : sizeAt(gap.declared);
  const bool lacksEnd = final && size > left;
  // A length that the library never writes does not prove a cut-off record.
  if (left < kLengthSize || (lacksEnd && isPlausible(gap.declared))) {
    gap.cut = gap.declared;
    gap.cutSize = size;
    gap.declared = kNowhere;
  } else if (lacksEnd || size < kLengthSize + kSealSize) {
    gap.declared = kNowhere;
  } else {
    gap.declared += size;
    ++gap.records;
  }
}

// Advances the search by a byte, or by a record if the budget is used up. False if it cannot
// advance.
bool LogParser::step(bool final) {
  Gap& gap = *mGap;
  if (gap.next == gap.declared) followLength(final);
  if (mBudget > 0 && hasKeys()) {
    ++gap.next;
    return true;
  }
  gap.gaveUp = true;
  if (gap.declared < gap.next) return false;  // the record there is incomplete
  gap.next = std::min(gap.declared, end());
  return gap.declared != kNowhere;
}

void LogParser::closeGap(uint64_t at, bool resumed, Parsed& out) {
  // The search skipped places that waited for more bytes and did not follow their lengths.
  while (resumed && mGap->declared < at) followLength(false);
  const Gap gap = *std::exchange(mGap, std::nullopt);
  if (at == gap.start) return;  // another record or a header is here now
  Finding finding;
  finding.offset = gap.start;
  finding.end = at;
  finding.resumed = resumed;
  finding.gaveUp = gap.gaveUp;
  if (gap.silent) {
    if (!resumed || at == kHeaderSize) return;
    finding.kind = Finding::Kind::ReadableAgain;
    finding.offset = at;
    out.findings.push_back(finding);
    return;
  }
  const bool cut = gap.cut != 0 && !resumed;
  if (gap.fault == Outcome::Failed) {
    const bool whole = gap.records > 0 && (cut || gap.declared == at);
    finding.kind = whole ? Finding::Kind::FailedRecords : Finding::Kind::FailedBytes;
    finding.value = gap.records;
    if (cut) finding.end = gap.cut;
    if (!whole) finding.end = at;
    out.findings.push_back(finding);
    if (!whole || !cut) return;
  } else if (!cut || gap.cut != gap.start) {
    finding.kind = Finding::Kind::WrongLength;
    finding.value = gap.length;
    out.findings.push_back(finding);
    return;
  }
  finding.kind = Finding::Kind::CutRecord;
  finding.offset = gap.cut;
  finding.end = at;
  finding.value = gap.cutSize;
  out.findings.push_back(finding);
}

}  // namespace orblog
