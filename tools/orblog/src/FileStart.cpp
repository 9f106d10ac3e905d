// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/FileStart.h"

#include <algorithm>
#include <optional>
#include <string>

#include "orblog/Format.h"

namespace orblog {
namespace {

// Whether lengths that the library writes lead from record to record as far as visible. A random
// length is plausible once in a hundred cases.
bool holdsRecords(ByteView start) {
  size_t at = kHeaderSize;
  while (at + kLengthSize <= start.size) {
    const size_t length = readLength(start.data + at);
    if (length < kSealSize || length > kLongestSeal) return false;
    at += kLengthSize + length;
  }
  return true;
}

// The number of the known session key that decrypts the first record after the header.
std::optional<size_t> keyOfFirstRecord(ByteView start, const KeyRing& ring) {
  const size_t sealed = readLength(start.data + kHeaderSize);
  const ByteView rest = start.from(kHeaderSize + kLengthSize);
  std::string text;
  for (size_t i = 0; i < ring.size() && sealed <= rest.size; ++i) {
    if (ring.opens(i, rest.first(sealed), text)) return i;
  }
  return std::nullopt;
}

void explain(Finding& finding, ByteView start, const PrivateKey& key, const KeyRing& ring) {
  using Cause = Finding::Cause;
  const size_t wrapped = wrappedSize(start.first(kHeaderSize));
  // A wrapped key rarely ends with so many zeros by chance, and key sizes are multiples of this
  // number of bytes.
  constexpr size_t kStep = 8;
  const auto cause = [&] {
    if (isText(start)) return Cause::Text;
    if (start.size < kHeaderSize + kLengthSize) return Cause::Unknown;
    if (!holdsRecords(start)) return Cause::NoLog;
    // All files of a run have the same header, so the header of another file shows what this one
    // contained.
    if (const std::optional<size_t> known = keyOfFirstRecord(start, ring)) {
      finding.origin = ring.origin(*known);
      return Cause::Damaged;
    }
    if (wrapped > key.size() || wrapped + kStep < key.size()) return Cause::OtherSize;
    return ring.size() > 0 ? Cause::EitherBesideReadable : Cause::Either;
  };
  finding.cause = cause();
  finding.headerBits = static_cast<int>((wrapped + kStep - 1) / kStep * kStep * 8);
  finding.keyBits = key.bits();
}

}  // namespace

bool isText(ByteView start) {
  return start.size > 0 && std::all_of(start.data, start.data + start.size, [](uint8_t byte) {
           const bool isCharacter = byte >= 0x20 && byte != 0x7F && byte != 0xC0 && byte != 0xC1;
           return (isCharacter && byte < 0xF5) || (byte >= '\t' && byte <= '\r') || byte == 0x1B;
         });
}

size_t wrappedSize(ByteView header) {
  size_t used = header.size;
  while (used > 0 && header.data[used - 1] == 0) --used;
  return used;
}

void explainHeaders(std::vector<Finding>& findings, ByteView start, const PrivateKey& key,
                    const KeyRing& ring) {
  for (Finding& finding : findings) {
    if (finding.kind == Finding::Kind::HeaderUnreadable) explain(finding, start, key, ring);
    if (finding.kind == Finding::Kind::HeaderCut && isText(start))
      finding.cause = Finding::Cause::Text;
  }
}

}  // namespace orblog
