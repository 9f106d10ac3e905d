// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Application.h"

#include <orb/sdl.h>

#include "Check.h"
#include "Watchdog.h"

namespace {

enum : size_t { kLce, kLle, kLli };

void begin(size_t service) { Application::get().inCallback(service); }

template <size_t Service>
void onStatus(status_e status) {
  FUZZ_CHECK(status >= STATUS_INVALID && status <= STATUS_RESERVED);
  begin(Service);
}
template <size_t Service>
void onStatusV2(status_v2_e status) {
  FUZZ_CHECK(status >= STATUS_V2_SERVICE_DOWN && status <= STATUS_V2_SUCCESS);
  begin(Service);
}
void onCriteria(LceReportingCriteriaStatus status) {
  FUZZ_CHECK(status >= LCE_REPORTING_CRITERIA_STATUS_SUCCESS &&
             status <= LCE_REPORTING_CRITERIA_STATUS_OTHER);
  begin(kLce);
}
void onLceReport(LceEstimationReportStatus status, LceEstimationReport report) {
  FUZZ_CHECK(status >= LCE_ESTIMATION_REPORT_STATUS_SUCCESS &&
             status <= LCE_ESTIMATION_REPORT_STATUS_OTHER);
  FUZZ_CHECK(report.confidenceLevel >= LCE_CONFIDENCE_LEVEL_L0 &&
             report.confidenceLevel <= LCE_CONFIDENCE_LEVEL_L7);
  FUZZ_CHECK(report.linkDirection == LCE_LINK_DIRECTION_UPLINK ||
             report.linkDirection == LCE_LINK_DIRECTION_DOWNLINK);
  begin(kLce);
}
void onLleReport(int32_t result, const LleEstimationReport* report) {
  FUZZ_CHECK(result == 0 || result == 1);
  FUZZ_CHECK(report != nullptr && report->reportInterval <= 1);
  FUZZ_CHECK(report->rat >= SDL_ACCESS_NETWORK_TYPE_NONE &&
             report->rat <= SDL_ACCESS_NETWORK_TYPE_NR5G);
  begin(kLle);
}
void onInterrupt(LliHandoffIndType type, LliPreHandoffState preState,
                 const LliInterruptInfo* info) {
  FUZZ_CHECK(type == LLI_HANDOFF_IND_TYPE_PRE_HANDOFF || type == LLI_HANDOFF_IND_TYPE_HANDOFF);
  FUZZ_CHECK(preState == LLI_PRE_HANDOFF_STATE_ENTRY || preState == LLI_PRE_HANDOFF_STATE_EXIT);
  FUZZ_CHECK(info != nullptr && info->handoffState >= LLI_HANDOFF_STATE_START &&
             info->handoffState <= LLI_HANDOFF_STATE_IMMINENT);
  FUZZ_CHECK(info->sourceRat >= LLI_RAT_NULL_BEARER && info->sourceRat <= LLI_RAT_3GPP2_WLAN);
  FUZZ_CHECK(info->targetRat >= LLI_RAT_NULL_BEARER && info->targetRat <= LLI_RAT_3GPP2_WLAN);
  begin(kLli);
}

constexpr int64_t kInvalid = -2;
constexpr int64_t kNotEnabled = -5;

void expectResult(int64_t result, int64_t wanted) {
  FUZZ_CHECK(result == wanted || result == kNotEnabled);
}

void requestLce(uint8_t detail) {
  LceReportingCriteria criteria = {};
  criteria.firstListCount = static_cast<uint8_t>(detail >> 3);  // up to 31, and 20 are allowed
  criteria.criteriaValue1 = detail;
  const bool valid = criteria.firstListCount <= LCE_REPORTING_CRITERIA_LIST_MAX;
  int64_t id = 0;
  switch (detail % 8) {
    case 0:
    case 1:
      id = lceSetReportingCriteria(&criteria, onCriteria);
      FUZZ_CHECK(id == kNotEnabled || (valid ? id > 0 && id <= UINT32_MAX : id == kInvalid));
      break;
    case 2:
    case 3:
      expectResult(lceGetLastEstimationReport(onLceReport), 0);
      break;
    case 4:
      expectResult(lcePerformReportingAction(static_cast<LceReportingAction>(detail >> 6)),
                   detail >> 6 == 0 ? kInvalid : 0);
      break;
    case 5:
      expectResult(lceGetLastEstimationReport(nullptr), kInvalid);
      break;
    default:
      expectResult(lceRegEstimationReports(onLceReport), 0);
  }
}

void requestLle(uint8_t detail) {
  switch (detail % 4) {
    case 0:
      expectResult(lleSetReportingCriteria(detail), 0);
      break;
    case 1:
      expectResult(lleGetLastEstimationReport(onLleReport), 0);
      break;
    case 2:
      expectResult(lleGetLastEstimationReport(nullptr), kInvalid);
      break;
    default:
      expectResult(lleRegEstimationReports(onLleReport), 0);
  }
}

void requestLli(uint8_t detail) {
  const bool valid = detail % 4 != 3;
  expectResult(lliRegLinkInterruptInd(valid ? onInterrupt : nullptr), valid ? 0 : kInvalid);
}

// The five kinds of calls that each service has.
struct Api {
  int (*enable)(void (*)(status_e));
  int (*create)(void (*)(status_v2_e));
  int (*disable)();
  int (*destroy)();
  void (*request)(uint8_t detail);
  void (*onStatus)(status_e);
  void (*onStatusV2)(status_v2_e);
};
const Api kApi[Application::kServices] = {
    {orb_lce_enable, createLceClient, orb_lce_disable, destroySdfClient, requestLce, onStatus<kLce>,
     onStatusV2<kLce>},
    {orb_lle_enable, createLleClient, orb_lle_disable, destroyLleClient, requestLle, onStatus<kLle>,
     onStatusV2<kLle>},
    {orb_lli_enable, createLliClient, orb_lli_disable, destroyLliClient, requestLli, onStatus<kLli>,
     onStatusV2<kLli>},
};

}  // namespace

Application& Application::get() {
  static Application* const instance = new Application;
  return *instance;
}

void Application::arm(size_t service, const Action& action) {
  const std::lock_guard<std::mutex> lock(mMutex);
  mServices[service].armed = action;
}

void Application::awaitCallback(size_t service, std::chrono::milliseconds timeout) {
  std::unique_lock<std::mutex> lock(mMutex);
  const size_t& callbacks = mServices[service].callbacks;
  const size_t before = callbacks;
  mChanged.wait_for(lock, timeout, [&] { return callbacks > before; });
}

bool Application::anyEnabled() const {
  for (const Service& service : mServices) {
    if (service.mayCall) return true;
  }
  return false;
}

void Application::inCallback(size_t service) {
  FUZZ_CHECK(mServices[service].mayCall);
  std::optional<Action> action;
  {
    const std::lock_guard<std::mutex> lock(mMutex);
    ++mServices[service].callbacks;
    action.swap(mServices[service].armed);
    if (action) ++mActionsInside;
    mChanged.notify_all();
  }
  if (!action) return;
  perform(*action, true);
  const std::lock_guard<std::mutex> lock(mMutex);
  --mActionsInside;
  mChanged.notify_all();
}

void Application::perform(const Action& action, bool inside) {
  switch (action.verb) {
    case Verb::Enable:
    case Verb::Create:
      open(action);
      break;
    case Verb::Disable:
    case Verb::Destroy:
      close(action, inside);
      break;
    case Verb::Request: {
      const Watchdog::Step step("a request");
      kApi[action.service].request(action.detail);
      break;
    }
  }
}

void Application::open(const Action& action) {
  const Watchdog::Step step(action.verb == Verb::Enable ? "enable" : "create");
  Service& service = mServices[action.service];
  const Api& api = kApi[action.service];
  ++service.enablesBegun;
  service.mayCall = true;
  // Memory and threads are available, so it does not fail.
  if (action.verb == Verb::Enable) {
    FUZZ_CHECK(api.enable(api.onStatus) == 1);
  } else {
    FUZZ_CHECK(api.create(api.onStatusV2) == 0);
  }
  ++service.enablesDone;
}

void Application::close(const Action& action, bool inside) {
  const Watchdog::Step step(action.verb == Verb::Disable ? "disable" : "destroy");
  Service& service = mServices[action.service];
  const Api& api = kApi[action.service];
  if (inside) service.leftInside = true;
  const unsigned begun = service.enablesBegun;
  const bool settled = service.enablesDone == begun;
  bool done = false;
  if (action.verb == Verb::Disable) {
    const int result = api.disable();
    FUZZ_CHECK(result == 0 || result == 1);
    done = result == 1;
  } else {
    const int result = api.destroy();
    FUZZ_CHECK(result == 0 || result == -1);
    done = result == 0;
  }
  // Certain only if no thread has enabled it meanwhile, and if this call waited for the callbacks.
  const bool certain = !inside && done && settled && service.enablesBegun == begun;
  if (certain && !service.leftInside) service.mayCall = false;
}

void Application::finish() {
  {
    const Watchdog::Step step("the end of what callbacks do");
    std::unique_lock<std::mutex> lock(mMutex);
    for (Service& service : mServices) service.armed.reset();
    mChanged.wait(lock, [this] { return mActionsInside == 0; });
  }
  for (size_t i = 0; i < kServices; ++i) perform({Verb::Disable, i, 0});
}

void Application::forget() {
  for (Service& service : mServices) {
    service.mayCall = false;
    service.leftInside = false;
  }
}
