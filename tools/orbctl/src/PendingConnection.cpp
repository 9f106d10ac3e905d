// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/PendingConnection.h"

#include <linux/netlink.h>
#include <linux/rtnetlink.h>
#include <linux/sock_diag.h>
#include <linux/unix_diag.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <vector>

#include "UniqueFd.h"

namespace orbctl {
namespace {

constexpr int kListen = 10;  // TCP_LISTEN, which UNIX sockets also use
constexpr int kPatienceMs = 1000;

bool askForListeners(int netlink) {
  struct {
    nlmsghdr header;
    unix_diag_req request;
  } message = {};
  message.header.nlmsg_len = sizeof message;
  message.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
  message.header.nlmsg_flags = NLM_F_REQUEST | NLM_F_DUMP;
  message.request.sdiag_family = AF_UNIX;
  message.request.udiag_states = 1u << kListen;
  message.request.udiag_show = UDIAG_SHOW_ICONS;
  return send(netlink, &message, sizeof message, 0) == static_cast<ssize_t>(sizeof message);
}

// Searches for the inode in the list of sockets that wait for one listener.
bool listsInode(const uint8_t* message, size_t size, uint32_t inode) {
  size_t at = NLMSG_ALIGN(sizeof(unix_diag_msg));
  while (at + sizeof(rtattr) <= size) {
    rtattr attribute = {};
    std::memcpy(&attribute, message + at, sizeof attribute);
    if (attribute.rta_len < sizeof attribute || attribute.rta_len > size - at) return false;
    if (attribute.rta_type == UNIX_DIAG_ICONS) {
      for (size_t i = sizeof attribute; i + sizeof inode <= attribute.rta_len; i += sizeof inode) {
        uint32_t listed = 0;
        std::memcpy(&listed, message + at + i, sizeof listed);
        if (listed == inode) return true;
      }
    }
    at += RTA_ALIGN(attribute.rta_len);
  }
  return false;
}

// Parses the data of one read. True at the end of the answer; `result` is set then.
bool readPart(const std::vector<uint8_t>& bytes, size_t size, uint32_t inode, Pending& result) {
  for (size_t at = 0; at + sizeof(nlmsghdr) <= size;) {
    nlmsghdr header = {};
    std::memcpy(&header, bytes.data() + at, sizeof header);
    if (header.nlmsg_len < sizeof header || header.nlmsg_len > size - at) return true;
    if (header.nlmsg_type == NLMSG_DONE) {
      result = Pending::kNo;
      return true;
    }
    if (header.nlmsg_type == NLMSG_ERROR) return true;
    if (listsInode(bytes.data() + at + sizeof header, header.nlmsg_len - sizeof header, inode)) {
      result = Pending::kYes;
      return true;
    }
    at += NLMSG_ALIGN(header.nlmsg_len);
  }
  return false;
}

}  // namespace

Pending isPending(int fd) {
  struct stat status = {};
  const UniqueFd netlink(socket(AF_NETLINK, SOCK_RAW | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
  if (netlink.get() < 0 || fstat(fd, &status) != 0 || !askForListeners(netlink.get()))
    return Pending::kUnknown;
  Pending result = Pending::kUnknown;
  std::vector<uint8_t> bytes(65536);
  for (;;) {
    pollfd waited = {netlink.get(), POLLIN, 0};
    if (poll(&waited, 1, kPatienceMs) <= 0) return result;
    const ssize_t size = recv(netlink.get(), bytes.data(), bytes.size(), 0);
    if (size < 0 && errno == EINTR) continue;
    if (size <= 0) return result;
    if (readPart(bytes, static_cast<size_t>(size), static_cast<uint32_t>(status.st_ino), result))
      return result;
  }
}

}  // namespace orbctl
