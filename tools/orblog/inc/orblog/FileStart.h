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

// The number of bytes at the start of a file that are enough to recognise its type.
constexpr size_t kStartSize = 4096;

// Whether the bytes are not empty and can all be part of a text.
bool isText(ByteView start);

// The size of the wrapped session key in a header: up to the last byte that is not zero.
size_t wrappedSize(ByteView header);

// Sets the cause in findings about headers without a session key, based on the start of the file.
void explainHeaders(std::vector<Finding>& findings, ByteView start, const PrivateKey& key,
                    const KeyRing& ring);

}  // namespace orblog
