// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Replaces GoogleTest's main. Each case runs in a separate process, because some C libraries never
// unload a library. With a filter, the selected cases run in one process.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <string>

namespace {

bool passes(const std::string& name) {
  std::fflush(nullptr);
  const pid_t child = fork();
  if (child == 0) {
    GTEST_FLAG_SET(filter, name);
    std::exit(RUN_ALL_TESTS());
  }
  int status = -1;
  if (child < 0 || waitpid(child, &status, 0) != child || status != 0) {
    std::printf("FAILED: %s ended with wait status %d\n", name.c_str(), status);
    return false;
  }
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  if (GTEST_FLAG_GET(list_tests) || GTEST_FLAG_GET(filter) != "*") return RUN_ALL_TESTS();
  const testing::UnitTest& all = *testing::UnitTest::GetInstance();
  int count = 0;
  int failed = 0;
  for (int suite = 0; suite < all.total_test_suite_count(); ++suite) {
    const testing::TestSuite& cases = *all.GetTestSuite(suite);
    for (int i = 0; i < cases.total_test_count(); ++i) {
      ++count;
      failed += passes(std::string(cases.name()) + "." + cases.GetTestInfo(i)->name()) ? 0 : 1;
    }
  }
  std::printf("%d cases, a process each; %d failed\n", count, failed);
  return count > 0 && failed == 0 ? 0 : 1;
}
