// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// A program for the sake of the headers that are compiled for it.
int main() { return 0; }
