// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "LogTag.h"

#include <set>
#include <string>

#include "Mutex.h"
#include "NeverDestroyed.h"

namespace {

struct Tags {
  Mutex lock;
  std::set<std::string> texts ORB_GUARDED_BY(lock);
};

}  // namespace

std::atomic<const char*> LogTag::current{""};

void LogTag::set(const char* tag) {
  static NeverDestroyed<Tags> storage;
  Tags& tags = storage.get();
  const LockGuard lock(tags.lock);
  current = tags.texts.insert(tag != nullptr ? tag : "").first->c_str();
}
