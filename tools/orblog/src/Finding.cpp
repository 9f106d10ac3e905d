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

// The reason why a header gives no session key.
std::string causeText(const Finding& finding) {
  switch (finding.cause) {
    case Finding::Cause::Text:
      return "a text file, not an encrypted log file";
    case Finding::Cause::NoLog:
      return "not an encrypted log file, or damaged from its start: it begins neither with a "
             "header nor with a record";
    case Finding::Cause::OtherSize:
      return "made for another private key, of up to " + number(finding.headerBits) +
             " bits; this one has " + number(finding.keyBits);
    case Finding::Cause::Damaged:
      return "the header is damaged and gives no session key; the records after it have the "
             "session key of " +
             finding.origin;
    case Finding::Cause::Either:
      return "the header gives no session key with this private key: the header is damaged, or the "
             "file was written for another key; the records after it are correct";
    case Finding::Cause::EitherBesideReadable:
      return "the header gives no session key with this private key, which fits other given files: "
             "the header is damaged, or made for another key";
    case Finding::Cause::Unknown:
      break;
  }
  return "the header gives no session key with this private key: another key, a damaged header, or "
         "not an encrypted log file";
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
          "for example because the public key is too small; nobody can read the records";
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
      what = "another header begins here; continuing with its session key";
      break;
    case Kind::FailedRecords:
      what = value == 1 ? "a record of " + present + " fails authentication"
                        : number(value) + " records (" + present + ") fail authentication";
      what += after;
      break;
    case Kind::FailedBytes:
      what = "a record fails authentication and no record follows at its length (" + present + ")" +
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
