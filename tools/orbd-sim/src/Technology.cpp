// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "orbsim/Technology.h"

#include "orbsim/Model.h"

namespace orbsim {
namespace {

// In the order of LliRatType. The latency service has three technologies and no "none". Other
// technologies use the nearest name: third generation and older use WCDMA; a WLAN, which has
// similarly short latencies, uses NR5G; a WLAN over a cellular link uses LTE, which that link
// usually is. The latencies are those of the technology itself.
constexpr Technology kTechnologies[] = {
    {LliProto::NULL_BEARER, "none", LleProto::WCDMA, 0, 0, {200000, 800000}, {200000, 800000}},
    {LliProto::LLI_3GPP_WCDMA,
     "wcdma",
     LleProto::WCDMA,
     5000,
     14000,
     {70000, 160000},
     {50000, 120000}},
    {LliProto::LLI_3GPP_GERAN,
     "geran",
     LleProto::WCDMA,
     120,
     240,
     {250000, 600000},
     {200000, 500000}},
    {LliProto::LLI_3GPP_LTE, "lte", LleProto::LTE, 40000, 110000, {18000, 45000}, {12000, 35000}},
    {LliProto::LLI_3GPP_TDSCDMA,
     "tdscdma",
     LleProto::WCDMA,
     2200,
     2800,
     {80000, 170000},
     {60000, 130000}},
    {LliProto::LLI_3GPP_WLAN, "wlan", LleProto::NR5G, 90000, 120000, {4000, 15000}, {3000, 12000}},
    {LliProto::LLI_3GPP_5G, "5g", LleProto::NR5G, 100000, 400000, {4000, 12000}, {2000, 9000}},
    {LliProto::LLI_3GPP_CIWLAN,
     "ciwlan",
     LleProto::LTE,
     30000,
     80000,
     {22000, 55000},
     {16000, 45000}},
    {LliProto::LLI_3GPP2_1X, "1x", LleProto::WCDMA, 150, 300, {200000, 500000}, {180000, 450000}},
    {LliProto::LLI_3GPP2_HRPD,
     "hrpd",
     LleProto::WCDMA,
     1800,
     3100,
     {90000, 190000},
     {70000, 150000}},
    {LliProto::LLI_3GPP2_EHRPD,
     "ehrpd",
     LleProto::WCDMA,
     1800,
     3100,
     {80000, 170000},
     {60000, 130000}},
    {LliProto::LLI_3GPP2_WLAN, "wlan2", LleProto::NR5G, 60000, 90000, {5000, 20000}, {4000, 15000}},
};

}  // namespace

const Technology& technologyOf(LliProto::LliRatType rat) {
  for (const Technology& technology : kTechnologies) {
    if (technology.rat == rat) return technology;
  }
  return kTechnologies[0];
}

const Technology* technologyNamed(const std::string& word) {
  for (const Technology& technology : kTechnologies) {
    if (word == technology.word) return &technology;
  }
  return nullptr;
}

const std::string& technologyWords() {
  static const std::string words = [] {
    std::string all;
    for (const Technology& technology : kTechnologies) {
      if (!all.empty()) all += ' ';
      all += technology.word;
    }
    return all;
  }();
  return words;
}

bool isTechnologyWord(const std::string& word) { return technologyNamed(word) != nullptr; }

}  // namespace orbsim
