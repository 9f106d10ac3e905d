// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include "LogPoint.h"

// The lines that every service writes, by name. Each service defines them in one block at the top
// of its source, together with the lines that only it has. Constant.

// Function of the lines that a service's listener writes.
constexpr char kListener[] = "blobListener";

// Texts that are alike. Those of requests have no full stop.
constexpr char kNoInstance[] = "Failed to get SDK instance.";
constexpr char kNoClient[] = "Failed to get SDK client instance.";
constexpr char kNoInstanceForRequest[] = "Failed to get SDK instance";
constexpr char kNoClientForRequest[] = "Failed to get SDK client instance";

// Of enable and create.
struct EnablePoints {
  LogPoint entry;
  LogPoint nullCallback;
  LogPoint noInstance;
};

// Of disable and destroy.
struct DisablePoints {
  LogPoint entry;
  LogPoint noInstance;
  LogPoint noClient;
};

// Of a request that is refused.
struct RequestPoints {
  LogPoint noInstance;
  LogPoint noClient;
};

constexpr RequestPoints requestPoints(const LogSource& source, const char* function, int noInstance,
                                      int noClient) {
  return {{source, function, noInstance, kNoInstanceForRequest},
          {source, function, noClient, kNoClientForRequest}};
}

// Of a status message.
struct StatusPoints {
  LogPoint entry;
  LogPoint raw;
  LogPoint converted;
  LogPoint empty;
};

// Of a message that goes to a callback.
struct ReportPoints {
  LogPoint entry;
  LogPoint values;
  LogPoint sent;
  LogPoint noCallback;
  LogPoint empty;
};

struct ServicePoints {
  EnablePoints enable;
  EnablePoints create;
  DisablePoints disable;
  DisablePoints destroy;
  LogPoint constructed;
  LogPoint destroyed;
  LogPoint blobListener;
  LogPoint unknownStatus;
  LogPoint unknownMessage;
  StatusPoints status;
};
