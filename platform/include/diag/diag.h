// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The part of the platform's libdiag that the library calls: log packets out, commands in.
#pragma once

#include <stdint.h>

#ifdef __cplusplus
extern "C" {
#endif

typedef unsigned char boolean;
typedef uint16_t log_code_type;

// One range of command codes and the function that serves it. It runs on a thread of the diagnostic
// library and returns a response packet, or null for none.
typedef struct {
  uint16_t cmd_code_lo;
  uint16_t cmd_code_hi;
  void* (*func_ptr)(void* request, uint16_t length);
} diagpkt_user_table_entry_type;

// The commands of one subsystem. The diagnostic library keeps the pointers: table and entries must
// stay alive as long as the process.
typedef struct {
  uint16_t delay_flag;
  uint16_t cmd_code;
  uint16_t subsys_id;
  uint16_t count;
  uint16_t proc_id;
  const diagpkt_user_table_entry_type* user_table;
} diagpkt_user_table_type;

// Connects the process to the diagnostic service; `env` is not used.
boolean Diag_LSM_Init(unsigned char* env);

void diagpkt_tbl_reg(const diagpkt_user_table_type* table);

// Whether somebody listens to packets of this code.
boolean log_status(log_code_type code);

// A packet of `length` bytes with its 12-byte header filled in, or null. log_commit sends and frees
// it.
void* log_alloc(log_code_type code, unsigned int length);
void log_commit(void* packet);

#ifdef __cplusplus
}
#endif
