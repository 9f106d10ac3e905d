// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "IThreadEventHandler.h"

std::mutex IThreadEventHandler::sOrbEHMutex;
std::map<int, std::shared_ptr<IThreadEventHandler>> IThreadEventHandler::mOrbServices;
