// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/Names.h"

#include <orb/names.h>
#include <strings.h>

namespace orbctl {
namespace {

// A later version of the library may have values that this program does not know.
constexpr char kUnknown[] = "unknown";

template <class Value, size_t kCount>
const char* wordFor(const Words<Value, kCount>& words, Value value) {
  for (const auto& word : words) {
    if (word.second == value) return word.first;
  }
  return kUnknown;
}

}  // namespace

const Words<SdlAccessNetworkType, 4> kNetworkWords = {{{"none", SDL_ACCESS_NETWORK_TYPE_NONE},
                                                       {"wcdma", SDL_ACCESS_NETWORK_TYPE_WCDMA},
                                                       {"lte", SDL_ACCESS_NETWORK_TYPE_LTE},
                                                       {"nr5g", SDL_ACCESS_NETWORK_TYPE_NR5G}}};

const Words<LceReportingAction, 3> kActionWords = {{{"stop", LCE_REPORTING_ACTION_STOP},
                                                    {"start", LCE_REPORTING_ACTION_START},
                                                    {"reset", LCE_REPORTING_ACTION_RESET}}};

const Words<LliRat, 12> kRatWords = {{{"none", LLI_RAT_NULL_BEARER},
                                      {"3gpp-wcdma", LLI_RAT_3GPP_WCDMA},
                                      {"3gpp-geran", LLI_RAT_3GPP_GERAN},
                                      {"3gpp-lte", LLI_RAT_3GPP_LTE},
                                      {"3gpp-tdscdma", LLI_RAT_3GPP_TDSCDMA},
                                      {"3gpp-wlan", LLI_RAT_3GPP_WLAN},
                                      {"3gpp-5g", LLI_RAT_3GPP_5G},
                                      {"3gpp-ciwlan", LLI_RAT_3GPP_CIWLAN},
                                      {"3gpp2-1x", LLI_RAT_3GPP2_1X},
                                      {"3gpp2-hrpd", LLI_RAT_3GPP2_HRPD},
                                      {"3gpp2-ehrpd", LLI_RAT_3GPP2_EHRPD},
                                      {"3gpp2-wlan", LLI_RAT_3GPP2_WLAN}}};

const char* nameOf(Service service) {
  constexpr PerService<const char*> kNames = {"lce", "lle", "lli"};
  return kNames[indexOf(service)];
}

const char* nameOf(status_e status) { return orbStatusName(status); }
const char* nameOf(LceReportingCriteriaStatus status) {
  return orbLceReportingCriteriaStatusName(status);
}
const char* nameOf(LceEstimationReportStatus status) {
  return orbLceEstimationReportStatusName(status);
}

const char* nameOf(LceLinkDirection direction) {
  static constexpr Words<LceLinkDirection, 2> kWords = {
      {{"uplink", LCE_LINK_DIRECTION_UPLINK}, {"downlink", LCE_LINK_DIRECTION_DOWNLINK}}};
  return wordFor(kWords, direction);
}

const char* nameOf(SdlAccessNetworkType network) { return wordFor(kNetworkWords, network); }
const char* nameOf(LliRat rat) { return wordFor(kRatWords, rat); }

const char* phaseOf(const HandoffEvent& event) {
  if (event.type == LLI_HANDOFF_IND_TYPE_PRE_HANDOFF)
    return event.preState == LLI_PRE_HANDOFF_STATE_EXIT ? "exit" : "entry";
  static constexpr Words<LliHandoffState, 4> kWords = {{{"start", LLI_HANDOFF_STATE_START},
                                                        {"success", LLI_HANDOFF_STATE_SUCCESS},
                                                        {"failure", LLI_HANDOFF_STATE_FAILURE},
                                                        {"imminent", LLI_HANDOFF_STATE_IMMINENT}}};
  return wordFor(kWords, event.info.handoffState);
}

const char* shortNameOf(SdlAccessNetworkType network) {
  static constexpr Words<SdlAccessNetworkType, 4> kWords = {
      {{"no network", SDL_ACCESS_NETWORK_TYPE_NONE},
       {"WCDMA", SDL_ACCESS_NETWORK_TYPE_WCDMA},
       {"LTE", SDL_ACCESS_NETWORK_TYPE_LTE},
       {"5G", SDL_ACCESS_NETWORK_TYPE_NR5G}}};
  return wordFor(kWords, network);
}

const char* shortNameOf(LliRat rat) {
  static constexpr Words<LliRat, 12> kWords = {{{"no bearer", LLI_RAT_NULL_BEARER},
                                                {"WCDMA", LLI_RAT_3GPP_WCDMA},
                                                {"GSM", LLI_RAT_3GPP_GERAN},
                                                {"LTE", LLI_RAT_3GPP_LTE},
                                                {"TD-SCDMA", LLI_RAT_3GPP_TDSCDMA},
                                                {"WLAN", LLI_RAT_3GPP_WLAN},
                                                {"5G", LLI_RAT_3GPP_5G},
                                                {"C-IWLAN", LLI_RAT_3GPP_CIWLAN},
                                                {"1x", LLI_RAT_3GPP2_1X},
                                                {"HRPD", LLI_RAT_3GPP2_HRPD},
                                                {"eHRPD", LLI_RAT_3GPP2_EHRPD},
                                                {"WLAN (3GPP2)", LLI_RAT_3GPP2_WLAN}}};
  return wordFor(kWords, rat);
}

template <class Value, size_t kCount>
std::optional<Value> valueOf(const Words<Value, kCount>& words, std::string_view text) {
  const std::string wanted(text);
  for (const auto& word : words) {
    if (strcasecmp(word.first, wanted.c_str()) == 0) return word.second;
  }
  return std::nullopt;
}
template std::optional<SdlAccessNetworkType> valueOf(const Words<SdlAccessNetworkType, 4>&,
                                                     std::string_view);
template std::optional<LceReportingAction> valueOf(const Words<LceReportingAction, 3>&,
                                                   std::string_view);
template std::optional<LliRat> valueOf(const Words<LliRat, 12>&, std::string_view);

}  // namespace orbctl
