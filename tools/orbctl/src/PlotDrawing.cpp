// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <spawn.h>
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstring>

#include "UniqueFd.h"
#include "orbctl/Plot.h"

extern char** environ;

namespace orbctl {
namespace {

// A file without a name. With files instead of pipes, neither side waits for the other.
UniqueFd memoryFile() { return UniqueFd(memfd_create("orbctl", MFD_CLOEXEC)); }

bool writeAll(int fd, const std::string& text) {
  for (size_t at = 0; at < text.size();) {
    const ssize_t size = write(fd, text.data() + at, text.size() - at);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return false;
    at += static_cast<size_t>(size);
  }
  return lseek(fd, 0, SEEK_SET) == 0;
}

std::string readAll(int fd) {
  std::string text;
  std::array<char, 65536> bytes;
  for (;;) {
    const ssize_t size = read(fd, bytes.data(), bytes.size());
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return text;
    text.append(bytes.data(), static_cast<size_t>(size));
  }
}

// Starts gnuplot with the three files as its streams, and without the user's settings.
int start(int in, int out, int error, pid_t& process) {
  posix_spawn_file_actions_t actions;
  int result = posix_spawn_file_actions_init(&actions);
  if (result != 0) return result;
  const std::array<int, 3> streams = {in, out, error};
  for (int number = 0; number < 3 && result == 0; ++number)
    result =
        posix_spawn_file_actions_adddup2(&actions, streams[static_cast<size_t>(number)], number);
  std::string name = "gnuplot", defaults = "-d", script = "-";
  const std::array<char*, 4> words = {name.data(), defaults.data(), script.data(), nullptr};
  if (result == 0)
    result = posix_spawnp(&process, name.c_str(), &actions, nullptr, words.data(), environ);
  posix_spawn_file_actions_destroy(&actions);
  return result;
}

// The first line of gnuplot's error output, which can have any text.
std::string complaintOf(int fd) {
  if (lseek(fd, 0, SEEK_SET) != 0) return "";
  const std::string text = readAll(fd);
  const size_t at = text.find("line ");
  std::string line = text.substr(at == std::string::npos ? 0 : at);
  line = line.substr(0, line.find('\n'));
  for (char& c : line) {
    if (c < ' ' || c > '~') c = '?';
  }
  return line;
}

}  // namespace

bool drawPlot(const std::string& script, std::string& picture, std::string& reason) {
  const UniqueFd in = memoryFile(), out = memoryFile(), error = memoryFile();
  if (in.get() < 0 || out.get() < 0 || error.get() < 0 || !writeAll(in.get(), script)) {
    reason = std::string("cannot pass the data to gnuplot: ") + std::strerror(errno);
    return false;
  }
  pid_t process = 0;
  const int result = start(in.get(), out.get(), error.get(), process);
  int status = 0;
  if (result == 0) {
    while (waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
  }
  // Some C libraries notice only in the child that the program does not exist.
  if (result == ENOENT || (result == 0 && WIFEXITED(status) && WEXITSTATUS(status) == 127)) {
    reason = "gnuplot is not on the path: install it (Debian: gnuplot-nox)";
    return false;
  }
  if (result != 0) {
    reason = std::string("gnuplot cannot be started: ") + std::strerror(result);
    return false;
  }
  if (lseek(out.get(), 0, SEEK_SET) == 0) picture = readAll(out.get());
  if (WIFEXITED(status) && WEXITSTATUS(status) == 0 && !picture.empty()) return true;
  reason = "gnuplot failed: " + complaintOf(error.get());
  return false;
}

}  // namespace orbctl
