// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// A child that the application forks while it uses the library.
#include <sys/wait.h>
#include <unistd.h>

#include "AllServicesFixture.h"
#include "QuietThreads.h"

namespace allservices {
namespace {

class ForkedChild : public AllServicesTest {
 protected:
  // The exit status of @p body in a child.
  template <class Body>
  static int inChild(const Body& body) {
    quiet::awaitThreads();  // the test's own objects can be used in the child then
    const pid_t child = fork();
    if (child == 0) _exit(body());
    int status = -1;
    EXPECT_EQ(child, waitpid(child, &status, 0));
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  static int refusedRequests(const ServiceOps& service) {
    int refused = 0;
    for (const Request& request : service.requests()) refused += request.valid() == -5 ? 1 : 0;
    return refused;
  }
};

TEST_F(ForkedChild, EveryCallIsRefusedAndSaysSo) {
  ASSERT_NO_FATAL_FAILURE(enableAll());
  for (const ServiceOps& service : kServices) {
    const int requests = static_cast<int>(service.requests().size());
    EXPECT_EQ(requests + 3, inChild([&] {
                recording::clear();
                int refused = refusedRequests(service);
                refused += service.enable() == 0 ? 1 : 0;
                refused += service.create() == -1 ? 1 : 0;
                refused += service.disable() == 0 ? 1 : 0;
                size_t lines = 0;
                for (const recording::Line& line : recording::lines()) {
                  lines += line.text.find(" refused in a forked process") != std::string::npos;
                }
                const size_t all = recording::lines().size();
                return lines == static_cast<size_t>(refused) && all == lines ? refused : 100;
              }))
        << service.name;
  }
  for (const ServiceOps& service : kServices) expectHearsJustThis(service);
}

TEST_F(ForkedChild, DisableLeavesTheParentsConnectionAlone) {
  ASSERT_NO_FATAL_FAILURE(enable(kLce));
  const size_t frames = daemon().totals().frames;
  EXPECT_EQ(1, inChild([] { return kLce.disable() == 0 ? 1 : 0; }));
  expectHearsJustThis(kLce);
  EXPECT_EQ(frames, daemon().totals().frames);
  EXPECT_EQ(0u, daemon().totals().sessionsClosed);
}

TEST_F(ForkedChild, GrandchildIsRefusedAsWell) {
  ASSERT_NO_FATAL_FAILURE(enable(kLle));
  EXPECT_EQ(7, inChild([] { return inChild([] { return kLle.enable() == 0 ? 7 : 0; }); }));
}

TEST_F(ForkedChild, IsRefusedAfterTheLastDisableToo) {
  ASSERT_NO_FATAL_FAILURE(enable(kLli));
  disable(kLli);
  EXPECT_EQ(1, inChild([] { return kLli.create() == -1 ? 1 : 0; }));
}

}  // namespace
}  // namespace allservices
