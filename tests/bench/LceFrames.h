// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <google/protobuf/message_lite.h>

#include <string>

#include "orbsim/Daemon.h"

// Frames of LCE as they are on the socket, for daemons and bare peers that send prepared bytes.
namespace lceframes {

constexpr uint32_t kFirstSession = 1;

orbsim::Blob serialized(const google::protobuf::MessageLite& message);

// A request for the last report; the answer to it; and a report that the daemon sends by itself.
orbsim::Blob request();
orbsim::Blob answer(const std::string& errorString);
orbsim::Blob indication();

// Only the message of that answer.
orbsim::Blob answerBlob(const std::string& errorString);

// Makes the daemon answer each such request at once. It serves other requests as usual.
void answerAtOnce(orbsim::Daemon& daemon);

}  // namespace lceframes
