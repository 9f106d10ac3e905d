// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <map>
#include <memory>
#include <mutex>

// Registry of event handlers by number. Declared for the processes of the platform that use it;
// this library itself neither adds to it nor reads it. sOrbEHMutex guards mOrbServices.
class IThreadEventHandler {
 public:
  virtual ~IThreadEventHandler() = default;

  static std::mutex sOrbEHMutex;
  static std::map<int, std::shared_ptr<IThreadEventHandler>> mOrbServices;
};
