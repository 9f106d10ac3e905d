// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <string>
#include <vector>

#include "lce.pb.h"
#include "orbsim/Daemon.h"

// Messages of a daemon that need much stack in the receiver.
namespace deepmessages {

using orbsim::Blob;

// An unknown member that contains another one, and so on. The maximum depth of the parser is 100.
inline Blob nested(size_t depth) {
  Blob blob;
  for (size_t i = 0; i < depth; ++i) blob.insert(blob.end(), {0xa3, 0x06});
  for (size_t i = 0; i < depth; ++i) blob.insert(blob.end(), {0xa4, 0x06});
  return blob;
}

// One unknown member of this size.
inline Blob large(uint32_t size) {
  Blob blob{0xa2, 0x06};
  for (uint32_t rest = size; rest != 0; rest >>= 7) {
    blob.push_back(static_cast<uint8_t>((rest & 0x7f) | (rest >= 0x80 ? 0x80 : 0)));
  }
  blob.resize(blob.size() + size, 'x');
  return blob;
}

inline Blob operator+(Blob a, const Blob& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

// A status, the same for every service.
inline const Blob kStatus{0x1a, 0x04, 0x0a, 0x02, 0x08, 0x04};

inline Blob serialised(const LceProto::ClientMsg& message) {
  Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

// Reports with texts that are longer than a line.
inline std::vector<Blob> longTexts() {
  std::vector<Blob> blobs;
  for (const std::string& text : {std::string(600, 'x'), std::string(4000, '%')}) {
    LceProto::ClientMsg last;
    last.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
    last.mutable_data()->mutable_get_last_estimation_report_resp()->set_error_string(text);
    LceProto::ClientMsg periodic;
    periodic.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
    periodic.mutable_data()->mutable_estimation_reports_resp()->set_error_string(text);
    LceProto::ClientMsg criteria;
    criteria.set_event_id(LceProto::SET_REPORTING_CRITERIA_ASYNC_RESULT);
    criteria.mutable_data()->mutable_set_reporting_criteria_resp()->set_error(text);
    for (const auto* message : {&last, &periodic, &criteria}) blobs.push_back(serialised(*message));
  }
  return blobs;
}

inline std::vector<Blob> all() {
  std::vector<Blob> blobs = longTexts();
  for (const size_t depth : {1u, 50u, 99u, 100u, 101u, 2000u}) {
    blobs.push_back(nested(depth));
    blobs.push_back(kStatus + nested(depth));
    // Inside the message's own member.
    const Blob inner = nested(depth);
    Blob outer{0x1a};
    for (size_t rest = inner.size(); rest != 0; rest >>= 7) {
      outer.push_back(static_cast<uint8_t>((rest & 0x7f) | (rest >= 0x80 ? 0x80 : 0)));
    }
    blobs.push_back(outer + inner);
  }
  blobs.push_back(kStatus + large(1u << 20));
  for (uint8_t event = 0; event < 8; ++event) blobs.push_back({0x08, event});
  blobs.push_back({});
  blobs.push_back({0xff, 0xff, 0xff});
  return blobs;
}

}  // namespace deepmessages
