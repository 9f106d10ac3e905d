// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LceTraffic.h"

#include "lce.pb.h"

namespace {

constexpr uint64_t kLceEndpoint = 105;

orbsim::Blob serialized(const google::protobuf::MessageLite& message) {
  orbsim::Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

orbsim::Blob frameOf(uint64_t source, uint64_t destination, const orbsim::Blob& blob) {
  const orbsim::Blob payload = orbsim::encodeBlobPayload(orbsim::kSdkTypeLce, blob);
  orbsim::Header header;
  header.source = source;
  header.destination = destination;
  header.messageId = orbsim::kSendBlobMessageId;
  header.sessionId = lcetraffic::kSession;
  header.payloadLength = payload.size();
  return orbsim::encodeFrame(header, payload);
}

template <class Report>
void fill(Report& report) {
  report.set_rate(123456);
  report.set_confidence_level(LceProto::L5);
  report.set_link_direction(LceProto::DOWN_LINK);
  report.set_queue_size_ul(4096);
  report.set_error_string("NONE");
}

}  // namespace

orbsim::Blob lcetraffic::requestFrame() {
  LceProto::ServiceMsg request;
  request.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT);
  request.mutable_data()->mutable_get_last_estination_report();
  return frameOf(kLceEndpoint, orbsim::kDaemonProcessId, serialized(request));
}

orbsim::Blob lcetraffic::answerFrame() {
  LceProto::ClientMsg answer;
  answer.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  fill(*answer.mutable_data()->mutable_get_last_estimation_report_resp());
  return frameOf(orbsim::kDaemonProcessId, kLceEndpoint, serialized(answer));
}

orbsim::Blob lcetraffic::indicationFrame() {
  LceProto::ClientMsg indication;
  indication.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  fill(*indication.mutable_data()->mutable_estimation_reports_resp());
  return frameOf(orbsim::kDaemonProcessId, kLceEndpoint, serialized(indication));
}

void lcetraffic::answerAtOnce(orbsim::Daemon& daemon) {
  daemon.setFrameHandler([request = requestFrame(), answer = answerFrame()](
                             orbsim::Session& session, const orbsim::Frame& frame) {
    return frame.payload.size() == request.size() - orbsim::Header::kSize &&
           frame.bytes() == request && session.send(answer);
  });
}
