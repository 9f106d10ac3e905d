// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "ProcessHandler.h"

#include "Log.h"

void ProcessHandler::handleMsg(ipcMsg_t* msg) {
  if (msg == nullptr) {
    ORB_LOGE("msg null");
    return;
  }
  ORB_LOGD("%d: dropping IPC from %lu", static_cast<int>(msg->dstProcessId),
           static_cast<unsigned long>(msg->srcProcessId));
}

void ProcessHandler::handleSessionEnd(unsigned int) {}

void ProcessHandler::handleReceiverEnd(int) {}
