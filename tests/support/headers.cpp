// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// This program exists only because its target compiles headers.
int main() { return 0; }
