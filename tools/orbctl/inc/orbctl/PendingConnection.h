// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

namespace orbctl {

enum class Pending { kYes, kNo, kUnknown };

// Whether a UNIX socket that connect() took still waits in the queue of its listener: to the client
// it looks like one that was accepted, but the kernel tells which sockets wait (sock_diag). Unknown
// where the kernel was built without that, or an emulator has none.
Pending isPending(int fd);

}  // namespace orbctl
