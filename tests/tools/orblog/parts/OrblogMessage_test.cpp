// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The parts of a line's message, and the JSON object with all parts.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>

#include "OrblogFiles.h"
#include "orblog/LinePrinter.h"
#include "orblog/LogLine.h"

using namespace orblog;

namespace {

// "tag/unit/function/line/text", or "none".
std::string partsOf(std::string_view message) {
  const std::optional<MessageParts> parts = parseMessage(message);
  if (!parts) return "none";
  std::string all;
  for (const std::string_view part : {parts->tag, parts->unit, parts->function})
    all.append(part) += '/';
  return all + std::to_string(parts->line) + "/" + std::string(parts->text);
}

TEST(OrblogMessage, PartsAreTaken) {
  EXPECT_EQ(partsOf("|ORB|Log::init:225 cannot open liborbalog.so"),
            "ORB/Log/init/225/cannot open liborbalog.so");
  EXPECT_EQ(partsOf("|ORB|OrbIpcSession::performHandshake:169 returning: result: 1"),
            "ORB/OrbIpcSession/performHandshake/169/returning: result: 1");
}

TEST(OrblogMessage, TextMayBeAnything) {
  EXPECT_EQ(partsOf("|ORB|Log::init:225 "), "ORB/Log/init/225/");
  EXPECT_EQ(partsOf("|ORB|Log::init:225 |X|Y::z:1 w"), "ORB/Log/init/225/|X|Y::z:1 w");
  EXPECT_EQ(partsOf("||::: x"), "none");
  EXPECT_EQ(partsOf("||:::0 x"), "///0/x");
}

TEST(OrblogMessage, FunctionsMayHaveColonsAndBlanks) {
  EXPECT_EQ(partsOf("|ORB|Log::Log::init:225 x"), "ORB/Log/Log::init/225/x");
  EXPECT_EQ(partsOf("|ORB|Log::operator new:7 x"), "ORB/Log/operator new/7/x");
}

TEST(OrblogMessage, OtherFormsHaveNoParts) {
  for (const char* message :
       {"", "plain", "|", "|ORB", "|ORB|", "|ORB|Log", "|ORB|Log::init",
        "|ORB|Log::init:", "|ORB|Log::init:225", "|ORB|Log::init: 225", "|ORB|Log:init:225 x",
        "|ORB|x 1::2:3", "|ORB|Log::init:99999999999999999999 x", "|ORB|Log:1 a::b:2"})
    EXPECT_EQ(partsOf(message), "none") << message;
}

std::string jsonOf(const std::string& text) {
  char* data = nullptr;
  size_t size = 0;
  FILE* const out = open_memstream(&data, &size);
  LinePrinter printer(out, LinePrinter::Form::Json, {});
  printer.print("f", {512, text}, kNoStamp);
  EXPECT_TRUE(printer.flush());
  std::fclose(out);
  const std::string json(data, size);
  std::free(data);
  return json;
}

TEST(OrblogMessage, JsonHasThePartsAsMembers) {
  EXPECT_EQ(jsonOf(orblogtest::lineAt("10:00:01.000", "|ORB|Log::init:225 \"x\"", 'E')),
            "{\"time\":\"2025-05-24 10:00:01.000\",\"pid\":1234,\"tid\":1240,\"level\":\"E\","
            "\"tag\":\"ORB\",\"unit\":\"Log\",\"function\":\"init\",\"line\":225,"
            "\"message\":\"\\\"x\\\"\",\"file\":\"f\",\"offset\":512,\"parsed\":true}\n");
}

// Otherwise the tag would be lost.
TEST(OrblogMessage, MessageWithATagOfItsOwnStaysWhole) {
  EXPECT_NE(jsonOf(orblogtest::lineAt("10:00:01.000", "|LCE|Log::init:225 x"))
                .find("\"unit\":null,\"function\":null,\"line\":null,"
                      "\"message\":\"|LCE|Log::init:225 x\""),
            std::string::npos);
}

TEST(OrblogMessage, WhatIsNoLineHasItsTextAloneAndIsMarked) {
  EXPECT_EQ(jsonOf("odd"),
            "{\"time\":null,\"pid\":null,\"tid\":null,\"level\":null,\"tag\":null,\"unit\":null,"
            "\"function\":null,\"line\":null,\"message\":\"odd\",\"file\":\"f\",\"offset\":512,"
            "\"parsed\":false}\n");
}

}  // namespace
