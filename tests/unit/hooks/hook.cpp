// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// A hook library for the tests, built completely and with each function missing. It passes its
// calls to the functions in the table of the test program.
#include "hook.h"

#include <cstdarg>

extern "C" {

__attribute__((visibility("default"))) HookTable hookTable = {};

#ifndef HOOK_WITHOUT_ALOG
__attribute__((visibility("default"), format(printf, 3, 4))) int alog(int level, const char* tag,
                                                                      const char* format, ...) {
  va_list args;
  va_start(args, format);
  const char* const text = va_arg(args, const char*);
  va_end(args);
  if (hookTable.alog != nullptr) hookTable.alog(level, tag, format, text);
  return 0;
}
#endif

#ifndef HOOK_WITHOUT_GET_PERSIST_SETTING
__attribute__((visibility("default"))) int getPersistSetting(unsigned char* setting,
                                                             unsigned char* out) {
  return hookTable.getPersistSetting != nullptr ? hookTable.getPersistSetting(setting, out) : 0;
}
#endif

#ifndef HOOK_WITHOUT_DECODE_BUFFER
__attribute__((visibility("default"))) bool decodeBuffer(unsigned char* in, unsigned short inLength,
                                                         unsigned char* out,
                                                         unsigned short* outLength) {
  return hookTable.decodeBuffer != nullptr && hookTable.decodeBuffer(in, inLength, out, outLength);
}
#endif

}  // extern "C"
