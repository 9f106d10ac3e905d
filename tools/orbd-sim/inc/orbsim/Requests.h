// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orbsim/Frame.h"

namespace orbsim {

// What a client asked for, in the words that scenarios use.
struct RequestWords {
  uint32_t sdkType = 0;  // 0: no blob of a service
  std::string request;   // "enable", "set-criteria"; "unknown" for what has no word
  std::map<std::string, std::string> fields;
};
RequestWords wordsOf(const Frame& frame);

// The service's number by its word, lce, lle or lli; 0 for any other.
uint32_t serviceNamed(const std::string& word);
// The words for requests of a service, for a message.
std::vector<std::string> requestWords(uint32_t sdkType);

// A request that is not carried out: the answer to it says why. `with` is a status of the service's
// messages (NOT_SUPPORTED, SERVICE_DOWN), and for the criteria of LCE also INVALID_ARGUMENTS or
// TYPE_MISMATCH.
struct Refusal {
  uint32_t sdkType = 0;
  std::string request;  // empty: any
  std::string with;
  uint32_t times = 1;
};
// Empty, or why there is no such refusal.
std::string wrongWith(const Refusal& refusal);
// The blob that answers the request so.
Blob refusalOf(const Frame& frame, const Refusal& refusal);

// A status of the service; empty when there is none with that name.
Blob statusMessage(uint32_t sdkType, const std::string& word);
// A message that the service sends by itself, of words: "rate=5000". With status=WORD it is a
// status, else a report of LCE or LLE or a phase of LLI. Empty with a reason when it cannot be
// made.
Blob indicationOf(uint32_t sdkType, const std::map<std::string, std::string>& fields,
                  std::string& error);

}  // namespace orbsim
