// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

namespace orbctl {

enum class Pending { kYes, kNo, kUnknown };

// Whether a connected UNIX socket still waits in the queue of its listener. For the client it looks
// like an accepted connection, but the kernel can list waiting sockets (sock_diag). Unknown if the
// kernel or an emulator does not support this.
Pending isPending(int fd);

}  // namespace orbctl
