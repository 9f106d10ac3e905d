// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// Waiting for changes of log files.
#include <poll.h>
#include <sys/inotify.h>
#include <sys/signalfd.h>
#include <unistd.h>

#include <array>
#include <csignal>
#include <ctime>
#include <filesystem>
#include <system_error>

#include "UniqueFd.h"
#include "orblog/Decryption.h"

namespace orblog {
namespace {

namespace fs = std::filesystem;

// Some file systems do not report changes, so files are also checked at this interval.
constexpr int kLookIntervalMs = 1000;
constexpr int kLookIntervalBlindMs = 200;
constexpr uint32_t kChanges =
    IN_CREATE | IN_DELETE | IN_MODIFY | IN_MOVED_FROM | IN_MOVED_TO | IN_ONLYDIR;

void watch(int notifier, const fs::path& directory) {
  // A directory that is already watched stays watched. If it cannot be watched, it is checked at
  // the interval.
  (void)inotify_add_watch(notifier, directory.empty() ? "." : directory.c_str(), kChanges);
}

// The directories in which files of the arguments can change or appear.
void watchAll(int notifier, const std::vector<std::string>& arguments) {
  for (const std::string& argument : arguments) {
    std::error_code error;
    if (!fs::is_directory(argument, error)) {
      watch(notifier, fs::path(argument).parent_path());
      continue;
    }
    watch(notifier, argument);
    for (fs::directory_iterator it(argument, error), none; !error && it != none;
         it.increment(error)) {
      std::error_code ignored;
      if (it->is_directory(ignored)) watch(notifier, it->path());
    }
  }
}

void takeEvents(int notifier) {
  std::array<char, 4096> events;
  while (read(notifier, events.data(), events.size()) > 0) {
  }
}

// Whether one of these blocked signals is pending; needs no descriptor.
bool hasCome(const sigset_t& signals) {
  const timespec now = {0, 0};
  return sigtimedwait(&signals, nullptr, &now) > 0;
}

}  // namespace

bool follow(Decryption& decryption, const std::vector<std::string>& arguments) {
  sigset_t ending;
  sigemptyset(&ending);
  sigaddset(&ending, SIGINT);
  sigaddset(&ending, SIGTERM);
  const UniqueFd signals(signalfd(-1, &ending, SFD_CLOEXEC));
  const UniqueFd notifier(inotify_init1(IN_CLOEXEC | IN_NONBLOCK));
  const bool blind = notifier.get() < 0;
  // All descriptors can be in use by files.
  const bool deaf = signals.get() < 0;
  // poll ignores a descriptor of -1.
  std::array<pollfd, 2> waited = {{{signals.get(), POLLIN, 0}, {notifier.get(), POLLIN, 0}}};
  while (true) {
    // Watch first, then read, so that a change in between is not missed.
    if (!blind) watchAll(notifier.get(), arguments);
    if (!decryption.readNew(arguments)) return false;
    (void)poll(waited.data(), waited.size(),
               blind || deaf ? kLookIntervalBlindMs : kLookIntervalMs);
    if (waited[0].revents != 0 || (deaf && hasCome(ending))) break;
    if (waited[1].revents != 0) takeEvents(notifier.get());
  }
  decryption.finish();
  return true;
}

}  // namespace orblog
