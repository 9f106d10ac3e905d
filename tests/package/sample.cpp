// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Shows what the linker makes of a program that has all protections and no code of the project.
int main() { return 0; }
