// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstring>

#include "Functions.h"
#include "process_end.h"

// What programs do with all services when only the number of callbacks matters.
namespace torture {

// Callbacks that count, see process_end::Traffic.
inline void count(Slot slot, int) { process_end::Traffic::get().add(slot); }
inline const Callbacks& counting() { return callbacksTo<count>(); }

// Enables all services; true if no call was refused.
inline bool enableEach() {
  bool good = true;
  for (const Service service : {kLce, kLle, kLli}) good = enable(counting(), service) == 1 && good;
  return good;
}
// Disables all services; true if no call was refused.
inline bool disableEach() {
  bool good = true;
  for (const Service service : {kLce, kLle, kLli}) good = disable(service) == 1 && good;
  return good;
}
// Makes every request for reports; true if none was refused.
inline bool askForReports() {
  bool good = true;
  for (const Function& function : functions()) {
    if (strstr(function.name, "Report") != nullptr) good = function.call(counting()) >= 0 && good;
  }
  return good;
}

}  // namespace torture
