// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The help of orbctl, and its reaction to wrong use.
#include <gtest/gtest.h>

#include "OrbctlProgram.h"

using namespace orbctltest;

namespace {

void expectRefused(const std::vector<std::string>& words, const std::string& command,
                   const std::string& part) {
  const Result result = runOrbctl(words);
  EXPECT_EQ(2, result.status) << result.error;
  EXPECT_EQ("", result.out);
  EXPECT_EQ(0u, result.error.find(command + ": ")) << result.error;
  EXPECT_TRUE(contains(result.error, part)) << result.error;
  EXPECT_TRUE(contains(result.error, "; try '" + command + " --help'\n")) << result.error;
  EXPECT_EQ(1u, linesOf(result.error).size()) << result.error;
}

TEST(OrbctlOptions, HelpNamesAllOptionsOfEachCommand) {
  const std::vector<std::pair<std::vector<std::string>, std::vector<std::string>>> commands = {
      {{}, {"status", "watch", "report", "plot"}},
      {{"status"}, {"--socket", "--timeout", "--json", "13  a service does not answer"}},
      {{"watch"}, {"SERVICE", "--count", "--seconds", "--json", "--csv", "--color", "NO_COLOR"}},
      {{"report"}, {"lce", "lle"}},
      {{"report", "lce"},
       {"--first", "--second", "--value1", "--value2", "--network", "--action", "--last", "--count",
        "--seconds", "--json", "--csv", "--color", "0 to 4294967295", "last as long as"}},
      {{"report", "lle"}, {"--criteria", "--last", "--count", "--seconds", "--json", "--csv"}},
      {{"plot"}, {"FILE", "--output", "--size", "gnuplot"}}};
  for (const auto& command : commands) {
    for (const char* const help : {"-h", "--help"}) {
      std::vector<std::string> words = command.first;
      words.emplace_back(help);
      const Result result = runOrbctl(words);
      EXPECT_EQ(0, result.status);
      EXPECT_EQ("", result.error);
      for (const std::string& part : command.second)
        EXPECT_TRUE(contains(result.out, part)) << part << " in\n" << result.out;
    }
  }
}

TEST(OrbctlOptions, HelpKeepsToTheWidthOfATerminal) {
  for (const std::vector<std::string>& words : std::vector<std::vector<std::string>>{
           {"-h"}, {"status", "-h"}, {"watch", "-h"}, {"report", "lce", "-h"}, {"plot", "-h"}}) {
    for (const std::string& line : linesOf(runOrbctl(words).out))
      EXPECT_GE(100u, line.size()) << line;
  }
}

TEST(OrbctlOptions, VersionIsThatOfTheLibrary) {
  EXPECT_EQ("orbctl " ORB_VERSION "\n", runOrbctl({"--version"}).out);
  EXPECT_EQ("orbctl " ORB_VERSION "\n", runOrbctl({"-V"}).out);
}

TEST(OrbctlOptions, CompletionKnowsItsCommands) {
  EXPECT_TRUE(contains(runOrbctl({"--completion", "bash"}).out, "--criteria"));
  EXPECT_TRUE(contains(runOrbctl({"--completion", "zsh"}).out, "#compdef orbctl"));
}

TEST(OrbctlOptions, WrongUseIsRefusedInOneLine) {
  expectRefused({}, "orbctl", "no command given");
  expectRefused({"dance"}, "orbctl", "dance");
  expectRefused({"--dance"}, "orbctl", "--dance");
  expectRefused({"report"}, "orbctl report", "no command given");
  expectRefused({"report", "lli"}, "orbctl report", "lli");
  expectRefused({"status", "more"}, "orbctl status", "more");
  expectRefused({"status", "--timeout", "0"}, "orbctl status", "--timeout");
  expectRefused({"status", "--timeout", "61"}, "orbctl status", "--timeout");
  expectRefused({"status", "--timeout", "nan"}, "orbctl status", "--timeout");
  expectRefused({"status", "--timeout", "soon"}, "orbctl status", "--timeout");
  expectRefused({"status", "--socket"}, "orbctl status", "--socket");
  expectRefused({"watch", "lce", "lla"}, "orbctl watch", "lla");
  expectRefused({"watch", "--", "--json"}, "orbctl watch", "--json");
  expectRefused({"watch", "--count", "0"}, "orbctl watch", "--count");
  expectRefused({"watch", "--count", "-1"}, "orbctl watch", "--count");
  expectRefused({"watch", "--seconds", "0"}, "orbctl watch", "--seconds");
  expectRefused({"watch", "--seconds", "nan"}, "orbctl watch", "--seconds");
  expectRefused({"watch", "--color", "red"}, "orbctl watch", "--color");
  expectRefused({"watch", "--json", "--csv", "-"}, "orbctl watch", "both for standard output");
}

TEST(OrbctlOptions, WhatIsNoNumberInRangeIsSaidPlainly) {
  const auto refused = [](const std::vector<std::string>& words, const std::string& command,
                          const std::string& reason) {
    expectRefused(words, command, command + ": " + reason + "; try '");
  };
  const std::string greatest = "18446744073709551615";
  for (const std::string& count : {std::string("0"), std::string("1.5"), std::string("-1"),
                                   std::string("+1"), std::string("0x10"), std::string("many"),
                                   std::string("18446744073709551616"), std::string(309, '9')})
    refused({"watch", "-n", count}, "orbctl watch",
            "--count: not a whole number from 1 to " + greatest + ": " + count);
  for (const char* const seconds : {"0", "nan", "inf", "1e10", "soon"})
    refused({"watch", "--seconds", seconds}, "orbctl watch",
            std::string("--seconds: not a number from 0.001 to 1000000000: ") + seconds);
  refused({"watch", "--seconds", ""}, "orbctl watch",
          "--seconds: not a number from 0.001 to 1000000000:");
  refused({"watch", "--count", ""}, "orbctl watch",
          "--count: not a whole number from 1 to " + greatest + ":");
  refused({"status", "-t", "61"}, "orbctl status", "--timeout: not a number from 0.1 to 60: 61");
  refused({"report", "lle", "--criteria", "1.5"}, "orbctl report lle",
          "--criteria: not a whole number from 0 to 4294967295: 1.5");
  refused({"report", "lce", "--first", "1,,2.5"}, "orbctl report lce",
          "--first: not a whole number from 0 to 4294967295: 2.5");
}

TEST(OrbctlOptions, CriteriaOutOfRangeAreRefused) {
  const std::vector<std::string> lce = {"report", "lce"};
  const auto refused = [&](const std::vector<std::string>& more, const std::string& part) {
    std::vector<std::string> words = lce;
    words.insert(words.end(), more.begin(), more.end());
    expectRefused(words, "orbctl report lce", part);
  };
  std::string list = "1";
  for (int i = 2; i <= 21; ++i) list += "," + std::to_string(i);
  refused({"--first", list}, "--first: more than 20 numbers");
  refused({"--second", list}, "--second: more than 20 numbers");
  refused({"--first", "1,4294967296"}, "--first");
  refused({"--second", "1,-1"}, "--second");
  refused({"--value1", "4294967296"}, "--value1");
  refused({"--value2", "much"}, "--value2");
  refused({"--network", "6g"}, "--network");
  refused({"--action", "dance"}, "--action");
  refused({"--last", "--action", "stop"}, "--last");
  expectRefused({"report", "lle", "--criteria", "-1"}, "orbctl report lle", "--criteria");
  expectRefused({"report", "lle", "--network", "lte"}, "orbctl report lle", "--network");
}

TEST(OrbctlOptions, PicturesOfOtherFormsAndSizesAreRefused) {
  expectRefused({"plot"}, "orbctl plot", "");
  expectRefused({"plot", "a.csv"}, "orbctl plot", "--output");
  expectRefused({"plot", "-o", "a.svg"}, "orbctl plot", "FILE");
  expectRefused({"plot", "a.csv", "-o", "a.gif"}, "orbctl plot", "neither .svg nor .png: a.gif");
  expectRefused({"plot", "a.csv", "-o", ".svg"}, "orbctl plot", "neither .svg nor .png: .svg");
  for (const char* const size : {"1200", "1x1", "9000x700", "300x200x", "axb"})
    expectRefused({"plot", "a.csv", "-o", "a.svg", "--size", size}, "orbctl plot", "--size");
}

}  // namespace
