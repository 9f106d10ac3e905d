// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "orblog/ByteView.h"
#include "orblog/Finding.h"
#include "orblog/KeyRing.h"

namespace orblog {

// The text of a record and its place in the file.
struct Record {
  uint64_t offset = 0;
  std::string text;
};

struct Parsed {
  std::vector<Record> records;
  std::vector<Finding> findings;
  size_t size = 0;         // memory that the records use
  size_t room = SIZE_MAX;  // parsing pauses when the records use this much

  bool isFull() const { return size >= room; }
};

// Gets the session key from a header of 512 bytes, adds it to the ring and returns its number.
using HeaderOpener = std::function<std::optional<size_t>(ByteView header)>;

// Converts the bytes of one encrypted log file to records and findings. It does no input or output:
// the caller passes the bytes in pieces of any size, says whether there is more data now, and says
// when the file ends. The time is bounded for all inputs: the search for records after a damaged
// place, and for the key of a record, has a budget. When the budget is used up, only the lengths
// are followed and only the latest keys are tried. The memory is also bounded: while there is more
// data, it keeps less than the largest record in addition to the last piece. A copy gives the same
// records for the same bytes, with pieces of any size. Not thread-safe; the ring must live longer.
class LogParser {
 public:
  LogParser(KeyRing& keys, HeaderOpener opener);

  // Appends the records and findings of the bytes to `out`. An incomplete record waits for the
  // rest. If the file has `more` data now, this applies to all lengths, so that the split into
  // pieces makes no difference. At the current end of the file, only records of a normal length
  // wait; after a longer one the search continues. False if `out` is full before all bytes are
  // parsed.
  bool feed(ByteView bytes, Parsed& out, bool more = false);
  // The file ends here: incomplete records are reported, even if `out` is full. Call it once.
  void finish(Parsed& out);
  // The offset after the last byte that was passed, until the next restart().
  uint64_t seen() const { return mBase + mBuffer.size(); }

  // Forgets incomplete records. The caller continues at the returned offset. A writer removes data
  // that does not fit on the disk, so those bytes can be different now.
  uint64_t restart();
  // There are only zeros up to `end`, as in a hole of a sparse file. True if the search has skipped
  // them; the caller continues after them.
  bool passZeros(uint64_t end);
  // The file has this size now. False if bytes that were already parsed are gone; the caller
  // continues with restart().
  bool goBack(uint64_t size);

  // The number of record bytes that may be tried without success, counted for each key.
  void setSearchBudget(uint64_t bytes);
  void addSearchBudget(uint64_t bytes);
  // From now on, only keys that are on the ring now and keys of this file's headers are tried: a
  // copy must get the same results as the original, which did not know later keys.
  void knowNoMoreKeys() { mKeyLimit = mKeys->size(); }

 private:
  enum class Outcome { Opened, Failed, Short, WrongLength };
  // What follows the bytes so far: more data now, nothing yet, or the end of the file.
  enum class Rest { There, Later, None };
  // A part that cannot be read, from the first fault to the next record that can be decrypted.
  struct Gap {
    uint64_t start = 0;
    Outcome fault = Outcome::Failed;  // at `start`
    uint64_t length = 0;              // the length field at `start`
    uint64_t first = 0;               // where the search began
    uint64_t next = 0;                // where the search is now
    uint64_t declared = 0;            // where the next record begins according to the lengths
    uint64_t records = 0;             // whole records from `start` to `declared`
    uint64_t cut = 0;                 // where a cut-off record begins according to the lengths
    uint64_t cutSize = 0;             // its full size; 0 if even the length is cut off
    uint64_t noHeader = UINT64_MAX;   // a place that was already tried as a header
    bool silent = false;              // the finding about the header already reports it
    bool gaveUp = false;
  };

  uint64_t end() const { return mBase + mBuffer.size(); }
  ByteView view(uint64_t from, size_t size) const {
    return {mBuffer.data() + (from - mBase), size};
  }
  uint64_t sizeAt(uint64_t at) const;  // size of a record by its length field

  void process(Rest rest, Parsed& out);
  bool readHeader(Rest rest, Parsed& out);
  void takeUnreadableHeader(bool zero, Parsed& out);
  bool readRecord(Rest rest, Parsed& out);
  bool search(Rest rest, Parsed& out);
  void followLength(bool final);
  bool step(bool final);
  void openGap(Outcome fault);
  void openSilentGap(uint64_t first);
  void closeGap(uint64_t at, bool resumed, Parsed& out);
  Outcome attempt(uint64_t at);
  size_t knownKeys() const { return mKeyLimit < mKeys->size() ? mKeyLimit : mKeys->size(); }
  bool hasKeys() const { return !mRecent.empty() || knownKeys() > 0; }
  bool opens(size_t key, ByteView sealed, uint64_t& budget);
  void prefer(size_t key);
  bool isPlausible(uint64_t at) const;
  bool waits(uint64_t at, Outcome outcome, Rest rest) const;
  bool mayBeHeader(uint64_t at) const;
  bool takeHeader(uint64_t at);
  void emit(uint64_t at, Parsed& out);
  void dropRead();

  KeyRing* mKeys;
  HeaderOpener mOpener;
  std::vector<uint8_t> mBuffer;  // bytes not yet parsed
  uint64_t mBase = 0;            // the offset of the buffer's first byte
  uint64_t mPosition = 0;        // the offset where parsing continues
  bool mHeaderRead = false;
  // Keys of this file's headers, and keys that decrypted records here, the latest first.
  std::vector<size_t> mRecent;
  size_t mKeyLimit =
      SIZE_MAX;  // of other keys, those with this number or a higher one are not used
  std::optional<Gap> mGap;
  std::string mText;  // of the last decrypted record
  uint64_t mBudget;
  uint64_t mLongBudget;  // for records longer than the library writes
  int mHeaderAttempts;
};

}  // namespace orblog
