// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/Finding.h"

#include "orblog/Format.h"

namespace orblog {
namespace {

template <class Number>
std::string number(Number value) {
  return std::to_string(value);
}

// Why no session key comes out of a header.
std::string causeText(const Finding& finding) {
  switch (finding.cause) {
    case Finding::Cause::Text:
      return "a text file, not an encrypted log file";
    case Finding::Cause::NoLog:
      return "not an encrypted log file, or one that is damaged from its start on: neither a "
             "header "
             "nor records begin here";
    case Finding::Cause::OtherSize:
      return "made for another private key, of up to " + number(finding.headerBits) +
             " bits; this one has " + number(finding.keyBits);
    case Finding::Cause::Damaged:
      return "the header is damaged: no session key comes out of it, and the records behind it "
             "have "
             "that of " +
             finding.origin;
    case Finding::Cause::Either:
      return "no session key comes out of the header with this private key: either the header is "
             "damaged, or the file was written under another key; the records behind it are in "
             "order";
    case Finding::Cause::EitherBesideReadable:
      return "no session key comes out of the header with this private key, which opens other "
             "files given: the header is damaged, or made for another key";
    case Finding::Cause::Unknown:
      break;
  }
  return "no session key comes out of the header with this private key: another key, a damaged "
         "header, or not an encrypted log file";
}

std::string bytes(uint64_t count) { return number(count) + (count == 1 ? " byte" : " bytes"); }

}  // namespace

bool Finding::isProblem() const {
  return kind != Kind::NoHeader && kind != Kind::SecondHeader && kind != Kind::ReadableAgain;
}

std::string Finding::text() const {
  const std::string present = bytes(end - offset);
  std::string after = "; nothing readable follows";
  if (resumed) {
    after = "; readable again at offset " + number(end);
  } else if (gaveUp) {
    after = "; the search for readable records was given up";
  }
  std::string what;
  switch (kind) {
    case Kind::HeaderZero:
      what =
          "the header is all zeros: the session key could not be wrapped when the file was made, "
          "as with a public key that is too small for it, so nobody can read its records";
      break;
    case Kind::HeaderUnreadable:
      what = causeText(*this);
      break;
    case Kind::HeaderCut:
      what = "the header is cut off: " + bytes(kHeaderSize) + " expected, " + number(end - offset) +
             " present";
      if (cause == Cause::Text) what = causeText(*this);
      break;
    case Kind::NoHeader:
      what =
          "no header, the file was removed while it was written and made anew; read with the "
          "session key of " +
          origin;
      break;
    case Kind::SecondHeader:
      what = "another header begins here; reading on with its session key";
      break;
    case Kind::FailedRecords:
      what = value == 1 ? "a record of " + present + " fails authentication"
                        : number(value) + " records (" + present + ") fail authentication";
      what += after;
      break;
    case Kind::FailedBytes:
      what = "a record fails authentication and its length leads to no other (" + present + ")" +
             after;
      break;
    case Kind::WrongLength:
      what = "record length " + number(value) + " cannot be right (" + present + ")" + after;
      break;
    case Kind::CutRecord:
      what = "the last record is cut off: ";
      what += value == 0 ? present + " present"
                         : bytes(value) + " expected, " + number(end - offset) + " present";
      break;
    case Kind::ReadableAgain:
      what = "readable from here on";
      break;
  }
  return "offset " + number(offset) + ": " + what;
}

}  // namespace orblog
