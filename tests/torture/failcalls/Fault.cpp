// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Fault.h"

#include <cerrno>

namespace failcalls {

namespace {

struct Entry {
  const char* name;
  std::vector<Failure> failures;
};

#define ORB_ERROR(code) \
  Failure { #code, Kind::Error, code }

// In the order of Call.
const Entry kEntries[] = {
    {"socket",
     {ORB_ERROR(EMFILE), ORB_ERROR(ENFILE), ORB_ERROR(ENOMEM), ORB_ERROR(ENOBUFS),
      ORB_ERROR(EACCES)}},
    {"connect",
     {ORB_ERROR(ENOENT), ORB_ERROR(ECONNREFUSED), ORB_ERROR(EAGAIN), ORB_ERROR(EINTR),
      ORB_ERROR(EACCES), ORB_ERROR(ENOMEM)}},
    {"send",
     {ORB_ERROR(ECONNRESET),
      ORB_ERROR(EPIPE),
      ORB_ERROR(EINTR),
      ORB_ERROR(EAGAIN),
      ORB_ERROR(ENOBUFS),
      ORB_ERROR(ENOMEM),
      {"one", Kind::One, 0},
      {"half", Kind::Half, 0}}},
    {"recv",
     {ORB_ERROR(ECONNRESET),
      ORB_ERROR(EINTR),
      ORB_ERROR(EAGAIN),
      ORB_ERROR(ENOMEM),
      {"end", Kind::End, 0},
      {"one", Kind::One, 0},
      {"half", Kind::Half, 0}}},
    // A security module may refuse calls that the kernel itself never refuses.
    {"shutdown", {{"ENOTCONN", Kind::DoneError, ENOTCONN}, ORB_ERROR(EACCES)}},
    // Linux has already released the descriptor when close() returns one of these.
    {"close", {{"EINTR", Kind::DoneError, EINTR}, {"EIO", Kind::DoneError, EIO}}},
    {"eventfd", {ORB_ERROR(EMFILE), ORB_ERROR(ENFILE), ORB_ERROR(ENOMEM), ORB_ERROR(ENODEV)}},
    {"epoll_create1", {ORB_ERROR(EMFILE), ORB_ERROR(ENFILE), ORB_ERROR(ENOMEM)}},
    {"epoll_ctl", {ORB_ERROR(ENOMEM), ORB_ERROR(ENOSPC), ORB_ERROR(EPERM), ORB_ERROR(EINVAL)}},
    {"epoll_wait", {ORB_ERROR(EINTR), ORB_ERROR(EINVAL)}},
    {"read", {ORB_ERROR(EINTR), ORB_ERROR(EAGAIN), ORB_ERROR(EIO), {"half", Kind::Half, 0}}},
    {"write",
     {ORB_ERROR(EINTR),
      ORB_ERROR(EAGAIN),
      ORB_ERROR(EIO),
      ORB_ERROR(ENOSPC),
      {"half", Kind::Half, 0}}},
    {"clock_gettime", {ORB_ERROR(EINVAL), ORB_ERROR(EPERM)}},
    {"pthread_create", {ORB_ERROR(EAGAIN), ORB_ERROR(EPERM)}},
    {"malloc", {ORB_ERROR(ENOMEM)}},
    {"calloc", {ORB_ERROR(ENOMEM)}},
    {"operator-new", {ORB_ERROR(ENOMEM)}},
    {"open",
     {ORB_ERROR(ENOENT), ORB_ERROR(EACCES), ORB_ERROR(EMFILE), ORB_ERROR(ENFILE), ORB_ERROR(EINTR),
      ORB_ERROR(ENOMEM)}},
    {"dlopen", {ORB_ERROR(ENOENT)}},
    {"fdopendir", {ORB_ERROR(EACCES), ORB_ERROR(EMFILE), ORB_ERROR(ENOMEM)}},
    {"stat", {ORB_ERROR(EACCES), ORB_ERROR(ENOENT), ORB_ERROR(EIO)}},
    {"unlink", {ORB_ERROR(EACCES), ORB_ERROR(ENOENT), ORB_ERROR(EROFS)}},
};
static_assert(sizeof kEntries / sizeof *kEntries == kCalls, "an entry for every call");

}  // namespace

const char* nameOf(Call call) { return kEntries[static_cast<size_t>(call)].name; }

const std::vector<Failure>& failuresOf(Call call) {
  return kEntries[static_cast<size_t>(call)].failures;
}

std::string Fault::text() const {
  if (call == Call::kCount) return "none";
  std::string text = std::string(nameOf(call)) + ":" + failure.name + ":" + std::to_string(nth);
  return lasting ? text + "+" : text;
}

}  // namespace failcalls
