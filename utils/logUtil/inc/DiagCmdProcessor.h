// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "Mutex.h"
#include "NeverDestroyed.h"

// The library's end of the diagnostic service: log records go out as packets, one command comes in.
// One object per process, created by Log::init and never destroyed, because the service's thread
// may still deliver a command while the process exits. The command runs on that thread; packets are
// written on the thread that logs. mMutex guards the handler and is not held while it runs.
class DiagCmdProcessor {
 public:
  // Gets the command's payload, fills the response and tells whether it could be decoded. Throws
  // nothing: its caller is the diagnostic service, which is no C++.
  using Handler = std::function<bool(unsigned char* request, unsigned short length,
                                     std::vector<unsigned char>& response)>;

  static std::shared_ptr<DiagCmdProcessor> getInstance();

  virtual ~DiagCmdProcessor() = default;

  // Sets or replaces the handler, and registers the command.
  void initialize(Handler handler);

  // The registered function of the command. There is never a response packet.
  static void* diagCmdHandler(void* request, unsigned short length);

  // Whether log packets are wanted. If not, the caller need not make a text for writeToDiag().
  static bool isListening();
  // Sends one packet with the text, cut to 512 bytes. Sends nothing if packets are not wanted, or
  // if the service gives no packet.
  static void writeToDiag(std::string_view entry);
  // The same without asking whether packets are wanted: the caller has just done so.
  static void sendPacket(std::string_view entry);

 private:
  DiagCmdProcessor() = default;

  static NeverDestroyed<std::shared_ptr<DiagCmdProcessor>> mSelf;

  Mutex mMutex;
  // Shared, because a copy would need memory when the command comes.
  std::shared_ptr<const Handler> mHandler ORB_GUARDED_BY(mMutex) =
      std::make_shared<const Handler>();
};
