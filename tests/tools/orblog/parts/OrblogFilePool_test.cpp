// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Files that share a limited number of descriptors.
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <memory>
#include <optional>

#include "OrblogFiles.h"
#include "ProcessState.h"
#include "orblog/FilePool.h"

using namespace orblogtest;
using orblog::FilePool;
using orblog::PooledFile;

namespace {

class OrblogFilePool : public testing::Test {
 protected:
  OrblogFilePool() {
    EXPECT_EQ(getrlimit(RLIMIT_NOFILE, &mLimit), 0);
    limit(13);
    pool.emplace();
    limit(mLimit.rlim_cur);
    for (int i = 0; i < 10; ++i) {
      writeFile(path(i), {static_cast<uint8_t>('a' + i)});
      files.push_back(std::make_unique<PooledFile>(path(i).string(), *pool));
    }
  }
  ~OrblogFilePool() override { limit(mLimit.rlim_cur); }

  static void limit(rlim_t count) {
    rlimit wanted = {};
    ASSERT_EQ(getrlimit(RLIMIT_NOFILE, &wanted), 0);
    wanted.rlim_cur = count;
    ASSERT_EQ(setrlimit(RLIMIT_NOFILE, &wanted), 0);
  }
  fs::path path(int i) const { return directory / std::to_string(i); }
  // The contents of the file, or '-' if it cannot be read.
  char read(int i) {
    char byte = '-';
    return pread(files[static_cast<size_t>(i)]->fd(), &byte, 1, 0) == 1 ? byte : '-';
  }
  // Uses all descriptors except some.
  void closeFirst() {
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(read(i), 'a' + i);
  }

  TemporaryDirectory directory;
  std::optional<FilePool> pool;
  std::vector<std::unique_ptr<PooledFile>> files;

 private:
  rlimit mLimit = {};
};

TEST_F(OrblogFilePool, FilesTakeTurns) {
  EXPECT_EQ(pool->most(), 3u);
  const size_t before = processstate::descriptors();
  for (int round = 0; round < 3; ++round) {
    for (int i = 0; i < 10; ++i) {
      EXPECT_EQ(read(i), 'a' + i);
      EXPECT_LE(processstate::descriptors(), before + 3);
    }
  }
  files.clear();
  EXPECT_EQ(processstate::descriptors(), before);
}

TEST_F(OrblogFilePool, FileThatIsOpenIsReadWhateverBecomesOfItsName) {
  EXPECT_EQ(read(0), 'a');
  fs::remove(path(0));
  writeFile(path(0), {'x'});
  EXPECT_EQ(read(1), 'b');
  EXPECT_EQ(read(2), 'c');
  EXPECT_EQ(read(0), 'a');
  // It was used after the others.
  EXPECT_EQ(read(3), 'd');
  EXPECT_EQ(read(0), 'a');
  EXPECT_TRUE(files[0]->look());
  EXPECT_EQ(files[0]->status().st_nlink, 0u);
}

TEST_F(OrblogFilePool, FileThatLostItsNameWhileItWasClosedIsLost) {
  EXPECT_EQ(read(0), 'a');
  closeFirst();
  // Removed first, because a new file in its place could have the same inode.
  writeFile(directory / "new", {'x'});
  fs::rename(directory / "new", path(0));
  EXPECT_FALSE(files[0]->look());
  EXPECT_EQ(files[0]->fd(), -1);
  EXPECT_EQ(errno, ESTALE);
  fs::remove(path(0));
  EXPECT_FALSE(files[0]->look());
  EXPECT_EQ(files[0]->fd(), -1);
  EXPECT_EQ(errno, ENOENT);
  EXPECT_EQ(files[0]->status().st_size, 1);
}

TEST_F(OrblogFilePool, ClosedFileIsLookedAtByItsName) {
  EXPECT_EQ(read(0), 'a');
  closeFirst();
  writeFile(path(0), {'a', 'b', 'c'}, std::ios::app);
  EXPECT_EQ(files[0]->status().st_size, 1);
  EXPECT_TRUE(files[0]->look());
  EXPECT_EQ(files[0]->status().st_size, 4);
}

// Other code may have used descriptors within the limit.
TEST_F(OrblogFilePool, FileIsClosedWhenTheProcessHasNoDescriptorLeft) {
  EXPECT_EQ(read(0), 'a');
  EXPECT_EQ(read(1), 'b');
  limit(static_cast<rlim_t>(files[1]->fd()) + 1);
  for (int i = 2; i < 10; ++i) EXPECT_EQ(read(i), 'a' + i);
  EXPECT_EQ(read(0), 'a');
}

TEST_F(OrblogFilePool, RoomIsMadeOnlyWhenThereIsNone) {
  EXPECT_EQ(read(0), 'a');
  EXPECT_EQ(read(1), 'b');
  const size_t two = processstate::descriptors();
  pool->makeRoom();
  EXPECT_EQ(processstate::descriptors(), two);
  EXPECT_EQ(read(2), 'c');
  pool->makeRoom();
  EXPECT_EQ(processstate::descriptors(), two);
}

}  // namespace
