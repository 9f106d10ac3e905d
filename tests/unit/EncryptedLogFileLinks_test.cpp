// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A user who can write to the folder cannot redirect the log to another file.
#include <fcntl.h>

#include <cstdarg>

#include "EncryptedLogFileFixture.h"

namespace {

std::function<void()> beforeLook;  // called once when the next file was opened for writing

}  // namespace

extern "C" int openThenAct(const char* path, int flags, ...) __asm__("open");
int openThenAct(const char* path, int flags, ...) {
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & O_CREAT) != 0 ? va_arg(more, mode_t) : 0;
  va_end(more);
  const int fd = openat(AT_FDCWD, path, flags, mode);
  std::function<void()> action;
  if (fd >= 0 && (flags & O_ACCMODE) == O_WRONLY) action.swap(beforeLook);
  if (action) action();
  return fd;
}

namespace logfile {
namespace {

class EncryptedLogFileLinksTest : public EncryptedLogFileFixture {
 protected:
  EncryptedLogFileLinksTest()
      : EncryptedLogFileFixture("[header]"), foreign(directory / "foreign") {
    leave(foreign, "of somebody else");
  }
  void expectForeignAsItWas() const { EXPECT_EQ("of somebody else", content(foreign)); }

  const fs::path foreign;
};

TEST_F(EncryptedLogFileLinksTest, NothingIsAppendedThroughASymbolicLink) {
  fs::create_symlink(foreign, path);
  file.create();
  EXPECT_FALSE(append("text"));
  expectForeignAsItWas();
  EXPECT_TRUE(fs::is_symlink(path));
}

TEST_F(EncryptedLogFileLinksTest, NothingIsMadeWhereALinkLeadsNowhere) {
  const fs::path nowhere = directory / "nowhere";
  fs::create_symlink(nowhere, path);
  file.create();
  EXPECT_FALSE(append("text"));
  EXPECT_FALSE(fs::exists(nowhere));
}

TEST_F(EncryptedLogFileLinksTest, StartPutsAFileInALinksPlace) {
  for (const fs::path& target : {foreign, directory / "nowhere"}) {
    fs::remove(path);
    fs::create_symlink(target, path);
    EXPECT_TRUE(file.start());
    EXPECT_TRUE(append("text"));
    EXPECT_FALSE(fs::is_symlink(path));
    EXPECT_EQ("[header]text", content());
  }
  expectForeignAsItWas();
  EXPECT_FALSE(fs::exists(directory / "nowhere"));
}

TEST_F(EncryptedLogFileLinksTest, LinkThatTakesTheNameOfAnOpenFileIsNotFollowed) {
  file.start();
  fs::remove(path);
  fs::create_symlink(foreign, path);
  EXPECT_FALSE(append("text"));
  expectForeignAsItWas();
  fs::remove(path);
  EXPECT_TRUE(append("text"));
  EXPECT_EQ("[header]text", content());
}

TEST_F(EncryptedLogFileLinksTest, NotEvenALinkToTheLogItself) {
  file.start();
  fs::rename(path, directory / "moved");
  fs::create_symlink("moved", path);
  EXPECT_FALSE(append("text"));
  EXPECT_EQ("[header]", content(directory / "moved"));
}

TEST_F(EncryptedLogFileLinksTest, FileWithASecondNameIsNotWritten) {
  fs::create_hard_link(foreign, path);
  file.create();
  EXPECT_FALSE(append("text"));
  expectForeignAsItWas();
  EXPECT_TRUE(file.start());
  EXPECT_TRUE(append("text"));
  EXPECT_EQ("[header]text", content());
  expectForeignAsItWas();
}

// At that time the file has only its other name, which is not the log's.
TEST_F(EncryptedLogFileLinksTest, FileThatLosesTheNameWhileItIsOpenedIsNotWritten) {
  fs::create_hard_link(foreign, path);
  file.create();
  bool done = false;
  beforeLook = [&] { done = fs::remove(path); };
  EXPECT_FALSE(append("text"));
  EXPECT_TRUE(done);
  expectForeignAsItWas();
  EXPECT_TRUE(append("text"));
  EXPECT_EQ("[header]text", content());
}

TEST_F(EncryptedLogFileLinksTest, OpenFileThatGetsASecondNameIsNotWrittenUntilThatIsGone) {
  file.start();
  fs::create_hard_link(path, directory / "second");
  EXPECT_FALSE(append("lost"));
  EXPECT_EQ("[header]", content());
  fs::remove(directory / "second");
  EXPECT_TRUE(append("text"));
  EXPECT_EQ("[header]text", content());
}

TEST_F(EncryptedLogFileLinksTest, FileOfAnotherUserIsNotWritten) {
  leave(path, "[header]text");
  user = geteuid() + 1;
  EXPECT_FALSE(append("more"));
  EXPECT_EQ("[header]text", content());
  user.reset();
  EXPECT_TRUE(append("more"));
  EXPECT_EQ("[header]text[header]more", content());
}

// On some file systems, all files belong to one user, whoever creates them.
TEST_F(EncryptedLogFileLinksTest, FileThatWasMadeHereMayBelongToAnybody) {
  user = geteuid() + 1;
  EXPECT_TRUE(file.start());
  EXPECT_TRUE(append("text"));
  EXPECT_EQ("[header]text", content());
}

TEST_F(EncryptedLogFileLinksTest, NothingIsCutShortBehindALink) {
  file.start();
  append("one");
  fs::remove(path);
  leave(directory / "short", "abc");
  fs::create_hard_link(directory / "short", path);
  EXPECT_FALSE(append("two"));
  fs::remove(path);
  fs::create_symlink("short", path);
  EXPECT_FALSE(append("two"));
  EXPECT_EQ("abc", content(directory / "short"));
}

}  // namespace
}  // namespace logfile
