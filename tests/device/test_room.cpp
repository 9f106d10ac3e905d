// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// test_room LOG SECONDS PROGRAM [ARGUMENT...]: runs one test on a device like scripts/sandbox on a
// desktop, but needs only the C library. The output goes to LOG.
//
// /dev, /data and /tmp are file systems in memory that only the test sees. The folder above
// ORB_TEST_FILES with the tests stays visible, and so do the devices that tests use. If the kernel
// does not support this, the real directories are used if they are empty, and emptied again. Exit
// status: that of the test, 124 after the time limit, 125 without such directories.
#include <fcntl.h>
#include <linux/capability.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <string>
#include <utility>
#include <vector>

namespace {

namespace fs = std::filesystem;

constexpr int kTooLong = 124;
constexpr int kNoRoom = 125;
constexpr char kSocketRoom[] = "/dev/socket";
const char* const kRooms[] = {kSocketRoom, "/data", "/tmp"};
const char* const kFolders[] = {"/data/vendor/orb_logs/main", "/data/vendor/orb_logs/other",
                                "/data/vendor/orb_logs/config"};

[[noreturn]] void refuse(const std::string& reason) {
  std::fprintf(stderr, "test_room: %s\n", reason.c_str());
  std::exit(kNoRoom);
}

bool isWithin(const fs::path& path, const fs::path& room) {
  return std::mismatch(room.begin(), room.end(), path.begin(), path.end()).first == room.end();
}

// A /dev in which /dev/socket is a directory that a test can remove.
void takePrivateDevices() {
  constexpr const char* kDevices[] = {"null", "zero", "full", "random", "urandom", "tty"};
  std::vector<std::pair<std::string, int>> devices;
  for (const char* name : kDevices) {
    const std::string path = std::string("/dev/") + name;
    const int device = open(path.c_str(), O_PATH | O_CLOEXEC);
    if (device >= 0) devices.emplace_back(path, device);
  }
  if (mount("tmpfs", "/dev", "tmpfs", 0, "mode=755") != 0) refuse("no /dev");
  for (const auto& [path, device] : devices) {
    const std::string source = "/proc/self/fd/" + std::to_string(device);
    if (mknod(path.c_str(), S_IFREG | 0600, 0) != 0 ||
        mount(source.c_str(), path.c_str(), nullptr, MS_BIND, nullptr) != 0)
      refuse("cannot keep " + path);
    close(device);
  }
  // The master of a terminal needs its slaves beside it, so both are new.
  if (mkdir("/dev/pts", 0755) != 0 || symlink("pts/ptmx", "/dev/ptmx") != 0 ||
      mount("devpts", "/dev/pts", "devpts", 0, "newinstance,ptmxmode=0666,mode=620") != 0)
    refuse("no terminals");
  if (mkdir(kSocketRoom, 0755) != 0 || chmod(kSocketRoom, 01777) != 0) refuse("no /dev/socket");
}

// After a partial failure a test could change the device's own files.
bool takePrivateRooms() {
  const char* const files = std::getenv("ORB_TEST_FILES");
  const fs::path tests = files != nullptr ? fs::path(files).parent_path() : fs::path();
  if (unshare(CLONE_NEWNS) != 0) return false;
  if (mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0) return false;
  // Only descriptors opened in these mounts can be mounted again in them.
  const int opened = open(tests.c_str(), O_PATH | O_CLOEXEC);
  takePrivateDevices();
  for (const char* room : kRooms) {
    if (room == kSocketRoom) continue;
    if (mount("tmpfs", room, "tmpfs", 0, "mode=1777") != 0) refuse(std::string("no ") + room);
    if (opened < 0 || !isWithin(tests, room)) continue;
    const std::string source = "/proc/self/fd/" + std::to_string(opened);
    std::error_code error;
    fs::create_directories(tests, error);
    if (mount(source.c_str(), tests.c_str(), nullptr, MS_BIND, nullptr) != 0)
      refuse("cannot keep " + tests.string());
  }
  return true;
}

void empty(const char* room) {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator(room, error)) fs::remove_all(entry, error);
}

// True if the device's real directories are used.
bool takeRooms() {
  std::error_code error;
  for (const char* room : kRooms) {
    fs::create_directories(room, error);
    if (!fs::is_directory(room, error)) refuse(std::string("cannot make ") + room);
  }
  const bool shared = !takePrivateRooms();
  for (const char* room : kRooms) {
    if (shared && !fs::is_empty(room, error))
      refuse(std::string(room) + " is not empty, and this kernel gives no other");
  }
  for (const char* folder : kFolders) {
    if (!fs::create_directories(folder, error)) refuse(std::string("cannot make ") + folder);
  }
  return shared;
}

// Tests must not depend on the privileges of root.
void dropCapabilities() {
  for (int capability = 0; prctl(PR_CAPBSET_DROP, capability, 0, 0, 0) == 0;) ++capability;
  __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
  __user_cap_data_struct none[_LINUX_CAPABILITY_U32S_3] = {};
  syscall(SYS_capset, &header, none);
}

[[noreturn]] void become(char** command, const char* log) {
  setsid();
  const int output = open(log, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0644);
  const int input = open("/dev/null", O_RDONLY | O_CLOEXEC);
  if (output < 0 || input < 0) refuse(std::string("cannot open ") + log);
  dup2(input, STDIN_FILENO);
  dup2(output, STDOUT_FILENO);
  dup2(output, STDERR_FILENO);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  dropCapabilities();
  execv(command[0], command);
  std::fprintf(stderr, "test_room: %s: %s\n", command[0], std::strerror(errno));
  _exit(kNoRoom);
}

// A monotonic clock, because a device can set its clock meanwhile.
time_t now() {
  timespec time = {};
  clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec;
}

// The status of the child, or kTooLong. SIGCHLD is blocked.
int await(pid_t child, int seconds) {
  sigset_t ended;
  sigemptyset(&ended);
  sigaddset(&ended, SIGCHLD);
  const time_t limit = now() + seconds;
  for (int status = 0;;) {
    if (waitpid(child, &status, WNOHANG) == child)
      return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
    const timespec left = {limit - now(), 0};
    if (left.tv_sec <= 0) return kTooLong;
    sigtimedwait(&ended, nullptr, &left);
  }
}

// Processes that the test started in other sessions became children of this process.
void killChildren() {
  std::error_code error;
  for (const auto& entry : fs::directory_iterator("/proc", error)) {
    const pid_t process = std::atoi(entry.path().filename().c_str());
    if (process <= 0) continue;
    std::ifstream status(entry.path() / "status");
    for (std::string line; std::getline(status, line);) {
      if (line == "PPid:\t" + std::to_string(getpid())) kill(process, SIGKILL);
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  const int seconds = argc > 3 ? std::atoi(argv[2]) : 0;
  if (seconds <= 0) {
    std::fputs("Usage: test_room LOG SECONDS PROGRAM [ARGUMENT...]\n", stderr);
    return 2;
  }
  std::error_code error;
  fs::create_directories(fs::path(argv[1]).parent_path(), error);
  const bool shared = takeRooms();
  sigset_t ended;
  sigemptyset(&ended);
  sigaddset(&ended, SIGCHLD);
  sigprocmask(SIG_BLOCK, &ended, nullptr);
  prctl(PR_SET_CHILD_SUBREAPER, 1, 0, 0, 0);
  const pid_t child = fork();
  if (child < 0) refuse("cannot fork");
  if (child == 0) become(argv + 3, argv[1]);
  const int status = await(child, seconds);
  kill(-child, SIGKILL);
  // A killed process can leave children.
  do {
    killChildren();
  } while (waitpid(-1, nullptr, 0) > 0);
  if (shared) {
    for (const char* room : kRooms) empty(room);
  }
  return status;
}
