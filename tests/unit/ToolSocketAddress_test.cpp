// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include <gtest/gtest.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "UniqueFd.h"
#include "orbtool/SocketAddress.h"

namespace {

using orbtool::SocketAddress;

UniqueFd newSocket() { return UniqueFd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0)); }

class ToolSocketAddress : public testing::Test {
 protected:
  void SetUp() override {
    char pattern[] = "/tmp/orb-address-XXXXXX";
    ASSERT_NE(nullptr, ::mkdtemp(pattern));
    mFolder = pattern;
  }
  void TearDown() override { std::filesystem::remove_all(mFolder); }
  std::string pathOf(size_t size) const {
    return mFolder + "/" + std::string(size - mFolder.size() - 1, 'x');
  }

  std::string mFolder;
};

TEST_F(ToolSocketAddress, LongestPathIsWhereItSays) {
  const std::string path = pathOf(SocketAddress::kMaxPath);
  const SocketAddress address(path);
  const UniqueFd listener = newSocket();
  ASSERT_EQ(0, address.bind(listener.get()));
  EXPECT_TRUE(std::filesystem::is_socket(path));
  ASSERT_EQ(0, ::listen(listener.get(), 1));
  EXPECT_EQ(0, address.connect(newSocket().get()));
}

TEST_F(ToolSocketAddress, PathThatIsTooLongLeadsNowhere) {
  const SocketAddress address(pathOf(SocketAddress::kMaxPath + 1));
  const UniqueFd fd = newSocket();
  EXPECT_EQ(-1, address.bind(fd.get()));
  EXPECT_EQ(ENAMETOOLONG, errno);
  errno = 0;
  EXPECT_EQ(-1, address.connect(fd.get()));
  EXPECT_EQ(ENAMETOOLONG, errno);
  EXPECT_TRUE(std::filesystem::is_empty(mFolder)) << "not even under a part of it";
}

}  // namespace
