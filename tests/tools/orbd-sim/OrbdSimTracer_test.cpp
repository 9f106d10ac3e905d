// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Splitting the bytes of a connection into records and frames for a trace, as text and as JSON
// Lines.

#include <cstdlib>
#include <ctime>

#include "OrbdSimClient.h"
#include "OrbdSimTraceLines.h"

namespace orbsimtest {
namespace {

using orbsim::Direction;
using orbsim::TraceItem;
using orbsim::Tracer;

Blob words(std::vector<uint32_t> all) {
  Blob bytes(4 * all.size());
  std::memcpy(bytes.data(), all.data(), bytes.size());
  return bytes;
}

Blob join(std::initializer_list<Blob> parts) {
  Blob all;
  for (const Blob& part : parts) all.insert(all.end(), part.begin(), part.end());
  return all;
}

Blob frame(const Header& header, const Blob& payload) {
  Header whole = header;
  whole.payloadLength = payload.size();
  return orbsim::encodeFrame(whole, payload);
}

class OrbdSimTracerTest : public ::testing::Test {
 protected:
  void feed(Direction direction, const Blob& bytes) {
    tracer.feed(direction, bytes.data(), bytes.size());
  }
  void shakeHands() {
    feed(Direction::kToClient, words({1, 4}));
    feed(Direction::kToDaemon, words({2, 4, 105}));
    feed(Direction::kToClient, words({3, 4}));
  }

  TraceLines lines;
  Tracer tracer{7, 4711, lines.sink()};
};

const Blob kEnablePayload = {7, 0, 0, 0, 0x1a, 4, 0x0a, 2, 8, 1};

TEST_F(OrbdSimTracerTest, HandshakeAndFrames) {
  shakeHands();
  feed(Direction::kToDaemon, frame({105, 1, 5, 0, 4, 0}, kEnablePayload));
  feed(Direction::kToClient, frame({1, 105, 5, 0, 4, 0}, {7, 0, 0, 0, 0x1a, 4, 0x0a, 2, 8, 1}));
  tracer.end(Direction::kToDaemon);
  tracer.end(Direction::kToClient);
  EXPECT_EQ((std::vector<std::string>{
                "to-client connection 7 pid 4711 endpoint 0 session 4 handshake init",
                "to-daemon connection 7 pid 4711 endpoint 105 session 4 handshake response",
                "to-client connection 7 pid 4711 endpoint 105 session 4 handshake complete",
                "to-daemon connection 7 pid 4711 endpoint 105 session 4 message 5 " + kEnableText,
                "to-client connection 7 pid 4711 endpoint 105 session 4 message 5 LCE ClientMsg "
                "event_id: STATUS_IND transaction_id: 0 data { status_msg { status: SUCCESS } }"}),
            lines.get());
}

TEST_F(OrbdSimTracerTest, PiecesMakeNoDifference) {
  const Blob all = join({words({2, 4, 105}), frame({105, 1, 5, 0, 4, 0}, kEnablePayload),
                         frame({105, 1, 5, 0, 4, 0}, kEnablePayload)});
  for (const uint8_t byte : all) feed(Direction::kToDaemon, {byte});
  const std::vector<std::string> single = lines.get();
  ASSERT_EQ(3u, single.size());
  TraceLines others;
  Tracer other(7, 4711, others.sink());
  other.feed(Direction::kToDaemon, all.data(), all.size());
  EXPECT_EQ(single, others.get());
}

TEST_F(OrbdSimTracerTest, UnusualWordsOfTheHeaderAreShown) {
  tracer.skipHandshake();
  feed(Direction::kToDaemon, frame({105, 3, (uint64_t{9} << 32) + 5, -2, 4, 0}, kEnablePayload));
  EXPECT_EQ((std::vector<std::string>{
                "to-daemon connection 7 pid 4711 endpoint 105 session 4 message 38654705669 "
                "destination 3 subsystem -2 " +
                kEnableText}),
            lines.get());
}

TEST_F(OrbdSimTracerTest, WhatIsNoMessageIsShownAsBytesWithTheReason) {
  shakeHands();
  feed(Direction::kToDaemon, frame({105, 1, 6, 0, 4, 0}, {1, 2}));
  feed(Direction::kToDaemon, frame({105, 1, 5, 0, 4, 0}, {7, 0, 0}));
  feed(Direction::kToDaemon, frame({105, 1, 5, 0, 4, 0}, {3, 0, 0, 0, 9}));
  feed(Direction::kToDaemon, frame({105, 1, 5, 0, 4, 0}, {7, 0, 0, 0, 0x12}));
  feed(Direction::kToDaemon, {1, 2, 3});
  tracer.end(Direction::kToDaemon);
  std::vector<std::string> told = lines.get();
  told.erase(told.begin(), told.begin() + 3);
  const std::string head = "to-daemon connection 7 pid 4711 endpoint 105 session 4 ";
  EXPECT_EQ(
      (std::vector<std::string>{
          head + "message 6 not decoded (no such message): 0102",
          head + "message 5 not decoded (shorter than the number of a service): 070000",
          head + "message 5 service 3 not decoded (no such service): 09",
          head + "message 5 LCE ServiceMsg not decoded (ServiceMsg.field 2 is cut or damaged): 12",
          head + "not decoded (the connection ended within a record or frame): 010203"}),
      told);
}

TEST_F(OrbdSimTracerTest, WrongRecordIsShownAndTheRestFollows) {
  feed(Direction::kToClient, words({9, 4}));
  feed(Direction::kToDaemon, words({2, 5, 106}));
  EXPECT_EQ(
      (std::vector<std::string>{
          "to-client connection 7 pid 4711 endpoint 0 session 0 not decoded (a record of type "
          "9 where the handshake's init (1) was expected): 0900000004000000",
          "to-daemon connection 7 pid 4711 endpoint 106 session 5 handshake response"}),
      lines.get());
}

TEST_F(OrbdSimTracerTest, FrameThatIsTooLongIsToldWithoutItsPayloadAndTheNextOneFollows) {
  tracer.skipHandshake();
  const Blob payload(Tracer::kMaxPayload + 1, 7);
  const Blob all =
      join({frame({105, 1, 5, 0, 4, 0}, payload), frame({105, 1, 5, 0, 4, 0}, kEnablePayload)});
  for (size_t at = 0; at < all.size(); at += 65536) {
    const size_t size = std::min(all.size() - at, size_t{65536});
    tracer.feed(Direction::kToDaemon, all.data() + at, size);
  }
  const std::string head = "to-daemon connection 7 pid 4711 endpoint 105 session 4 message 5 ";
  EXPECT_EQ(
      (std::vector<std::string>{head + "not decoded (too long to be decoded): (1048577 bytes)",
                                head + kEnableText}),
      lines.get());
}

TEST_F(OrbdSimTracerTest, ManyBytesAreShownInPart) {
  tracer.skipHandshake();
  feed(Direction::kToDaemon, frame({105, 1, 6, 0, 4, 0}, Blob(257, 0xab)));
  std::string hex;
  for (int i = 0; i < 256; ++i) hex += "ab";
  EXPECT_EQ(
      "to-daemon connection 7 pid 4711 endpoint 105 session 4 message 6 not decoded (no such "
      "message): " +
          hex + "... (257 bytes)",
      lines.get().at(0));
}

TEST_F(OrbdSimTracerTest, ProcessWithoutANumberIsSaidAsSuch) {
  Tracer other(1, 0, lines.sink());
  const Blob init = words({1, 4});
  other.feed(Direction::kToClient, init.data(), init.size());
  EXPECT_EQ(
      "to-client connection 1 pid unknown (of another pid namespace) endpoint 0 session 4 "
      "handshake "
      "init",
      lines.get().at(0));
}

TEST(OrbdSimTraceJson, KeysOfEachKind) {
  std::vector<std::string> lines;
  Tracer tracer(7, 0, [&](const TraceItem& item) {
    TraceItem timed = item;
    timed.time = std::chrono::system_clock::time_point(std::chrono::microseconds(1500000000000001));
    lines.push_back(orbsim::traceJson(timed));
  });
  const auto feed = [&](Direction direction, const Blob& bytes) {
    tracer.feed(direction, bytes.data(), bytes.size());
  };
  feed(Direction::kToClient, words({1, 4}));
  feed(Direction::kToDaemon, words({2, 4, 105}));
  feed(Direction::kToDaemon, frame({105, 1, 5, 0, 4, 0}, {7, 0, 0, 0, 8, 2, 0x1a, 6, 0x12, 4, 0x1a,
                                                          2, 1, 2, 0x48, 5, 0x52, 1, 0xff}));
  feed(Direction::kToDaemon, frame({105, 1, 5, 0, 4, 0}, {4, 0, 0, 0, 1}));
  feed(Direction::kToClient, words({3, 4}));
  feed(Direction::kToClient,
       frame({1, 105, 5, 0, 4, 0}, {7, 0, 0, 0, 8, 3, 0x1a, 7, 0x22, 5, 0x12, 3, 'a', 0xff, 0x7f}));
  const std::string time = "{\"time\":\"2017-07-14T02:40:00.000001Z\",";
  const std::string head = "\"connection\":7,\"pid\":null,\"endpoint\":105,\"session\":4,";
  const std::string request = time + "\"kind\":\"frame\",\"direction\":\"to-daemon\"," + head +
                              "\"message_id\":5,\"source\":105,\"destination\":1,\"subsystem\":0,";
  EXPECT_EQ(
      (std::vector<std::string>{
          time + "\"kind\":\"handshake\",\"direction\":\"to-client\",\"connection\":7,\"pid\":null,"
                 "\"endpoint\":0,\"session\":4,\"step\":\"init\"}",
          time + "\"kind\":\"handshake\",\"direction\":\"to-daemon\"," + head +
              "\"step\":\"response\"}",
          request +
              "\"length\":19,\"service_number\":7,\"service\":\"LCE\",\"message\":\"ServiceMsg\","
              "\"fields\":{\"event_id\":\"SET_REPORTING_CRITERIA\",\"transaction_id\":0,\"data\":{"
              "\"set_reporting_criteria\":{\"criteria_value_1\":0,\"second_list_count\":0,"
              "\"second_list\":[1,2],\"first_list_count\":0,\"access_network\":\"NONE\","
              "\"criteria_value_2\":0}},\"unknown\":[{\"field\":9,\"type\":\"varint\",\"value\":5},"
              "{"
              "\"field\":10,\"type\":\"bytes\",\"hex\":\"ff\"}]}}",
          request + "\"length\":5,\"service_number\":4,\"reason\":\"no such service\",\"size\":1,"
                    "\"hex\":\"01\"}",
          time + "\"kind\":\"handshake\",\"direction\":\"to-client\"," + head +
              "\"step\":\"complete\"}",
          time + "\"kind\":\"frame\",\"direction\":\"to-client\"," + head +
              "\"message_id\":5,\"source\":1,\"destination\":105,\"subsystem\":0,\"length\":15,"
              "\"service_number\":7,\"service\":\"LCE\",\"message\":\"ClientMsg\",\"fields\":{"
              "\"event_id\":\"SET_REPORTING_CRITERIA_ASYNC_RESULT\",\"transaction_id\":0,\"data\":{"
              "\"set_reporting_criteria_resp\":{\"success\":false,\"error\":\"a\\ufffd\\u007f\"}}}"
              "}"}),
      lines);
}

TEST(OrbdSimTraceText, TimeIsLocalToTheMillisecond) {
  ASSERT_EQ(0, ::setenv("TZ", "XYZ-2", 1));
  ::tzset();
  const std::chrono::system_clock::time_point time(std::chrono::microseconds(1500000000123456));
  EXPECT_EQ("04:40:00.123 said", orbsim::logText(time, "said"));
  EXPECT_EQ("{\"time\":\"2017-07-14T02:40:00.123456Z\",\"kind\":\"log\",\"text\":\"said\"}",
            orbsim::logJson(time, "said"));
}

}  // namespace
}  // namespace orbsimtest
