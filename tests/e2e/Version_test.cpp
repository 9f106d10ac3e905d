// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// The library's version at run time is the version of its headers, for every caller.
#include <orb/version.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <future>
#include <thread>
#include <utility>

#include "AllServicesFixture.h"
#include "QuietThreads.h"

namespace allservices {
namespace {

std::promise<const char*>* gTold;

long threads() {
  namespace fs = std::filesystem;
  return std::distance(fs::directory_iterator("/proc/self/task"), fs::directory_iterator());
}

class Version : public AllServicesTest {};

TEST_F(Version, IsThatOfTheHeaders) {
  EXPECT_STREQ(ORB_SDL_SDK_VERSION, orbSdlSdkVersion());
  EXPECT_EQ(std::string(ORB_SDL_SDK_VERSION), std::to_string(ORB_SDL_SDK_VERSION_MAJOR) + '.' +
                                                  std::to_string(ORB_SDL_SDK_VERSION_MINOR) + '.' +
                                                  std::to_string(ORB_SDL_SDK_VERSION_PATCH));
  // With the comparison that applications use.
  static_assert(ORB_SDL_SDK_VERSION_NUMBER >= ORB_SDL_SDK_MAKE_VERSION(1, 0, 0), "");
  static_assert(ORB_SDL_SDK_MAKE_VERSION(1, 2, 3) < ORB_SDL_SDK_MAKE_VERSION(1, 10, 0), "");
  static_assert(ORB_SDL_SDK_MAKE_VERSION(1, 999, 999) < ORB_SDL_SDK_MAKE_VERSION(2, 0, 0), "");
}

TEST_F(Version, AsksForNothingAndStartsNothing) {
  const long before = threads();
  recording::clear();
  ASSERT_NE(nullptr, orbSdlSdkVersion());
  EXPECT_EQ(before, threads());
  EXPECT_TRUE(recording::lines().empty());
}

TEST_F(Version, IsToldOnAnyThreadAndInACallback) {
  const char* const version = orbSdlSdkVersion();
  const char* onAThread = nullptr;
  std::thread([&] { onAThread = orbSdlSdkVersion(); }).join();
  EXPECT_EQ(version, onAThread);

  static std::promise<const char*> told;
  gTold = &told;
  ASSERT_EQ(0, createLceClient([](status_v2_e) {
              if (gTold != nullptr) std::exchange(gTold, nullptr)->set_value(orbSdlSdkVersion());
            }));
  ASSERT_NO_FATAL_FAILURE(awaitSession(kLce));
  send(kLce, status(1));
  EXPECT_EQ(version, told.get_future().get());
  EXPECT_EQ(0, destroySdfClient());
}

TEST_F(Version, IsToldInTheChildOfAProcessThatUsesTheLibrary) {
  ASSERT_NO_FATAL_FAILURE(enableAll());
  quiet::awaitThreads();
  const pid_t child = fork();
  if (child == 0) _exit(strcmp(orbSdlSdkVersion(), ORB_SDL_SDK_VERSION) == 0 ? 7 : 1);
  int status = -1;
  ASSERT_EQ(child, waitpid(child, &status, 0));
  EXPECT_EQ(7, WEXITSTATUS(status));
}

}  // namespace
}  // namespace allservices
