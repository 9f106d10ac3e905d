// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/status.h>

#include <memory>
#include <mutex>
#include <vector>

#include "LogPoint.h"
#include "SdkBase.h"

class Service;

// The one place that holds a service's present object. lock guards instance and is held for look-ups
// and changes only. Lives for ever: threads may come while the process exits.
struct ServiceSlot {
  std::mutex lock;
  std::shared_ptr<Service> instance;

  std::shared_ptr<Service> get() {
    const std::lock_guard<std::mutex> guard(lock);
    return instance;
  }
};

// What is different between the services in everything that they share.
struct ServiceTable {
  struct Opening {  // enable and create
    LogPoint entry;
    LogPoint nullCallback;
    LogPoint noInstance;
  };
  struct Closing {  // disable and destroy
    LogPoint entry;
    LogPoint noInstance;
    LogPoint noClient;
  };
  OrbSdkClientType type;
  LogSource source;
  ServiceSlot& (*slot)();
  std::shared_ptr<Service> (*make)();
  std::vector<uint8_t> (*enableMessage)(bool enable);
  Opening enable;
  Opening create;
  Closing disable;
  Closing destroy;
  LogPoint constructed;
  LogPoint destroyed;
  LogPoint blobListener;
  LogPoint unknownStatus;
};

// Where a request says that it cannot be served.
struct RequestPoints {
  LogPoint noInstance;
  LogPoint noClient;
};

// Results of requests.
constexpr int64_t kRequestDone = 0;
constexpr int64_t kInvalidArguments = -2;
constexpr int64_t kNoService = -5;

// A service object: the frame around enable, create, disable and destroy, the status fan-out and the
// first half of the listener, written once for all services. Held by its slot until it is disabled and
// by the SDK client's listener. The exported functions call it on application threads, the listener on
// SDK threads; callbacks are guarded by the base's mLock, copied under it and called after it, through
// the gate.
class Service : public SdkBase {
 public:
  explicit Service(const ServiceTable& table);
  ~Service() override;

  // The four operations; true when the request was queued.
  static bool enable(const ServiceTable& table, StatusCallback cb);
  static bool create(const ServiceTable& table, StatusV2Callback cb);
  static bool disable(const ServiceTable& table);
  static bool destroy(const ServiceTable& table);

  // The object that a request goes to; empty, after the documented line, when there is none or it has
  // no client.
  template <class S>
  static std::shared_ptr<S> ready(const ServiceTable& table, const RequestPoints& points) {
    return std::static_pointer_cast<S>(readyService(table, points));
  }
  // Serialises and posts a request.
  template <class Message>
  bool request(const Message& message) {
    return post(std::make_shared<SdkClientEvent>(mTable.type, serialise(message)));
  }
  template <class Message>
  static std::vector<uint8_t> serialise(const Message& message) {
    std::vector<uint8_t> blob(message.ByteSizeLong());
    message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
    return blob;
  }

  void blobListener(SdkClientBase::SdkStatus status, const std::vector<uint8_t>& blob) final;

 protected:
  // A message of the service.
  virtual void handleBlob(const std::vector<uint8_t>& blob) = 0;

  // Reads @p blob; one that does not parse reads as the default message, whatever came before the error.
  template <class Message>
  static void parse(Message& message, const std::vector<uint8_t>& blob) {
    if (!message.ParseFromArray(blob.data(), static_cast<int>(blob.size()))) message.Clear();
  }

  void handleStatusInd(status_e status);
  void log(const LogPoint& point) const { point.print(mTable.source); }

  // Calls @p callback, a member, with @p arguments unless it is not set or the service is disabled.
  template <class Callback, class... Arguments>
  bool callBack(const Callback& callback, Arguments&&... arguments) {
    const CallbackGate::Pass pass(mGate);
    const Callback present = pass ? read(callback) : nullptr;
    if (present) present(std::forward<Arguments>(arguments)...);
    return present != nullptr;
  }
  template <class Member>
  Member read(const Member& member) {
    const std::lock_guard<std::mutex> lock(mLock);
    return member;
  }
  template <class Member>
  void store(Member& member, Member value) {
    const std::lock_guard<std::mutex> lock(mLock);
    member = value;
  }

 private:
  template <class Callback>
  static bool open(const ServiceTable& table, const ServiceTable::Opening& points,
                   Callback Service::*member, Callback cb);
  static bool close(const ServiceTable& table, const ServiceTable::Closing& points);
  static std::shared_ptr<Service> readyService(const ServiceTable& table,
                                               const RequestPoints& points);
  static std::shared_ptr<Service> obtain(const ServiceTable& table);

  const ServiceTable& mTable;
  StatusV2Callback mStatusV2Cb = nullptr;
};
