// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The system calls and library functions that can fail. Each is defined under its assembler name
// only, because the declarations in the headers of C libraries have different attributes.
#include <dirent.h>
#include <dlfcn.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/epoll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstdarg>
#include <cstdint>
#include <ctime>

#include "Interposer.h"
#include "Redirection.h"
#include "SystemCall.h"

#define ORB_CALLER __builtin_return_address(0)
#define ORB_NAMED(name) __asm__(name)

using failcalls::Call;
using failcalls::decide;
using failcalls::Failure;
using failcalls::Kind;

namespace {

const char* redirection = nullptr;

// The size to which a transfer of @p size bytes is cut; @p size if it is not cut.
size_t cut(const Failure& failure, size_t size) {
  if (failure.kind == Kind::One) return size < 1 ? size : 1;
  return failure.kind == Kind::Half ? (size + 1) / 2 : size;
}

bool cuts(const Failure& failure) {
  return failure.kind == Kind::One || failure.kind == Kind::Half;
}

// A call that cannot be cut short. It fails, or it is made first and then fails.
template <class Result, class Make>
Result failing(const Failure& failure, Result failed, const Make& make) {
  if (failure.kind == Kind::DoneError) (void)make();
  errno = failure.error;
  return failed;
}

// A transfer of bytes.
template <class Make>
ssize_t transfer(const Failure* failure, size_t size, const Make& make) {
  if (failure == nullptr) return make(size);
  if (failure->kind == Kind::End) return 0;
  if (cuts(*failure)) return make(cut(*failure, size));
  return failing<ssize_t>(*failure, -1, [&] { return make(size); });
}

// All other calls that return -1 on failure.
template <class Make>
int plain(const Failure* failure, const Make& make) {
  return failure == nullptr ? make() : failing(*failure, -1, make);
}

}  // namespace

void failcalls::redirectTo(const char* socketPath) { redirection = socketPath; }

extern "C" {

int orbTestSocket(int domain, int type, int protocol) ORB_NAMED("socket");
int orbTestSocket(int domain, int type, int protocol) {
  static auto* const real = interposed::next<decltype(::socket)>("socket");
  return plain(decide(Call::Socket, ORB_CALLER), [&] { return real(domain, type, protocol); });
}

int orbTestConnect(int fd, const sockaddr* address, socklen_t size) ORB_NAMED("connect");
int orbTestConnect(int fd, const sockaddr* address, socklen_t size) {
  static auto* const real = interposed::next<decltype(::connect)>("connect");
  const Failure* const failure = decide(Call::Connect, ORB_CALLER);
  sockaddr_un elsewhere = {};
  if (redirection != nullptr && host::isDaemonSocket(address, size)) {
    size = host::addressOf(redirection, elsewhere);
    address = reinterpret_cast<const sockaddr*>(&elsewhere);
  }
  return plain(failure, [&] { return real(fd, address, size); });
}

ssize_t orbTestSend(int fd, const void* data, size_t size, int flags) ORB_NAMED("send");
ssize_t orbTestSend(int fd, const void* data, size_t size, int flags) {
  static auto* const real = interposed::next<decltype(::send)>("send");
  return transfer(decide(Call::Send, ORB_CALLER), size,
                  [&](size_t part) { return real(fd, data, part, flags); });
}

ssize_t orbTestRecv(int fd, void* data, size_t size, int flags) ORB_NAMED("recv");
ssize_t orbTestRecv(int fd, void* data, size_t size, int flags) {
  static auto* const real = interposed::next<decltype(::recv)>("recv");
  return transfer(decide(Call::Recv, ORB_CALLER), size,
                  [&](size_t part) { return real(fd, data, part, flags); });
}

int orbTestShutdown(int fd, int how) ORB_NAMED("shutdown");
int orbTestShutdown(int fd, int how) {
  static auto* const real = interposed::next<decltype(::shutdown)>("shutdown");
  return plain(decide(Call::Shutdown, ORB_CALLER), [&] { return real(fd, how); });
}

int orbTestClose(int fd) ORB_NAMED("close");
int orbTestClose(int fd) {
  static auto* const real = interposed::next<decltype(::close)>("close");
  return plain(decide(Call::Close, ORB_CALLER), [&] { return real(fd); });
}

int orbTestEventfd(unsigned count, int flags) ORB_NAMED("eventfd");
int orbTestEventfd(unsigned count, int flags) {
  static auto* const real = interposed::next<decltype(::eventfd)>("eventfd");
  return plain(decide(Call::Eventfd, ORB_CALLER), [&] { return real(count, flags); });
}

int orbTestEpollCreate1(int flags) ORB_NAMED("epoll_create1");
int orbTestEpollCreate1(int flags) {
  static auto* const real = interposed::next<decltype(::epoll_create1)>("epoll_create1");
  return plain(decide(Call::EpollCreate1, ORB_CALLER), [&] { return real(flags); });
}

int orbTestEpollCtl(int epoll, int operation, int fd, epoll_event* event) ORB_NAMED("epoll_ctl");
int orbTestEpollCtl(int epoll, int operation, int fd, epoll_event* event) {
  static auto* const real = interposed::next<decltype(::epoll_ctl)>("epoll_ctl");
  return plain(decide(Call::EpollCtl, ORB_CALLER),
               [&] { return real(epoll, operation, fd, event); });
}

int orbTestEpollWait(int epoll, epoll_event* events, int max, int timeout) ORB_NAMED("epoll_wait");
int orbTestEpollWait(int epoll, epoll_event* events, int max, int timeout) {
  static auto* const real = interposed::next<decltype(::epoll_wait)>("epoll_wait");
  return plain(decide(Call::EpollWait, ORB_CALLER),
               [&] { return real(epoll, events, max, timeout); });
}

ssize_t orbTestRead(int fd, void* data, size_t size) ORB_NAMED("read");
ssize_t orbTestRead(int fd, void* data, size_t size) {
  static auto* const real = interposed::next<decltype(::read)>("read");
  return transfer(decide(Call::Read, ORB_CALLER, false, size), size,
                  [&](size_t part) { return real(fd, data, part); });
}

ssize_t orbTestWrite(int fd, const void* data, size_t size) ORB_NAMED("write");
ssize_t orbTestWrite(int fd, const void* data, size_t size) {
  static auto* const real = interposed::next<decltype(::write)>("write");
  return transfer(decide(Call::Write, ORB_CALLER, false, size), size,
                  [&](size_t part) { return real(fd, data, part); });
}

// Only calls that the library makes itself, because the C++ runtime's clocks cannot report a
// failure.
int orbTestClockGettime(clockid_t clock, timespec* time) ORB_NAMED("clock_gettime");
int orbTestClockGettime(clockid_t clock, timespec* time) {
  static auto* const real = interposed::next<decltype(::clock_gettime)>("clock_gettime");
  return plain(decide(Call::ClockGettime, ORB_CALLER), [&] { return real(clock, time); });
}

// Returns the error, unlike the others.
int orbTestPthreadCreate(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                         void* data) ORB_NAMED("pthread_create");
int orbTestPthreadCreate(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                         void* data) {
  static auto* const real = interposed::next<decltype(::pthread_create)>("pthread_create");
  const Failure* const failure = decide(Call::PthreadCreate, ORB_CALLER, true);
  return failure != nullptr ? failure->error : real(thread, attributes, body, data);
}

int orbTestOpen(const char* path, int flags, ...) ORB_NAMED("open");
int orbTestOpen(const char* path, int flags, ...) {
  static auto* const real = interposed::next<decltype(::open)>("open");
  va_list more;
  va_start(more, flags);
  const mode_t mode = (flags & 0100) != 0 ? va_arg(more, mode_t) : 0;  // O_CREAT
  va_end(more);
  return plain(decide(Call::Open, ORB_CALLER), [&] { return real(path, flags, mode); });
}

void* orbTestDlopen(const char* file, int mode) ORB_NAMED("dlopen");
void* orbTestDlopen(const char* file, int mode) {
  static auto* const real = interposed::next<decltype(::dlopen)>("dlopen");
  const Failure* const failure = decide(Call::Dlopen, ORB_CALLER);
  return failure != nullptr ? nullptr : real(file, mode);
}

DIR* orbTestFdopendir(int fd) ORB_NAMED("fdopendir");
DIR* orbTestFdopendir(int fd) {
  static auto* const real = interposed::next<decltype(::fdopendir)>("fdopendir");
  const Failure* const failure = decide(Call::Fdopendir, ORB_CALLER);
  if (failure == nullptr) return real(fd);
  errno = failure->error;
  return nullptr;
}

// statx, fstat, lstat and fstatat count as one call: the status of a file.
long orbTestSyscall(long number, ...) ORB_NAMED("syscall");
long orbTestSyscall(long number, ...) {
  va_list arguments;
  va_start(arguments, number);
  const auto make = [&] { return nextSystemCall(number, arguments); };
  const Failure* const failure = number == SYS_statx ? decide(Call::Stat, ORB_CALLER) : nullptr;
  const long result = failure == nullptr ? make() : failing<long>(*failure, -1, make);
  va_end(arguments);
  return result;
}

int orbTestFstat(int fd, struct stat* status) ORB_NAMED("fstat");
int orbTestFstat(int fd, struct stat* status) {
  static auto* const real = interposed::next<decltype(::fstat)>("fstat");
  return plain(decide(Call::Stat, ORB_CALLER), [&] { return real(fd, status); });
}

int orbTestLstat(const char* path, struct stat* status) ORB_NAMED("lstat");
int orbTestLstat(const char* path, struct stat* status) {
  static auto* const real = interposed::next<decltype(::lstat)>("lstat");
  return plain(decide(Call::Stat, ORB_CALLER), [&] { return real(path, status); });
}

int orbTestFstatat(int directory, const char* path, struct stat* status, int flags)
    ORB_NAMED("fstatat");
int orbTestFstatat(int directory, const char* path, struct stat* status, int flags) {
  static auto* const real = interposed::next<decltype(::fstatat)>("fstatat");
  return plain(decide(Call::Stat, ORB_CALLER),
               [&] { return real(directory, path, status, flags); });
}

int orbTestUnlink(const char* path) ORB_NAMED("unlink");
int orbTestUnlink(const char* path) {
  static auto* const real = interposed::next<decltype(::unlink)>("unlink");
  return plain(decide(Call::Unlink, ORB_CALLER), [&] { return real(path); });
}

}  // extern "C"
