// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "orbctl/Event.h"
#include "orbctl/Styled.h"

namespace orbctl {

// An event as one line of text: local time, service, content. A brief line has whole seconds and
// less text, for a narrow screen.
Row lineOf(const Event& event, bool brief = false);

// The style for a phase of a handoff.
Style styleOf(const HandoffEvent& event);

}  // namespace orbctl
