// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <google/protobuf/message_lite.h>
#include <orb/status.h>

#include <memory>
#include <utility>
#include <vector>

#include "CallbackSlot.h"
#include "Mutex.h"
#include "NeverDestroyed.h"
#include "OnArena.h"
#include "Process.h"
#include "SdkBase.h"
#include "ServicePoints.h"

class Service;

// The one place that holds a service's present object, and the gates of its former ones as long as
// callbacks run behind them. lock guards instance and is held for look-ups and changes only. Lives
// for ever: threads may come while the process exits.
struct ServiceSlot {
  Mutex lock;
  std::shared_ptr<Service> instance ORB_GUARDED_BY(lock);
  ClosedGates closedGates;

  std::shared_ptr<Service> get() {
    const LockGuard guard(lock);
    return instance;
  }
};

// What is different between the services in everything that they share.
struct ServiceTable {
  OrbSdkClientType type;
  LogSource source;
  // Where create keeps its callback. One that is kept in the base's slot is told when there is no
  // client.
  CallbackSlot<SdkBase::StatusV2Callback> Service::*statusV2;
  ServiceSlot& (*slot)();
  std::shared_ptr<Service> (*make)();
  std::vector<uint8_t> (*enableMessage)(bool enable);
  ServicePoints points;
};

// Results of requests.
constexpr int64_t kRequestDone = 0;
constexpr int64_t kInvalidArguments = -2;
constexpr int64_t kNoService = -5;

// A service object: the frame around enable, create, disable and destroy, the status fan-out and
// the first half of the listener, written once for all services. Held by its slot until it is
// disabled and by the SDK client's listener. The exported functions call it on application threads,
// the listener on SDK threads; callbacks are read from their slots and called through the gate.
class Service : public SdkBase {
 public:
  explicit Service(const ServiceTable& table);
  ~Service() override;

  // The four operations; true when the request was queued.
  static bool enable(const ServiceTable& table, StatusCallback cb);
  static bool create(const ServiceTable& table, StatusV2Callback cb);
  static bool disable(const ServiceTable& table);
  static bool destroy(const ServiceTable& table);

  // The object that a request goes to; empty, after the line that says so, when there is none.
  template <class S>
  static std::shared_ptr<S> present(const ServiceTable& table, const RequestPoints& points) {
    return std::static_pointer_cast<S>(presentService(table, points));
  }
  // The process in which the library was used first. What a forked child has of it cannot be used:
  // its threads are not there, and its connections are the parent's.
  static ProcessMark mUsedIn;

  // Serialises and posts a request; the request function's result. @p change is what it stores.
  int64_t request(const google::protobuf::MessageLite& message, const Change& change = {});
  // Stores @p cb, for the answers, and makes the request.
  template <class Callback>
  int64_t requestFor(CallbackSlot<Callback>& slot, Callback cb,
                     const google::protobuf::MessageLite& message) {
    return request(message, [&slot, cb] { slot.set(cb); });
  }
  // The request for the latest report, in the service's own types.
  template <class Message, auto EventId, class Callback>
  int64_t requestLastReport(CallbackSlot<Callback>& slot, Callback cb) {
    OnArena<Message> message;
    message->set_event_id(EventId);
    message->mutable_data()->mutable_get_last_estination_report();
    return requestFor(slot, cb, *message);
  }
  // Stores @p cb for reports that come by themselves; nothing is sent.
  template <class Callback>
  int64_t registerFor(CallbackSlot<Callback>& slot, Callback cb) {
    return accept([&slot, cb] { slot.set(cb); }) ? kRequestDone : kNoService;
  }
  static std::vector<uint8_t> serialise(const google::protobuf::MessageLite& message);
  // The message that enables or disables, in the service's own types.
  template <class Message, auto EventId>
  static std::vector<uint8_t> enableMessage(bool enable) {
    OnArena<Message> message;
    message->set_event_id(EventId);
    message->mutable_data()->mutable_enable_msg()->set_enable(enable);
    return serialise(*message);
  }

  void blobListener(SdkClientBase::SdkStatus status, const std::vector<uint8_t>& blob) final;

 protected:
  // A message of the service.
  virtual void handleBlob(const std::vector<uint8_t>& blob) = 0;
  // The service was disabled: what waits for answers is given back, however long the SDK client
  // still holds the object.
  virtual void forgetRequests() {}

  // Reads @p blob; one that does not parse reads as the default message, whatever came before the
  // error.
  template <class Message>
  static void parse(OnArena<Message>& message, const std::vector<uint8_t>& blob) {
    if (!message->ParseFromArray(blob.data(), static_cast<int>(blob.size()))) message->Clear();
  }

  void handleStatusInd(status_e status);
  // A status message, if @p data holds one; Utils converts its value.
  template <class Utils, class Data>
  void handleStatus(const Data& data) {
    const StatusPoints& points = mTable.points.status;
    handleMember(points, data.has_status_msg(), [&] {
      points.raw.print(mTable.source, static_cast<int>(data.status_msg().status()));
      const status_e status = Utils::protoStatusToClient(data.status_msg().status());
      points.converted.print(mTable.source, static_cast<int>(status));
      handleStatusInd(status);
    });
  }
  // A message's name in the log, then its member, or that it is not the one present.
  template <class Points, class Handler>
  void handleMember(const Points& points, bool present, const Handler& handler) {
    log(points.entry);
    if (present) {
      handler();
    } else {
      log(points.empty);
    }
  }
  void log(const LogPoint& point) const { point.print(mTable.source); }

  // Calls what @p slot holds with @p arguments; false when that is nothing or the service is
  // disabled.
  template <class Callback, class... Arguments>
  bool callBack(const CallbackSlot<Callback>& slot, Arguments&&... arguments) {
    const CallbackGate::Pass pass(*mGate);
    const Callback callback = pass ? slot.get() : nullptr;
    if (callback) callback(std::forward<Arguments>(arguments)...);
    return callback != nullptr;
  }
  // Calls @p callback with @p status if there is one, unless the service is disabled.
  template <class Callback, class Status>
  void tell(Callback callback, Status status) {
    const CallbackGate::Pass pass(*mGate);
    if (pass && callback) callback(status);
  }

  CallbackSlot<StatusV2Callback> mStatusV2Cb;

 private:
  template <class Callback>
  static bool enableWith(const ServiceTable& table, const EnablePoints& points,
                         CallbackSlot<Callback> Service::*slot, Callback cb);
  static Created joinClient(const std::shared_ptr<Service>& object, const Change& change);
  static bool disableWith(const ServiceTable& table, const DisablePoints& points);
  static std::shared_ptr<Service> presentService(const ServiceTable& table,
                                                 const RequestPoints& points);
  static std::shared_ptr<Service> obtain(const ServiceTable& table);

  const ServiceTable& mTable;
  ClosedGates::Place mGatePlace = ClosedGates::placeFor(mGate);  // used up by disableWith()
};

// What a service's class has of its own by being a class: its slot, its maker and its table.
template <class S>
class ServiceOf : public Service {
 public:
  static ServiceSlot& mInstance() {
    static NeverDestroyed<ServiceSlot> slot;
    return slot.get();
  }
  static std::shared_ptr<Service> make() { return std::make_shared<S>(); }

 protected:
  ServiceOf() : Service(S::kTable) {}
};
