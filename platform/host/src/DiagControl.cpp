// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "DiagControl.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstring>
#include <memory>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "DiagRequest.h"
#include "Environment.h"
#include "UniqueFd.h"

namespace diaghost {

namespace {

constexpr int kForever = -1;
constexpr int kRequestTimeout = 2000;  // milliseconds; others wait while one client says nothing
constexpr int kPauseWithoutDescriptors = 100;
constexpr int kBacklog = 16;
constexpr std::chrono::seconds kStopTimeout{2};

// What the thread and those who start and stop it share; whoever lets go last frees it. `lock`
// guards `finished`; all else is constant while the thread runs.
struct Control {
  pid_t process = getpid();
  std::string path;
  struct stat identity = {};
  UniqueFd listener;
  UniqueFd stop;
  std::thread thread;
  std::mutex lock;
  std::condition_variable ended;
  bool finished = false;
};

struct Instance {
  std::mutex lock;
  std::shared_ptr<Control> control;
  std::vector<std::shared_ptr<Control>> inherited;  // a forked child's, of its parent: left alone
};

// Never destroyed, nor is what it holds, in a forked child.
Instance& instance() {
  static Instance* const object = new Instance;
  return *object;
}

const char* const namedSocket = host::keptVariable("ORB_DIAG_SOCKET");

std::string socketPath() {
  std::string path(namedSocket != nullptr ? namedSocket : "");
  const std::string process = std::to_string(getpid());
  for (size_t at; (at = path.find("%p")) != std::string::npos;) path.replace(at, 2, process);
  return path;
}

UniqueFd newSocket() {
  return UniqueFd(socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

// Whether a process that has ended without removing its socket left this one behind.
bool isStale(const sockaddr_un& address) {
  struct stat status = {};
  if (lstat(address.sun_path, &status) != 0 || !S_ISSOCK(status.st_mode)) return false;
  const UniqueFd probe = newSocket();
  return connect(probe.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0 &&
         errno == ECONNREFUSED;
}

bool bindTo(int fd, const sockaddr_un& address) {
  // Before bind: the socket never exists with other permissions.
  if (fchmod(fd, S_IRUSR | S_IWUSR) != 0) return false;
  const auto* const name = reinterpret_cast<const sockaddr*>(&address);
  if (bind(fd, name, sizeof address) == 0) return true;
  if (errno != EADDRINUSE) return false;
  if (isStale(address)) unlink(address.sun_path);
  return bind(fd, name, sizeof address) == 0;
}

// 0, or the reason why not as an errno value.
int openListener(Control& control) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  if (control.path.size() >= sizeof address.sun_path) return ENAMETOOLONG;
  std::memcpy(address.sun_path, control.path.data(), control.path.size());
  control.stop.reset(eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK));
  control.listener.reset(newSocket().release());
  if (control.stop.get() < 0 || control.listener.get() < 0) return errno;
  if (!bindTo(control.listener.get(), address)) return errno;
  if (stat(address.sun_path, &control.identity) != 0 ||
      listen(control.listener.get(), kBacklog) != 0) {
    const int error = errno;
    unlink(address.sun_path);
    return error;
  }
  return 0;
}

// Waits until there is something to read; false when the thread is to end or time is over.
bool waitFor(const Control& control, int fd, int timeout) {
  pollfd fds[] = {{control.stop.get(), POLLIN, 0}, {fd, POLLIN, 0}};
  int ready = 0;
  do {
    ready = poll(fds, 2, timeout);
  } while (ready < 0 && errno == EINTR);
  return ready > 0 && fds[0].revents == 0;
}

void serveClient(const Control& control, int client) {
  if (!waitFor(control, client, kRequestTimeout)) return;
  std::string request(kMaxRequestSize + 1, '\0');
  const ssize_t size = recv(client, request.data(), request.size(), 0);
  if (size <= 0) return;
  request.resize(static_cast<size_t>(size));
  const std::string reply = answer(request);
  send(client, reply.data(), reply.size(), MSG_NOSIGNAL | MSG_DONTWAIT);
}

void serve(const std::shared_ptr<Control>& control) {
  pthread_setname_np(pthread_self(), "orb-diag");
  while (waitFor(*control, control->listener.get(), kForever)) {
    const UniqueFd client(
        accept4(control->listener.get(), nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK));
    if (client.get() >= 0) {
      serveClient(*control, client.get());
    } else {
      waitFor(*control, -1, kPauseWithoutDescriptors);
    }
  }
  const std::lock_guard<std::mutex> lock(control->lock);
  control->finished = true;
  control->ended.notify_all();
}

// No handler of the application runs on the thread: it is born with every signal blocked.
bool startThread(const std::shared_ptr<Control>& control) {
  sigset_t all;
  sigset_t former;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &former);
  bool started = true;
  try {
    control->thread = std::thread([control] { serve(control); });
  } catch (const std::system_error&) {
    started = false;
  }
  pthread_sigmask(SIG_SETMASK, &former, nullptr);
  return started;
}

// Somebody else may have the name by now.
void removeSocket(const Control& control) {
  struct stat status = {};
  if (stat(control.path.c_str(), &status) == 0 && status.st_ino == control.identity.st_ino &&
      status.st_dev == control.identity.st_dev) {
    unlink(control.path.c_str());
  }
}

bool waitForEnd(Control& control) {
  std::unique_lock<std::mutex> lock(control.lock);
  return control.ended.wait_for(lock, kStopTimeout, [&] { return control.finished; });
}

}  // namespace

void startControl() {
  Instance& present = instance();
  const std::lock_guard<std::mutex> lock(present.lock);
  if (present.control && present.control->process == getpid()) return;
  const auto control = std::make_shared<Control>();
  control->path = socketPath();
  if (control->path.empty()) return;
  int error = openListener(*control);
  if (error == 0 && !startThread(control)) {
    removeSocket(*control);
    error = EAGAIN;
  }
  if (error != 0) {
    std::fprintf(stderr, "libdiag: cannot serve %s: %s\n", control->path.c_str(),
                 std::strerror(error));
    return;
  }
  if (present.control) present.inherited.push_back(present.control);
  present.control = control;
}

void stopControl() {
  std::shared_ptr<Control> control;
  {
    Instance& present = instance();
    const std::lock_guard<std::mutex> lock(present.lock);
    if (!present.control || present.control->process != getpid()) return;
    control.swap(present.control);
  }
  removeSocket(*control);
  eventfd_write(control->stop.get(), 1);
  // On the thread itself, a command ends the process.
  const bool own = control->thread.get_id() == std::this_thread::get_id();
  if (!own && waitForEnd(*control)) {
    control->thread.join();
  } else {
    control->thread.detach();
  }
}

}  // namespace diaghost
