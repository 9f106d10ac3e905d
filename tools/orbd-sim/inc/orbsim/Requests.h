// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "orbsim/Frame.h"

namespace orbsim {

// A client's request, in the words of scenarios.
struct RequestWords {
  uint32_t sdkType = 0;  // 0: not a blob of a service
  std::string request;   // "enable", "set-criteria"; "unknown" for a request without a word
  std::map<std::string, std::string> fields;
};
RequestWords wordsOf(const Frame& frame);

// The number of the service with this word (lce, lle or lli), or 0.
uint32_t serviceNamed(const std::string& word);
// The words for the requests of a service, for a message.
std::vector<std::string> requestWords(uint32_t sdkType);

// A request to refuse, with the status for its answer. `with` is a status of the service's messages
// (NOT_SUPPORTED, SERVICE_DOWN), and for the criteria of LCE also INVALID_ARGUMENTS or
// TYPE_MISMATCH.
struct Refusal {
  uint32_t sdkType = 0;
  std::string request;  // empty: any
  std::string with;
  uint32_t times = 1;
};
// Empty, or the reason why the refusal is wrong.
std::string wrongWith(const Refusal& refusal);
// The blob of the refusing answer.
Blob refusalOf(const Frame& frame, const Refusal& refusal);

// A status of the service by its name; empty if there is none.
Blob statusMessage(uint32_t sdkType, const std::string& word);
// A message that the service sends without a request, made of words: "rate=5000". With status=WORD
// it is a status, otherwise a report of LCE or LLE or a phase of LLI. Empty with a reason on
// failure.
Blob indicationOf(uint32_t sdkType, const std::map<std::string, std::string>& fields,
                  std::string& error);

}  // namespace orbsim
