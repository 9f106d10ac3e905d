// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LceFrames.h"

#include "lce.pb.h"

namespace lceframes {
namespace {

constexpr uint64_t kLceEndpoint = 105;

orbsim::Blob frameOf(uint64_t source, uint64_t destination, const orbsim::Blob& blob) {
  const orbsim::Blob payload = orbsim::encodeBlobPayload(orbsim::kSdkTypeLce, blob);
  orbsim::Header header;
  header.source = source;
  header.destination = destination;
  header.messageId = orbsim::kSendBlobMessageId;
  header.sessionId = kFirstSession;
  header.payloadLength = payload.size();
  return orbsim::encodeFrame(header, payload);
}

template <class Report>
void fill(Report& report, const std::string& errorString) {
  report.set_rate(123456);
  report.set_confidence_level(LceProto::L5);
  report.set_link_direction(LceProto::DOWN_LINK);
  report.set_queue_size_ul(4096);
  report.set_error_string(errorString);
}

}  // namespace

orbsim::Blob serialized(const google::protobuf::MessageLite& message) {
  orbsim::Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

orbsim::Blob request() {
  LceProto::ServiceMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT);
  message.mutable_data()->mutable_get_last_estination_report();
  return frameOf(kLceEndpoint, orbsim::kDaemonProcessId, serialized(message));
}

orbsim::Blob answerBlob(const std::string& errorString) {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  fill(*message.mutable_data()->mutable_get_last_estimation_report_resp(), errorString);
  return serialized(message);
}

orbsim::Blob answer(const std::string& errorString) {
  return frameOf(orbsim::kDaemonProcessId, kLceEndpoint, answerBlob(errorString));
}

orbsim::Blob indication() {
  LceProto::ClientMsg message;
  message.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  fill(*message.mutable_data()->mutable_estimation_reports_resp(), "NONE");
  return frameOf(orbsim::kDaemonProcessId, kLceEndpoint, serialized(message));
}

void answerAtOnce(orbsim::Daemon& daemon) {
  daemon.setFrameHandler([request = request(), answer = answer("NONE")](
                             orbsim::Session& session, const orbsim::Frame& frame) {
    return frame.payload.size() == request.size() - orbsim::Header::kSize &&
           frame.bytes() == request && session.send(answer);
  });
}

}  // namespace lceframes
