// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orblog/KeyFolder.h"

#include <fcntl.h>
#include <openssl/crypto.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <system_error>
#include <utility>

namespace orblog {
namespace {

namespace fs = std::filesystem;
constexpr char kWorkPrefix[] = ".orblog-keygen-";
constexpr const char* kNames[] = {"orb_log_private.pem", "orb_log_public.pem", "orb_log_config"};
constexpr mode_t kModes[] = {0600, 0644, 0644};

// Blocks signals that end the program or report a limit, during the lifetime of this object.
class SignalsHeld {
 public:
  SignalsHeld() {
    sigset_t held;
    sigemptyset(&held);
    for (const int signal : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGXFSZ}) sigaddset(&held, signal);
    sigprocmask(SIG_BLOCK, &held, &mFormer);
  }
  SignalsHeld(const SignalsHeld&) = delete;
  SignalsHeld& operator=(const SignalsHeld&) = delete;
  ~SignalsHeld() { sigprocmask(SIG_SETMASK, &mFormer, nullptr); }

 private:
  sigset_t mFormer;
};

bool exists(const std::string& path) {
  struct stat status = {};
  return lstat(path.c_str(), &status) == 0;
}

bool isSameFile(const std::string& one, const std::string& other) {
  struct stat first = {}, second = {};
  return lstat(one.c_str(), &first) == 0 && lstat(other.c_str(), &second) == 0 &&
         first.st_dev == second.st_dev && first.st_ino == second.st_ino;
}

// The bytes of a small file; wiped because they may be a private key.
class Contents {
 public:
  explicit Contents(const std::string& path) {
    const UniqueFd file(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK));
    ssize_t size = -1;
    while (file.get() >= 0 && mSize < mBytes.size() &&
           ((size = read(file.get(), mBytes.data() + mSize, mBytes.size() - mSize)) > 0 ||
            (size < 0 && errno == EINTR))) {
      if (size > 0) mSize += static_cast<size_t>(size);
    }
    mWhole = size == 0;
  }
  Contents(const Contents&) = delete;
  Contents& operator=(const Contents&) = delete;
  ~Contents() { OPENSSL_cleanse(mBytes.data(), mBytes.size()); }
  bool operator==(const Contents& other) const {
    // An empty file is never equal: it may be the result of a full disk, or of another program.
    return mWhole && other.mWhole && mSize > 0 && mSize == other.mSize &&
           std::memcmp(mBytes.data(), other.mBytes.data(), mSize) == 0;
  }

 private:
  std::array<char, 16384> mBytes;
  size_t mSize = 0;
  bool mWhole = false;
};

// Every file system supports one of the two ways, also those without hard links. False if `to`
// exists.
bool moveToFreeName(const std::string& from, const std::string& to) {
#ifdef SYS_renameat2
  constexpr unsigned kNoReplace = 1;  // RENAME_NOREPLACE, which some C libraries lack
  if (syscall(SYS_renameat2, AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), kNoReplace) == 0)
    return true;
  if (errno != ENOSYS && errno != EINVAL) return false;
#endif
  return link(from.c_str(), to.c_str()) == 0 && unlink(from.c_str()) == 0;
}

// Creates a file and syncs it to the disk.
bool writeNew(const std::string& path, mode_t mode, ByteView bytes) {
  const UniqueFd file(
      open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode));
  if (file.get() < 0) return false;
  while (bytes.size > 0) {
    const ssize_t size = write(file.get(), bytes.data, bytes.size);
    if (size < 0 && errno != EINTR) return false;
    if (size > 0) bytes = bytes.from(static_cast<size_t>(size));
  }
  return fsync(file.get()) == 0;
}

}  // namespace

KeyFiles::KeyFiles(const std::string& directory)
    : privateKey(directory + "/" + kNames[0]),
      publicKey(directory + "/" + kNames[1]),
      configuration(directory + "/" + kNames[2]) {}

// Contains for each of the three names, if needed:
//   new.NAME     the file that this run makes. The configuration is moved to its name, and with
// that
//                the run is complete. The other two get their names as hard links, so that files of
//                this run can be recognised.
//   put.NAME     a copy that is moved, on a file system without hard links
//   former.NAME  the file that had the name before
class KeyFolder::Work {
 public:
  Work(const KeyFolder& folder, std::string path) : mFolder(folder), mPath(std::move(path)) {}
  const std::string& path() const { return mPath; }
  const std::string& failed() const { return mFailed; }

  bool write(const std::array<ByteView, 3>& contents) {
    for (const File file : {kPrivateKey, kPublicKey, kConfiguration}) {
      if (!writeNew(fresh(file), kModes[file], contents[file])) return fail(file);
    }
    return true;
  }
  bool publish(const std::array<ByteView, 3>& contents) {
    for (const File file : {kConfiguration, kPublicKey, kPrivateKey}) {
      if (mFolder.mReplaces && rename(final(file), former(file).c_str()) != 0 && errno != ENOENT)
        return fail(file);
    }
    for (const File file : {kPrivateKey, kPublicKey}) {
      if (!give(file, contents[file])) return fail(file);
    }
    // After a loss of power there must be no configuration without its private key.
    (void)fsync(mFolder.mLock.get());
    return moveToFreeName(fresh(kConfiguration), final(kConfiguration)) || fail(kConfiguration);
  }
  // Either nothing is done or everything.
  bool isHalfDone() const {
    return exists(fresh(kConfiguration)) &&
           !isSameFile(fresh(kConfiguration), final(kConfiguration));
  }
  // Removes the files of this run and restores the former ones. Files that others wrote in the
  // meantime stay. False if the name of a former file is in use; the former file then stays here.
  bool undo() {
    for (const File file : {kConfiguration, kPublicKey, kPrivateKey}) {
      if (isOurs(file)) (void)unlink(final(file));
    }
    bool undone = true;
    for (const File file : {kPrivateKey, kPublicKey, kConfiguration})
      undone = (!exists(former(file)) || giveBack(file)) && undone;
    return undone;
  }
  void remove() {
    for (const File file : {kPrivateKey, kPublicKey, kConfiguration}) {
      (void)unlink(former(file).c_str());
      (void)unlink(copy(file).c_str());
    }
    // Removed last, because these files show that there is something to undo.
    for (const File file : {kPrivateKey, kPublicKey, kConfiguration})
      (void)unlink(fresh(file).c_str());
    (void)rmdir(mPath.c_str());
  }

 private:
  std::string fresh(File file) const { return mPath + "/new." + kNames[file]; }
  std::string copy(File file) const { return mPath + "/put." + kNames[file]; }
  std::string former(File file) const { return mPath + "/former." + kNames[file]; }
  const char* final(File file) const { return mFolder.mPaths[file].c_str(); }

  bool fail(File file) {
    mFailed = mFolder.mPaths[file] + ": " + std::strerror(errno);
    return false;
  }
  bool give(File file, ByteView contents) {
    if (link(fresh(file).c_str(), final(file)) == 0) return true;
    return errno != EEXIST && writeNew(copy(file), kModes[file], contents) &&
           moveToFreeName(copy(file), final(file));
  }
  bool giveBack(File file) {
    if (isSameFile(former(file), final(file))) return unlink(former(file).c_str()) == 0;
    return moveToFreeName(former(file), final(file));
  }
  bool isOurs(File file) const {
    return exists(fresh(file)) && Contents(fresh(file)) == Contents(final(file));
  }

  const KeyFolder& mFolder;
  const std::string mPath;
  std::string mFailed;
};

KeyFolder::KeyFolder(std::string directory)
    : mDirectory(std::move(directory)),
      mPaths({mDirectory + "/" + kNames[0], mDirectory + "/" + kNames[1],
              mDirectory + "/" + kNames[2]}) {}

bool KeyFolder::lock(bool replaces, std::string& error) {
  mLock.reset(open(mDirectory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  mLocked = mLock.get() >= 0 && flock(mLock.get(), LOCK_EX | LOCK_NB) == 0;
  if (mLocked) return true;
  if (mLock.get() >= 0 && errno == EWOULDBLOCK) {
    error = mDirectory + ": another orblog keygen is writing there";
    return false;
  }
  // Some network file systems have no locks on directories. Then existing files are never replaced,
  // and that is enough unless files are moved away first.
  if (replaces)
    error = mDirectory + ": cannot be locked, which --force needs: " + std::strerror(errno);
  return !replaces;
}

void KeyFolder::recover(std::vector<std::string>& notes) const {
  std::vector<std::string> left;
  std::error_code failure;
  for (fs::directory_iterator it(mDirectory, failure), none; !failure && it != none;
       it.increment(failure)) {
    struct stat status = {};
    const std::string name = it->path().filename().string();
    if (name.compare(0, sizeof kWorkPrefix - 1, kWorkPrefix) == 0 &&
        lstat(it->path().c_str(), &status) == 0 && S_ISDIR(status.st_mode) &&
        status.st_uid == geteuid())
      left.push_back(it->path().string());
  }
  for (const std::string& path : left) {
    Work work(*this, path);
    const bool wasHalfDone = work.isHalfDone();
    if (wasHalfDone && !work.undo()) {
      notes.push_back(path +
                      ": holds files that a killed run was about to replace; they cannot be "
                      "restored, because other files have their names");
      continue;
    }
    work.remove();
    notes.push_back(mDirectory + (wasHalfDone ? ": undid the changes of a killed run"
                                              : ": removed the files that a killed run left"));
  }
}

bool KeyFolder::take(bool replaces, std::vector<std::string>& notes, std::string& error) {
  mReplaces = replaces;
  if (!lock(replaces, error)) return false;
  const SignalsHeld held;
  if (mLocked) recover(notes);
  for (const std::string& path : mPaths) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0) continue;
    if (!replaces)
      error = path + " exists; --force replaces it, and then logs made for its key are lost";
    else if (S_ISDIR(status.st_mode))
      error = path + ": " + std::strerror(EISDIR);
    if (!error.empty()) return false;
  }
  return true;
}

bool KeyFolder::put(ByteView privateKey, ByteView publicKey, ByteView configuration,
                    std::string& error) {
  const SignalsHeld held;
  std::string path = mDirectory + "/" + kWorkPrefix + "XXXXXX";
  if (mkdtemp(path.data()) == nullptr) {
    error = mDirectory + ": " + std::strerror(errno);
    return false;
  }
  Work work(*this, path);
  const std::array<ByteView, 3> contents = {privateKey, publicKey, configuration};
  const bool done = work.write(contents) && work.publish(contents);
  if (!done) error = work.failed();
  if (!done && !work.undo()) {
    error += "; the files that were there are in " + work.path();
    return false;
  }
  if (done) (void)fsync(mLock.get());
  work.remove();
  return done;
}

}  // namespace orblog
