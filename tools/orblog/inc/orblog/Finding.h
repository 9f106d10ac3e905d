// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>

namespace orblog {

// Something about a log file that its reader should know, and where it is.
struct Finding {
  enum class Kind {
    HeaderZero,        // the session key could not be wrapped when the file was made
    HeaderUnreadable,  // no session key comes out of the header with the private key
    HeaderCut,         // less than a header
    NoHeader,          // records from the first byte on
    SecondHeader,      // a header where a record should be
    FailedRecords,     // whole records that no known key opens
    FailedBytes,       // the same, and their lengths lead nowhere
    WrongLength,       // no record can have the length that stands here
    CutRecord,         // the last record lacks its end
    ReadableAgain,     // after a fault that has been reported already
  };
  // Why there is no session key, as far as the bytes and the private key tell.
  enum class Cause {
    Unknown,
    Text,                  // no log at all
    NoLog,                 // no log either, or damaged on the whole of its start
    OtherSize,             // made for a private key of another size
    Damaged,               // the header: another file has the session key of what is behind it
    Either,                // the header is damaged, or made for another private key
    EitherBesideReadable,  // the same, and the private key opens other files
  };
  Kind kind = Kind::HeaderZero;
  Cause cause = Cause::Unknown;  // HeaderUnreadable, HeaderCut
  uint64_t offset = 0;           // where it begins
  uint64_t end = 0;              // the first byte after it
  uint64_t value = 0;    // the number of records, the length, or the bytes that there should be
  bool resumed = false;  // records are read again from `end` on
  bool gaveUp = false;   // the search for more ended before the end of the file
  int headerBits = 0;    // OtherSize: of the key that the header is made for, at most
  int keyBits = 0;       // OtherSize: of the private key
  std::string origin;    // NoHeader, Damaged: the file whose session key fits

  // False for what only explains itself: nothing was lost by it.
  bool isProblem() const;
  // One sentence without the file's name, beginning with the offset.
  std::string text() const;
};

}  // namespace orblog
