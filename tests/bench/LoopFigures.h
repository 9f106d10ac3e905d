// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

// Figures of the event loop and the timer queue, printed as "name value unit" lines. With @p brief
// they do few operations, and the values mean nothing.
namespace figures {

// The time from a post to an event handler until the loop's thread handles the item: one item at a
// time, and many at once.
void printLoop(bool brief);
// 10000 timers with delays of 1 to 20 ms: adding one, running one that is due, removing one.
void printTimers(bool brief);

// Posts items and handles them, one after the other, on the calling thread.
void dispatch(int count);

void put(const char* name, double nanoseconds);

}  // namespace figures
