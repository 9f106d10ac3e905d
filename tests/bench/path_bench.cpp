// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The whole path, through the C API of the shared library: a request to the callback of its answer,
// and reports that the daemon sends by itself. "--run WORK COUNT" does only the library's half of
// one of them, for its instructions to be counted.
#include <orb/sdl.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "BarePath.h"
#include "Comparison.h"
#include "lce.pb.h"
#include "orbsim/Daemon.h"

namespace {

constexpr uint64_t kLceEndpoint = 105;
constexpr uint32_t kFirstSession = 1;
constexpr int kRoundTrips = 2000;
constexpr int kBurst = 100;  // indications before a wait: fewer than a socket's buffer holds
constexpr int kIndications = 20000;

// What callbacks reach; they may still come while the process exits.
Countdown& answers() {
  static Countdown* const instance = new Countdown;
  return *instance;
}

void onStatus(status_e) { answers().one(); }
void onReport(LceEstimationReportStatus, LceEstimationReport) { answers().one(); }

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
  header.sessionId = kFirstSession;
  header.payloadLength = payload.size();
  return orbsim::encodeFrame(header, payload);
}

orbsim::Blob requestFrame() {
  LceProto::ServiceMsg request;
  request.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT);
  request.mutable_data()->mutable_get_last_estination_report();
  return frameOf(kLceEndpoint, orbsim::kDaemonProcessId, serialized(request));
}

template <class Report>
void fill(Report& report) {
  report.set_rate(123456);
  report.set_confidence_level(LceProto::L5);
  report.set_link_direction(LceProto::DOWN_LINK);
  report.set_queue_size_ul(4096);
  report.set_error_string("NONE");
}

orbsim::Blob answerFrame() {
  LceProto::ClientMsg answer;
  answer.set_event_id(LceProto::GET_LAST_ESTIMATION_REPORT_IND);
  fill(*answer.mutable_data()->mutable_get_last_estimation_report_resp());
  return frameOf(orbsim::kDaemonProcessId, kLceEndpoint, serialized(answer));
}

orbsim::Blob indicationFrame() {
  LceProto::ClientMsg indication;
  indication.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
  fill(*indication.mutable_data()->mutable_estimation_reports_resp());
  return frameOf(orbsim::kDaemonProcessId, kLceEndpoint, serialized(indication));
}

// The daemon answers requests with ready-made bytes, so that it costs as little as the baseline's
// peer.
void answerAtOnce(orbsim::Daemon& daemon) {
  daemon.setFrameHandler([request = requestFrame(), answer = answerFrame()](
                             orbsim::Session& session, const orbsim::Frame& frame) {
    return frame.payload.size() == request.size() - orbsim::Header::kSize &&
           frame.bytes() == request && session.send(answer);
  });
}

bool enableLce() {
  answers().expect(1);
  if (orb_lce_enable(onStatus) != 1) return false;
  answers().wait();
  return lceRegEstimationReports(onReport) == 0;
}

// Sends in bursts and waits for each to arrive, so that neither side ever waits for room.
template <class Send>
void inBursts(int count, Countdown& arrived, const Send& send) {
  for (int left = count; left > 0; left -= kBurst) {
    const int burst = left < kBurst ? left : kBurst;
    arrived.expect(burst);
    for (int i = 0; i < burst; ++i) send();
    arrived.wait();
  }
}

void roundTrips(int count) {
  for (int i = 0; i < count; ++i) {
    answers().expect(1);
    lceGetLastEstimationReport(onReport);
    answers().wait();
  }
}

void indications(orbsim::Daemon& daemon, const orbsim::Blob& bytes, int count) {
  inBursts(count, answers(), [&] { daemon.sendBytes(kFirstSession, bytes); });
}

void compareRoundTrips(const Comparison& comparison) {
  BarePath bare(requestFrame(), answerFrame());
  const auto baseline = [&](int count) {
    for (int i = 0; i < count; ++i) {
      bare.answers.expect(1);
      bare.request();
      bare.answers.wait();
    }
  };
  comparison.time("request to callback, round trip", kRoundTrips, roundTrips, baseline);
}

void compareIndications(const Comparison& comparison, orbsim::Daemon& daemon) {
  const orbsim::Blob bytes = indicationFrame();
  BarePath bare(requestFrame(), bytes);
  const auto library = [&](int count) { indications(daemon, bytes, count); };
  const auto baseline = [&](int count) {
    inBursts(count, bare.answers, [&] { bare.indication(); });
  };
  comparison.rate("indications, socket to callback", kIndications, library, baseline);
}

// The only work to do, if the arguments name one.
struct Only {
  Only(int argc, char** argv) {
    if (argc != 4 || std::strcmp(argv[1], "--run") != 0) return;
    work = argv[2];
    count = std::atoi(argv[3]);
    known = (isFor("roundtrip") || isFor("indication")) && count > 0;
  }
  bool isFor(const char* name) const { return work != nullptr && std::strcmp(work, name) == 0; }

  const char* work = nullptr;
  int count = 0;
  bool known = false;
};

void run(const Only& only, orbsim::Daemon& daemon) {
  if (only.isFor("roundtrip")) {
    roundTrips(only.count);
  } else {
    indications(daemon, indicationFrame(), only.count);
  }
}

void compare(const Comparison& comparison, orbsim::Daemon& daemon) {
  compareRoundTrips(comparison);
  compareIndications(comparison, daemon);
}

}  // namespace

int main(int argc, char** argv) {
  const Only only(argc, argv);
  const Comparison comparison(only.known ? 1 : argc, argv);
  orbsim::Options options;
  options.record = false;
  orbsim::Daemon daemon(options);
  if (!daemon.start()) {
    std::fprintf(stderr, "path_bench: %s; run it in scripts/sandbox\n", daemon.error().c_str());
    return 1;
  }
  answerAtOnce(daemon);
  if (!enableLce()) {
    std::fprintf(stderr, "path_bench: LCE cannot be enabled\n");
    return 1;
  }
  if (only.known) {
    run(only, daemon);
  } else {
    compare(comparison, daemon);
  }
  const bool ended = orb_lce_disable() == 1;
  daemon.stop();
  return ended ? 0 : 1;
}
