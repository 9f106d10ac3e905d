// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// The control socket: the other side of the diagnostic service, for a person with `orbdiag`. Where
// ORB_DIAG_SOCKET names a path when the library is loaded ("%p" in it stands for the process id),
// one thread listens there on a socket of packets (SOCK_SEQPACKET) that only the same user may
// connect to. A connection carries one request and its reply, both text:
//   on | off | status                        packets; the reply to status tells where they go
//   command CODE SUBSYSTEM NUMBER PAYLOAD    numbers and payload in hexadecimal, payload may lack
//   ok TEXT | error TEXT                     replies; a command's comes when it has run
namespace diaghost {

// Starts the thread, unless this process has one; without it packets go on. A failure is told on
// standard error.
void startControl();

// Removes the socket and gives the thread back. A command that runs is waited for, but not for
// ever: a process must be able to end. In a forked child, which has no such thread, it does
// nothing.
void stopControl();

}  // namespace diaghost
