// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "EncryptedLogFile.h"

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <utility>

namespace {

// O_NONBLOCK: the name may be that of a pipe, whose open would wait for a reader.
constexpr int kOpenFlags = O_WRONLY | O_APPEND | O_NOFOLLOW | O_CLOEXEC | O_NONBLOCK;
constexpr mode_t kMode = 0666;  // less the process's mask

}  // namespace

// A write beyond the limit on file sizes raises SIGXFSZ on the thread that writes, which by default
// ends the process. While this object exists, the thread blocks the signal, and discard() removes
// one that a write has raised. The limit is not read before the write instead: that would cost as
// much, and the limit may change at any time, also from outside. A local variable of one thread; no
// lock.
class EncryptedLogFile::SizeSignal {
 public:
  SizeSignal() {
    sigemptyset(&mSignal);
    sigaddset(&mSignal, SIGXFSZ);
    mBlocks =
        pthread_sigmask(SIG_BLOCK, &mSignal, &mFormer) == 0 && sigismember(&mFormer, SIGXFSZ) == 0;
    // If the thread has blocked the signal before, one may be pending already; that one stays.
    sigset_t pending;
    mWaited = !mBlocks && (sigpending(&pending) != 0 || sigismember(&pending, SIGXFSZ) != 0);
  }
  SizeSignal(const SizeSignal&) = delete;
  SizeSignal& operator=(const SizeSignal&) = delete;
  ~SizeSignal() {
    if (mBlocks) pthread_sigmask(SIG_SETMASK, &mFormer, nullptr);
  }

  // To be called after a write that the limit has refused. sigtimedwait() takes the signal of the
  // thread before one of the process.
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

// A file that is shorter than the header has lost it. So, perhaps, has a file that was shortened
// and has no more than the size of a header and the latest piece: it may have been emptied between
// the check of the file and the write of that piece.
bool EncryptedLogFile::needsHeader() const {
  if (mHeader.empty()) return false;
  const auto header = static_cast<off_t>(mHeader.size());
  return !mBegun || mSize < header || (mSize < mEnd && mSize < header + mLatest);
}

// What is in a file without a header cannot be read, so it is cut off; but not from a file that
// this object has not made.
bool EncryptedLogFile::putHeader(SizeSignal& signal) {
  const bool useless = mBegun || mSize < static_cast<off_t>(mHeader.size());
  if (mSize > 0 && useless && (!mMade || !cutAt(0))) return false;
  mBegun = put(signal, mHeader.data(), mHeader.size());
  return mBegun;
}

// Writes the piece. False if that failed; a part that was written is cut off again, because what
// follows an incomplete piece cannot be read.
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

// If it fails, append() tries again before the next piece.
bool EncryptedLogFile::cutAt(off_t end) {
  const bool cut = ftruncate(mFd.get(), end) == 0;
  mRemains = cut ? -1 : end;
  if (cut) mSize = mEnd = end;
  return cut;
}

// Opens the file, or with O_CREAT and @p made a new one. False if there is no file that may be
// written to.
bool EncryptedLogFile::take(int flags, bool made) {
  // Above the standard streams: what the application prints must not get into the file.
  UniqueFd file(openAboveStandardStreams([&] { return open(mPath.c_str(), flags, kMode); }));
  FileStatus opened;
  if (file.get() < 0 || !opened.readOpenFile(file.get()) || !opened.isPlain()) return false;
  if (!made && opened.owner != geteuid()) return false;
  // The file may have been opened by a second name that was removed since. Now mPath is its only
  // name.
  FileStatus named;
  if (!isUnderTheName(opened, named)) return false;
  // Another file than before does not have the header of this run.
  if (!made && !named.isSameFile(mFile)) mBegun = false;
  mFd = std::move(file);
  mFile = named;
  mMade = made;
  mRemains = -1;
  mSize = mEnd = named.size;
  return true;
}

bool EncryptedLogFile::openFile() {
  create();
  if (mFd.get() >= 0) return true;
  return take(kOpenFlags, false);
}

// Whether the open file still has the name: it may have been removed or renamed, and another file
// or a link may have the name now.
bool EncryptedLogFile::isStill() {
  FileStatus named;
  if (mFd.get() < 0 || !isUnderTheName(mFile, named)) return false;
  mSize = named.size;
  return true;
}

// Whether this file has the name, and no other name; @p named is how it is now.
bool EncryptedLogFile::isUnderTheName(const FileStatus& file, FileStatus& named) const {
  return named.readName(mPath.c_str()) && named.isPlain() && named.isSameFile(file);
}
