// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Stands for a device's libdiag while the library is linked.
#include <diag/diag.h>

boolean Diag_LSM_Init(unsigned char* env) { return 0; }
void diagpkt_tbl_reg(const diagpkt_user_table_type* table) {}
boolean log_status(log_code_type code) { return 0; }
void* log_alloc(log_code_type code, unsigned int length) { return 0; }
void log_commit(void* packet) {}
