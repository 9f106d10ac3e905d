// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <cstddef>
#include <vector>

#include "orblog/ByteView.h"
#include "orblog/Finding.h"
#include "orblog/KeyRing.h"
#include "orblog/PrivateKey.h"

namespace orblog {

// So much of a file's start tells what it is.
constexpr size_t kStartSize = 4096;

// Whether there is something, and nothing that does not stand in texts.
bool isText(ByteView start);

// The bytes that a header's wrapped session key takes: up to the last that is not zero.
size_t wrappedSize(ByteView header);

// Puts the cause into findings of headers without a session key, going by the start of their file.
void explainHeaders(std::vector<Finding>& findings, ByteView start, const PrivateKey& key,
                    const KeyRing& ring);

}  // namespace orblog
