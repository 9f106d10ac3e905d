// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "orbctl/Event.h"
#include "orbctl/Styled.h"

namespace orbctl {

// An event as one line for people: local time, service, what it says. A brief one has whole seconds
// and leaves out what a narrow screen has no room for.
Row lineOf(const Event& event, bool brief = false);

// How a phase of a handoff is to be taken.
Style styleOf(const HandoffEvent& event);

}  // namespace orbctl
