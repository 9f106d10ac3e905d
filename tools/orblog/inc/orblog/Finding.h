// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstdint>
#include <string>

namespace orblog {

// A fault or other information about a place in a log file.
struct Finding {
  enum class Kind {
    HeaderZero,        // the session key could not be wrapped when the file was made
    HeaderUnreadable,  // the private key gets no session key from the header
    HeaderCut,         // the file is shorter than a header
    NoHeader,          // records begin at the first byte
    SecondHeader,      // a header in place of a record
    FailedRecords,     // whole records that no known key decrypts
    FailedBytes,       // the same, and no record follows at their lengths
    WrongLength,       // an impossible record length
    CutRecord,         // the last record is cut off
    ReadableAgain,     // after a fault that was already reported
  };
  // The reason for the missing session key, as far as the bytes and the private key show it.
  enum class Cause {
    Unknown,
    Text,                  // a text file, not a log
    NoLog,                 // not a log, or damaged in its whole start
    OtherSize,             // made for a private key of another size
    Damaged,               // the header is damaged: another file has the session key of the records
    Either,                // the header is damaged, or made for another private key
    EitherBesideReadable,  // the same, and the private key fits other files
  };
  Kind kind = Kind::HeaderZero;
  Cause cause = Cause::Unknown;  // HeaderUnreadable, HeaderCut
  uint64_t offset = 0;           // where the place begins
  uint64_t end = 0;              // the first byte after the place
  uint64_t value = 0;            // number of records, length, or expected bytes
  bool resumed = false;          // records can be read again from `end` on
  bool gaveUp = false;           // the search ended before the end of the file
  int headerBits = 0;            // OtherSize: maximum size of the key of the header
  int keyBits = 0;               // OtherSize: of the private key
  std::string origin;            // NoHeader, Damaged: the file whose session key fits

  // False if it is only information and no data is lost.
  bool isProblem() const;
  // One sentence without the file name; it begins with the offset.
  std::string text() const;
};

}  // namespace orblog
