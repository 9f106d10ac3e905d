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

// Holds a service's current object, and the gates of its earlier objects as long as their callbacks
// run. lock guards instance; it is held for look-ups and changes only. Never destroyed: threads may
// use it while the process exits.
struct ServiceSlot {
  Mutex lock;
  std::shared_ptr<Service> instance ORB_GUARDED_BY(lock);
  ClosedGates closedGates;

  std::shared_ptr<Service> get() {
    const LockGuard guard(lock);
    return instance;
  }
};

// How the services differ in what they share.
struct ServiceTable {
  OrbSdkClientType type;
  LogSource source;
  // Where create stores its callback. Only a callback in SdkBase's slot is told if there is no
  // client.
  CallbackSlot<SdkBase::StatusV2Callback> Service::*statusV2;
  ServiceSlot& (*slot)();
  std::shared_ptr<Service> (*make)();
  std::vector<uint8_t> (*enableMessage)(bool enable);
  const ServicePoints& points;
};

// Results of requests.
constexpr int64_t kRequestDone = 0;
constexpr int64_t kInvalidArguments = -2;
constexpr int64_t kNoService = -5;

// A service object. It has everything that the services share: enable, create, disable and destroy,
// the status callbacks, and the first half of the listener. Its slot holds it until it is disabled;
// the SDK client's listener holds it, too. The exported functions call it on application threads,
// the listener on SDK threads. It reads callbacks from their slots and calls them through the gate.
class Service : public SdkBase {
 public:
  explicit Service(const ServiceTable& table);
  ~Service() override;

  // The four operations; true when the request was queued.
  static bool enable(const ServiceTable& table, StatusCallback cb);
  static bool create(const ServiceTable& table, StatusV2Callback cb);
  static bool disable(const ServiceTable& table);
  static bool destroy(const ServiceTable& table);

  // The object for a request. Null, with a line in the log, if the service has none.
  template <class S>
  static std::shared_ptr<S> objectFor(const RequestPoints& points) {
    return std::static_pointer_cast<S>(objectFor(S::kTable, points));
  }

  // The process in which the library was used first. A forked child cannot use the library: it has
  // none of the threads, and the connections belong to the parent.
  static ProcessMark mUsedIn;

  // Serialises and posts a request, and applies @p change with it. Returns the result of the
  // exported function.
  int64_t request(const google::protobuf::MessageLite& message, const Change& change = {});
  // Stores @p cb for the answers, and posts the request.
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
  // Stores @p cb for periodic reports; sends nothing.
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
  // The service was disabled: frees what waits for answers, even if the SDK client still holds the
  // object.
  virtual void forgetRequests() {}

  // Reads @p blob. If it does not parse, the result is the default message, also if some fields
  // came before the error.
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
      points.raw.print(static_cast<int>(data.status_msg().status()));
      const status_e status = Utils::protoStatusToClient(data.status_msg().status());
      points.converted.print(static_cast<int>(status));
      handleStatusInd(status);
    });
  }
  // Logs the message's name, then handles its member, or logs that the member is missing.
  template <class Points, class Handler>
  void handleMember(const Points& points, bool present, const Handler& handler) {
    log(points.entry);
    if (present) {
      handler();
    } else {
      log(points.empty);
    }
  }
  static void log(const LogPoint& point) { point.print(); }

  // Calls the callback in @p slot with @p arguments. False if there is none or the service is
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

  // LCE's alone; see ServiceTable::statusV2.
  CallbackSlot<StatusV2Callback> mStatusV2Cb;

 private:
  template <class Callback>
  static bool enableWith(const ServiceTable& table, const EnablePoints& points,
                         CallbackSlot<Callback> Service::*slot, Callback cb);
  static Created joinClient(const std::shared_ptr<Service>& object, const Change& change);
  static bool disableWith(const ServiceTable& table, const DisablePoints& points);
  static std::shared_ptr<Service> objectFor(const ServiceTable& table, const RequestPoints& points);
  // The service's object, which is made if there is none. Null without memory.
  static std::shared_ptr<Service> obtain(const ServiceTable& table);

  const ServiceTable& mTable;
  // Used up by disableWith(), under the lock of the slot.
  ClosedGates::Place mGatePlace = ClosedGates::placeFor(mGate);
};

// What each service's class needs of its own: its slot, its maker and its table. Any thread; no
// lock besides the slot's.
template <class S>
class ServiceOf : public Service {
 public:
  // The slot with the one object. A function: the first call makes the slot.
  static ServiceSlot& mInstance() {
    static NeverDestroyed<ServiceSlot> slot;
    return slot.get();
  }
  static std::shared_ptr<Service> make() { return std::make_shared<S>(); }

 protected:
  ServiceOf() : Service(S::kTable) {}
};
