// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DiagCmdProcessor.h"

#include <functional>

#include "LogTestPeer.h"

namespace {

const char kDumpHead[] =
    "|ORB|Log::dumper:142 Dump completed, request type: USER_COMMAND, elapsed time = ";

class DiagCmdProcessorTest : public LogFixture {
 protected:
  static std::vector<uint8_t> onlyPacket() {
    EXPECT_EQ(1u, recording::packets().size());
    EXPECT_EQ(0x1E15, recording::packets().at(0).code);
    return recording::packets().at(0).bytes;
  }

  static std::vector<uint8_t> body(const std::string& text) {
    std::vector<uint8_t> bytes(4, 0);
    bytes.insert(bytes.end(), text.begin(), text.end());
    bytes.resize(516, 0);
    return bytes;
  }
};

TEST_F(DiagCmdProcessorTest, ThereIsOneObject) {
  EXPECT_NE(nullptr, DiagCmdProcessor::getInstance());
  EXPECT_EQ(DiagCmdProcessor::getInstance(), DiagCmdProcessor::getInstance());
}

TEST_F(DiagCmdProcessorTest, InitialiseRegistersTheCommand) {
  const size_t inits = recording::diagInitCalls();
  const size_t registrations = recording::diagTable().registrations;
  log.init("app");
  EXPECT_EQ(inits + 1, recording::diagInitCalls());
  const recording::DiagTable table = recording::diagTable();
  EXPECT_EQ(registrations + 1, table.registrations);
  EXPECT_EQ(0, table.delayFlag);
  EXPECT_EQ(0x00FF, table.commandCode);
  EXPECT_EQ(0x0012, table.subsystemId);
  EXPECT_EQ(1, table.entryCount);
  EXPECT_EQ(0, table.processorId);
  EXPECT_EQ(0x0089, table.firstCode);
  EXPECT_EQ(0x0089, table.lastCode);
}

TEST_F(DiagCmdProcessorTest, CommandWithoutHookFailsAndStillRequestsADump) {
  log.init("app");
  recording::clear();
  EXPECT_EQ(0, recording::callDiagCommand({1, 2, 3}));
  EXPECT_TRUE(recording::waitFor(
      [](const recording::Line& line) { return line.text.rfind(kDumpHead, 0) == 0; }));
  bool seen = false;
  for (const recording::Line& line : recording::lines()) {
    if (line.text != "Orb-Diag: retVal: 0, size: 64") continue;
    seen = true;
    EXPECT_EQ(3, line.priority);
    EXPECT_FALSE(line.hasTag);
  }
  EXPECT_TRUE(seen);
  EXPECT_EQ(1u, recording::count("|ORB|Log::decodeBuff:303 outputlen:64 "));
}

TEST_F(DiagCmdProcessorTest, CommandWithoutPayloadDoesNothing) {
  log.init("app");
  recording::clear();
  unsigned char byte = 1;
  EXPECT_EQ(0, recording::callDiagCommand({}));
  EXPECT_EQ(nullptr, DiagCmdProcessor::diagCmdHandler(&byte, 0));
  EXPECT_EQ(nullptr, DiagCmdProcessor::diagCmdHandler(nullptr, 1));
  log.release();
  EXPECT_TRUE(recording::lines().empty());
}

TEST_F(DiagCmdProcessorTest, DecodingNothingFailsSilently) {
  unsigned char byte = 1;
  std::vector<unsigned char> out;
  EXPECT_FALSE(log.decodeBuff(nullptr, 1, out));
  EXPECT_FALSE(log.decodeBuff(&byte, 0, out));
  EXPECT_TRUE(out.empty());
  EXPECT_TRUE(recording::lines().empty());
}

TEST_F(DiagCmdProcessorTest, LaterHandlerReplacesTheEarlier) {
  const auto processor = DiagCmdProcessor::getInstance();
  processor->initialize([](unsigned char*, unsigned short, std::vector<unsigned char>&) {
    ADD_FAILURE() << "replaced";
    return false;
  });
  processor->initialize(
      [](unsigned char* request, unsigned short length, std::vector<unsigned char>& response) {
        response.assign(request, request + length);
        return true;
      });
  EXPECT_EQ(0, recording::callDiagCommand({1, 2, 3}));  // there is no response packet
  EXPECT_EQ(std::vector<std::string>{"Orb-Diag: retVal: 1, size: 3"}, recording::texts());
}

TEST_F(DiagCmdProcessorTest, CommandWithoutHandlerIsAProgrammingError) {
  DiagCmdProcessor::getInstance()->initialize(nullptr);
  unsigned char byte = 1;
  EXPECT_THROW(DiagCmdProcessor::diagCmdHandler(&byte, 1), std::bad_function_call);
}

TEST_F(DiagCmdProcessorTest, PacketIsFourZeroBytesAndThePaddedText) {
  recording::setDiagListening(true);
  log.writeToDiag("text");
  EXPECT_EQ(body("text"), onlyPacket());
}

TEST_F(DiagCmdProcessorTest, TextOf512BytesFillsThePacketWithoutAnEnd) {
  recording::setDiagListening(true);
  DiagCmdProcessor::writeToDiag(std::string(512, 'x'));
  EXPECT_EQ(body(std::string(512, 'x')), onlyPacket());
}

TEST_F(DiagCmdProcessorTest, LongerTextIsCutTo512Bytes) {
  recording::setDiagListening(true);
  DiagCmdProcessor::writeToDiag(std::string(512, 'x') + "yz");
  EXPECT_EQ(body(std::string(512, 'x')), onlyPacket());
}

TEST_F(DiagCmdProcessorTest, NobodyListeningGetsNoPacket) {
  DiagCmdProcessor::writeToDiag("text");
  EXPECT_TRUE(recording::packets().empty());
}

TEST_F(DiagCmdProcessorTest, EntryWithoutAPacketToPutItInIsDropped) {
  recording::setDiagListening(true);
  recording::setDiagAllocFails(true);
  DiagCmdProcessor::writeToDiag("text");
  EXPECT_TRUE(recording::packets().empty());
  EXPECT_TRUE(recording::lines().empty());
}

}  // namespace
