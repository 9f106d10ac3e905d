// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "EncryptedLogFile.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <utility>

namespace {

// Without waiting: what stands under the name may be a pipe.
constexpr int kOpenFlags = O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
constexpr mode_t kMode = 0666;  // less the process's mask

// A file with another name as well may be anybody's.
bool isPlain(const struct stat& status) { return S_ISREG(status.st_mode) && status.st_nlink == 1; }

}  // namespace

// A write beyond the limit on file sizes raises SIGXFSZ on the thread that writes, and by default
// that is the end of the process. While this object exists the thread does not take the signal, and
// one that a write has raised is gone before the thread takes any again. The limit may change at
// any time, from outside too, so it is not asked for: that would cost as much and could be wrong by
// the time of the write.
class EncryptedLogFile::SizeSignal {
 public:
  SizeSignal() {
    sigemptyset(&mSignal);
    sigaddset(&mSignal, SIGXFSZ);
    mBlocks =
        pthread_sigmask(SIG_BLOCK, &mSignal, &mFormer) == 0 && sigismember(&mFormer, SIGXFSZ) == 0;
    // Only a thread that does not take the signal anyway can have one waiting; that one stays.
    sigset_t pending;
    mWaited = !mBlocks && (sigpending(&pending) != 0 || sigismember(&pending, SIGXFSZ) != 0);
  }
  SizeSignal(const SizeSignal&) = delete;
  SizeSignal& operator=(const SizeSignal&) = delete;
  ~SizeSignal() {
    if (mBlocks) pthread_sigmask(SIG_SETMASK, &mFormer, nullptr);
  }

  // After a write that was refused for the limit. The thread's own signal comes before the
  // process's.
  void discard() {
    const timespec now = {};
    while (!mWaited && sigtimedwait(&mSignal, nullptr, &now) < 0 && errno == EINTR) {
    }
  }

 private:
  sigset_t mSignal;
  sigset_t mFormer;
  bool mBlocks;
  bool mWaited;
};

EncryptedLogFile::EncryptedLogFile(std::string path, std::vector<uint8_t> header)
    : mPath(std::move(path)), mHeader(std::move(header)) {}

void EncryptedLogFile::create() {
  close();
  take(kOpenFlags | O_CREAT | O_EXCL, true);
}

bool EncryptedLogFile::start() {
  close();
  mBegun = false;
  unlink(mPath.c_str());
  return append(nullptr, 0);
}

bool EncryptedLogFile::append(const uint8_t* data, size_t size) {
  if (!isStill() && !openFile()) return false;
  SizeSignal signal;
  if (mRemains >= 0 && mRemains < mSize && !cutAt(mRemains)) return false;
  mRemains = -1;
  if (needsHeader() && !putHeader(signal)) return false;
  return size == 0 || put(signal, data, size);
}

void EncryptedLogFile::close() { mFd.reset(); }

// A file that was shortened has lost its header, too, when it is shorter than that; and when it has
// just room for a header and the latest piece, for it may have been emptied in the very moment
// between the look at it and that piece.
bool EncryptedLogFile::needsHeader() const {
  if (mHeader.empty()) return false;
  const auto header = static_cast<off_t>(mHeader.size());
  return !mBegun || mSize < header || (mSize < mEnd && mSize < header + mLatest);
}

// What stands in a file without a header nobody can read, so it goes. Somebody else's file stays as
// it is all the same.
bool EncryptedLogFile::putHeader(SizeSignal& signal) {
  const bool useless = mBegun || mSize < static_cast<off_t>(mHeader.size());
  if (mSize > 0 && useless && (!mMade || !cutAt(0))) return false;
  mBegun = put(signal, mHeader.data(), mHeader.size());
  return mBegun;
}

// False with nothing of the piece in the file: what follows half a piece could not be read.
bool EncryptedLogFile::put(SizeSignal& signal, const uint8_t* data, size_t size) {
  ssize_t written = 0;
  do {
    written = write(mFd.get(), data, size);
  } while (written < 0 && errno == EINTR);
  if (written == static_cast<ssize_t>(size)) {
    mLatest = written;
    mSize += written;
    mEnd = mSize;
    return true;
  }
  if (written < 0 && errno == EFBIG) signal.discard();
  if (written > 0) {
    const off_t end = lseek(mFd.get(), 0, SEEK_CUR);
    if (end >= written) cutAt(end - written);
  }
  return false;
}

// What cannot be cut off now is so before the next piece.
bool EncryptedLogFile::cutAt(off_t end) {
  const bool cut = ftruncate(mFd.get(), end) == 0;
  mRemains = cut ? -1 : end;
  if (cut) mSize = mEnd = end;
  return cut;
}

// Opens what has the name, or a new file; not if nothing may be written to it.
bool EncryptedLogFile::take(int flags, bool made) {
  // What the application prints meanwhile must not get into a log that it has no stream for.
  UniqueFd file(openAboveStandardStreams([&] { return open(mPath.c_str(), flags, kMode); }));
  struct stat status = {};
  if (file.get() < 0 || fstat(file.get(), &status) != 0 || !isPlain(status)) return false;
  if (!made && status.st_uid != geteuid()) return false;
  // A second name may have been taken away since the file was opened by it: its only name is this.
  if (!isUnderTheName(status)) return false;
  // Another file under the name does not have this run's header.
  if (!made && (status.st_dev != mDevice || status.st_ino != mInode)) mBegun = false;
  mFd = std::move(file);
  mMade = made;
  mRemains = -1;
  mSize = mEnd = status.st_size;
  mDevice = status.st_dev;
  mInode = status.st_ino;
  return true;
}

bool EncryptedLogFile::openFile() {
  create();
  if (mFd.get() >= 0) return true;
  return take(kOpenFlags, false);
}

// The file may have been removed or renamed, and another one, or a link, may have its name by now.
bool EncryptedLogFile::isStill() {
  struct stat status = {};
  status.st_ino = mInode;
  status.st_dev = mDevice;
  if (mFd.get() < 0 || !isUnderTheName(status)) return false;
  mSize = status.st_size;
  return true;
}

// Whether the file of @p status, of which device and inode count, has the name and no other one; if
// so, @p status is its present one.
bool EncryptedLogFile::isUnderTheName(struct stat& status) const {
  struct stat named = {};
  if (lstat(mPath.c_str(), &named) != 0 || !isPlain(named) || named.st_ino != status.st_ino ||
      named.st_dev != status.st_dev) {
    return false;
  }
  status = named;
  return true;
}
