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

// A record's text and where in the file it stands.
struct Record {
  uint64_t offset = 0;
  std::string text;
};

struct Parsed {
  std::vector<Record> records;
  std::vector<Finding> findings;
  size_t size = 0;         // what the records take
  size_t room = SIZE_MAX;  // parsing pauses when they take so much

  bool isFull() const { return size >= room; }
};

// Takes the session key out of a header of 512 bytes, adds it to the ring and gives its number.
using HeaderOpener = std::function<std::optional<size_t>(ByteView header)>;

// Turns the bytes of one encrypted log file into records and findings. Does no input or output: it
// is fed what there is, in any pieces, and told whether there is more and when no more will come.
// Whatever the bytes are, its time is bounded: looking for records behind a damaged place, and for
// the key of a record, has a budget, and when that is used up only the lengths are followed and the
// latest keys tried. So is its memory: while there is more it keeps less than the largest record
// beside what it was fed last. A copy gives the same records from the same bytes once more,
// whatever the pieces. Not for two threads at a time; the ring must outlive it.
class LogParser {
 public:
  LogParser(KeyRing& keys, HeaderOpener opener);

  // Appends to `out` what the bytes complete. A record that is not all there waits for the rest:
  // whatever its length when the file has `more` now, so that where a piece ends makes no
  // difference; at the file's present end such records as a writer makes, and behind one that is
  // longer good ones are looked for meanwhile. False when `out` is full before all is dealt with.
  bool feed(ByteView bytes, Parsed& out, bool more = false);
  // No more bytes will come: what waited is reported, whether there is room or not. Call it once.
  void finish(Parsed& out);
  // The offset behind the last byte that was fed, up to the next restart().
  uint64_t seen() const { return mBase + mBuffer.size(); }

  // Forgets what waits for its rest; feeding goes on at the offset that is returned. A writer takes
  // back what does not fit on the disk, so those bytes may be others by now.
  uint64_t restart();
  // Nothing but zeros stands from where feeding goes on to `end`, as in a hole of a sparse file.
  // True when the search for records has passed over them; feeding goes on behind.
  bool passZeros(uint64_t end);
  // The file has this size now. False when bytes are gone that have been dealt with; the rest goes
  // on with restart().
  bool goBack(uint64_t size);

  // How many more bytes of records may be tried in vain, counted per key.
  void setSearchBudget(uint64_t bytes);
  void addSearchBudget(uint64_t bytes);
  // From now on no key is tried but those that are on the ring and those that this file's headers
  // give: a copy is to find what the first one found, which knew no others.
  void knowNoMoreKeys() { mKeyLimit = mKeys->size(); }

 private:
  enum class Outcome { Opened, Failed, Short, WrongLength };
  // What comes behind the bytes so far: more that is there now, nothing yet, or nothing ever.
  enum class Rest { There, Later, None };
  // A stretch that could not be read, from the first fault to the next record that opens.
  struct Gap {
    uint64_t start = 0;
    Outcome fault = Outcome::Failed;  // at `start`
    uint64_t length = 0;              // the length that stands at `start`
    uint64_t first = 0;               // the search began here
    uint64_t next = 0;                // and has come this far
    uint64_t declared = 0;            // where the lengths say that the next record begins
    uint64_t records = 0;             // whole records from `start` to `declared`
    uint64_t cut = 0;                 // where the lengths lead to a record that lacks its end
    uint64_t cutSize = 0;             // the size it should have; 0 when not even that is there
    uint64_t noHeader = UINT64_MAX;   // no header begins here, that was tried
    bool silent = false;              // the header's finding has said it
    bool gaveUp = false;
  };

  uint64_t end() const { return mBase + mBuffer.size(); }
  ByteView view(uint64_t from, size_t size) const {
    return {mBuffer.data() + (from - mBase), size};
  }
  uint64_t sizeAt(uint64_t at) const;  // a record's size by its length field

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
  std::vector<uint8_t> mBuffer;  // what is not dealt with yet
  uint64_t mBase = 0;            // the offset of the buffer's first byte
  uint64_t mPosition = 0;        // the offset at which reading goes on
  bool mHeaderRead = false;
  std::vector<size_t> mRecent;  // keys that opened something here, the last one first
  size_t mKeyLimit = SIZE_MAX;  // no key from this number on is known
  std::optional<Gap> mGap;
  std::string mText;  // of the record that the last attempt opened
  uint64_t mBudget;
  uint64_t mLongBudget;  // for records longer than a writer makes them
  int mHeaderAttempts;
};

}  // namespace orblog
