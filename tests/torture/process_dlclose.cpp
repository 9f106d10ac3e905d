// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Loads the library that its argument names, enables all services, closes the library while traffic
// is under way, and continues for a while.
#include <dlfcn.h>
#include <orb/sdl.h>

#include <cstdlib>

#include "process_end.h"

using process_end::Traffic;

namespace {

template <class Function>
Function* find(void* library, const char* name) {
  void* const symbol = dlsym(library, name);
  if (symbol == nullptr) _exit(3);
  return reinterpret_cast<Function*>(symbol);
}

void onStatus(status_e) { Traffic::get().add(0); }
void onLce(LceEstimationReportStatus, LceEstimationReport) { Traffic::get().add(0); }
void onLle(int32_t, const LleEstimationReport*) { Traffic::get().add(0); }
void onLli(LliHandoffIndType, LliPreHandoffState, const LliInterruptInfo*) {
  Traffic::get().add(0);
}

}  // namespace

int main(int argc, char** argv) {
  alarm(process_end::kAlarmSeconds);
  if (argc < 2) return 2;
  void* const library = dlopen(argv[1], RTLD_NOW);
  if (library == nullptr) return 3;
  find<decltype(orb_lce_enable)>(library, "orb_lce_enable")(onStatus);
  find<decltype(orb_lle_enable)>(library, "orb_lle_enable")(onStatus);
  find<decltype(orb_lli_enable)>(library, "orb_lli_enable")(onStatus);
  find<decltype(lceRegEstimationReports)>(library, "lceRegEstimationReports")(onLce);
  find<decltype(lcePerformReportingAction)>(
      library, "lcePerformReportingAction")(LCE_REPORTING_ACTION_START);
  find<decltype(lleRegEstimationReports)>(library, "lleRegEstimationReports")(onLle);
  find<decltype(lleSetReportingCriteria)>(library, "lleSetReportingCriteria")(1);
  find<decltype(lliRegLinkInterruptInd)>(library, "lliRegLinkInterruptInd")(onLli);
  process_end::awaitTraffic();
  if (dlclose(library) != 0) return 4;
  process_end::awaitTraffic();
  return process_end::kExpected;
}
