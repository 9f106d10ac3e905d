// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "Functions.h"

namespace torture {

// The kinds of callbacks, service after service.
enum Kind {
  kLceStatus,
  kLceStatusV2,
  kLceCriteria,
  kLceLast,
  kLceReport,
  kLleStatus,
  kLleStatusV2,
  kLleLast,
  kLleReport,
  kLliStatus,
  kLliStatusV2,
  kLliInterrupt,
  kKinds
};
inline Service serviceOf(Kind kind) {
  if (kind <= kLceReport) return kLce;
  return kind <= kLleReport ? kLle : kLli;
}
inline const char* nameOf(Kind kind) {
  constexpr const char* kNames[] = {"LceStatus", "LceStatusV2", "LceCriteria", "LceLast",
                                    "LceReport", "LleStatus",   "LleStatusV2", "LleLast",
                                    "LleReport", "LliStatus",   "LliStatusV2", "LliInterrupt"};
  return kNames[kind];
}

}  // namespace torture
