// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// What the test kit promises about scenarios.
#include <stdlib.h>

#include <filesystem>
#include <fstream>

#include "KitFixture.h"

namespace {

using namespace kitclient;
using namespace orbsim::testkit;

TEST_F(Kit, ExpectationsOfAScenarioAreTold) {
  EXPECT_FALSE(daemon().useScenario("{"));
  EXPECT_NE("", daemon().error());
  EXPECT_FALSE(daemon().useScenarioFile("/nowhere.json"));
  EXPECT_NE(std::string::npos, daemon().error().find("/nowhere.json")) << daemon().error();
  play(R"({"begin": "connected", "expect": [
    {"sends": {"service": "lce", "request": "enable", "within": 5}},
    {"sends": {"service": "lle", "request": "enable", "within": 0.1}}]})");
  enableLce();
  EXPECT_TRUE(daemon().waitUntilDecided());
  daemon().stop();
  ASSERT_EQ(1u, daemon().failures().size());
  EXPECT_EQ(0u, daemon().failures().front().find("/expect/1: ")) << daemon().failures().front();
}

TEST_F(Kit, ScenariosComeFromFilesAndByName) {
  const std::filesystem::path folder =
      std::filesystem::path(daemon().socketPath()).parent_path() / "scenarios";
  std::filesystem::create_directory(folder);
  std::ofstream(folder / "mine.json") << R"({"expect": [{"sends": {"service": "lle"}}]})";
  EXPECT_FALSE(daemon().useScenarioFile("mine"));
  setenv("ORB_SCENARIOS", folder.c_str(), 1);
  EXPECT_TRUE(daemon().useScenarioFile("mine")) << daemon().error();
  unsetenv("ORB_SCENARIOS");
  playFile(folder / "mine.json");
  std::filesystem::remove_all(folder);
  daemon().stop();
  EXPECT_EQ(1u, daemon().failures().size());
}

TEST_F(Kit, TimelineOfAScenarioIsPlayed) {
  play(R"({"begin": ["lli"], "timeline": [{"at": 0.1, "handoff":
    {"to": "wcdma", "notice": 0.1, "duration": 0.02}}]})");
  enableLli();
  EXPECT_TRUE(waitFor("stage 1 3 1 0 0"));
}

}  // namespace
