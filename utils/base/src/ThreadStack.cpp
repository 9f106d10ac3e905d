// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ThreadStack.h"

#include <link.h>
#include <unistd.h>

#include <algorithm>

namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr bool kChecked = true;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer) || \
    __has_feature(memory_sanitizer)
constexpr bool kChecked = true;
#else
constexpr bool kChecked = false;
#endif
#else
constexpr bool kChecked = false;
#endif

// The thread-local variables of the program and all its libraries. Some C libraries put them into
// the stack, and an application may have many.
size_t threadLocalSize() {
  size_t total = 0;
  dl_iterate_phdr(
      [](dl_phdr_info* object, size_t, void* sum) {
        for (int i = 0; i < object->dlpi_phnum; ++i) {
          const auto& part = object->dlpi_phdr[i];
          if (part.p_type == PT_TLS) *static_cast<size_t*>(sum) += part.p_memsz + part.p_align;
        }
        return 0;
      },
      &total);
  return total;
}

size_t systemValue(int name) { return static_cast<size_t>(std::max(sysconf(name), 0L)); }

}  // namespace

bool orb::utils::setStackSize(pthread_attr_t& attributes, ThreadWork work) {
  size_t platforms = 0;
  if (pthread_attr_getstacksize(&attributes, &platforms) != 0) return false;
  // A sanitizer makes every frame larger, so the measured sizes do not hold.
  const bool atLeastThePlatforms = kChecked || work == ThreadWork::Callbacks;
  size_t size = std::max(stackFor(work) + threadLocalSize(), systemValue(_SC_THREAD_STACK_MIN));
  if (atLeastThePlatforms) size = std::max(size, platforms);
  const size_t page = std::max(systemValue(_SC_PAGESIZE), size_t{1});
  return pthread_attr_setstacksize(&attributes, (size + page - 1) / page * page) == 0;
}
