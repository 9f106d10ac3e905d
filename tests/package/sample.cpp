// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Shows what the linker makes of a program with all protections and without code of the project.
int main() { return 0; }
