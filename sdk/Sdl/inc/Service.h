// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <orb/status.h>

#include <memory>
#include <utility>
#include <vector>

#include "LogPoint.h"
#include "Mutex.h"
#include "NeverDestroyed.h"
#include "OnArena.h"
#include "Process.h"
#include "SdkBase.h"

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

// Function of the lines that a service's listener writes.
constexpr char kListener[] = "blobListener";

// The lines around enable and create.
struct OpeningPoints {
  LogPoint entry;
  LogPoint nullCallback;
  LogPoint noInstance;

  struct Line {
    int number;
    const char* text;
  };
  constexpr OpeningPoints(const char* function, Line entered, Line null, int instance)
      : entry{function, entered.number, entered.text},
        nullCallback{function, null.number, null.text},
        noInstance{function, instance, "Failed to get SDK instance."} {}
};

// The lines around disable and destroy.
struct ClosingPoints {
  LogPoint entry;
  LogPoint noInstance;
  LogPoint noClient;

  constexpr ClosingPoints(const char* function, OpeningPoints::Line entered, int instance,
                          int client)
      : entry{function, entered.number, entered.text},
        noInstance{function, instance, "Failed to get SDK instance."},
        noClient{function, client, "Failed to get SDK client instance."} {}
};

// Where a request says that it cannot be served; unlike the above, without a full stop.
struct RequestPoints {
  LogPoint noInstance;
  LogPoint noClient;

  constexpr RequestPoints(const char* function, int instance, int client)
      : noInstance{function, instance, "Failed to get SDK instance"},
        noClient{function, client, "Failed to get SDK client instance"} {}
};

// The lines of a status message.
struct StatusPoints {
  LogPoint entry;
  LogPoint raw;
  LogPoint converted;
  LogPoint empty;

  constexpr StatusPoints(int entered, int rawLine, int convertedLine, int emptyLine)
      : entry{kListener, entered, "STATUS_IND"},
        raw{kListener, rawLine, "status_msg %d"},
        converted{kListener, convertedLine, "status %d"},
        empty{kListener, emptyLine, "Status IND message data not filled"} {}
};

// The lines of a message that goes to a callback.
struct ReportPoints {
  LogPoint entry;
  LogPoint values;
  LogPoint sent;
  LogPoint noCallback;
  LogPoint empty;
};

// What is different between the services in everything that they share.
struct ServiceTable {
  OrbSdkClientType type;
  LogSource source;
  // Where create keeps its callback. One that is kept in the base's slot is told when there is no
  // client.
  SdkBase::StatusV2Callback Service::*statusV2;
  ServiceSlot& (*slot)();
  std::shared_ptr<Service> (*make)();
  std::vector<uint8_t> (*enableMessage)(bool enable);
  OpeningPoints enable;
  OpeningPoints create;
  ClosingPoints disable;
  ClosingPoints destroy;
  LogPoint constructed;
  LogPoint destroyed;
  LogPoint blobListener;
  LogPoint unknownStatus;
  StatusPoints status;
  LogPoint unknownMessage;
};

// Results of requests.
constexpr int64_t kRequestDone = 0;
constexpr int64_t kInvalidArguments = -2;
constexpr int64_t kNoService = -5;

// A service object: the frame around enable, create, disable and destroy, the status fan-out and
// the first half of the listener, written once for all services. Held by its slot until it is
// disabled and by the SDK client's listener. The exported functions call it on application threads,
// the listener on SDK threads; callbacks are guarded by the base's mLock, copied under it and
// called after it, through the gate.
class Service : public SdkBase {
 public:
  explicit Service(const ServiceTable& table);
  ~Service() override;

  // The four operations; true when the request was queued.
  static bool enable(const ServiceTable& table, StatusCallback cb);
  static bool create(const ServiceTable& table, StatusV2Callback cb);
  static bool disable(const ServiceTable& table);
  static bool destroy(const ServiceTable& table);

  // The object that a request goes to; empty, after the documented line, when there is none or it
  // has no client.
  template <class S>
  static std::shared_ptr<S> ready(const ServiceTable& table, const RequestPoints& points) {
    return std::static_pointer_cast<S>(readyService(table, points));
  }
  // The process in which the library was used first. What a forked child has of it cannot be used:
  // its threads are not there, and its connections are the parent's.
  static ProcessMark mUsedIn;

  // Serialises and posts a request; the request function's result. @p change is what it stores.
  template <class Message>
  int64_t request(const Message& message, const Change& change = {}) {
    auto event = std::make_shared<SdkClientEvent>(mTable.type, serialise(message));
    return accept(change, std::move(event)) ? kRequestDone : kNoService;
  }
  // Stores @p cb, for the answers, and makes the request.
  template <class Callback, class Message>
  int64_t requestFor(Callback& member, Callback cb, const Message& message) {
    return request(message, [&member, cb] { member = cb; });
  }
  // The request for the latest report, in the service's own types.
  template <class Message, auto EventId, class Callback>
  int64_t requestLastReport(Callback& member, Callback cb) {
    OnArena<Message> message;
    message->set_event_id(EventId);
    message->mutable_data()->mutable_get_last_estination_report();
    return requestFor(member, cb, *message);
  }
  // Stores @p cb for reports that come by themselves; nothing is sent.
  template <class Callback>
  int64_t registerFor(Callback& member, Callback cb) {
    return accept([&member, cb] { member = cb; }) ? kRequestDone : kNoService;
  }
  template <class Message>
  static std::vector<uint8_t> serialise(const Message& message) {
    std::vector<uint8_t> blob(message.ByteSizeLong());
    message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
    return blob;
  }
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
    handleMember(mTable.status, data.has_status_msg(), [&] {
      mTable.status.raw.print(mTable.source, static_cast<int>(data.status_msg().status()));
      const status_e status = Utils::protoStatusToClient(data.status_msg().status());
      mTable.status.converted.print(mTable.source, static_cast<int>(status));
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

  // Calls @p callback, a member, with @p arguments unless it is not set or the service is disabled.
  template <class Callback, class... Arguments>
  bool callBack(const Callback& callback, Arguments&&... arguments) {
    const CallbackGate::Pass pass(*mGate);
    const Callback present = pass ? read(callback) : nullptr;
    if (present) present(std::forward<Arguments>(arguments)...);
    return present != nullptr;
  }
  // Calls @p callback with @p status if there is one, unless the service is disabled.
  template <class Callback, class Status>
  void tell(Callback callback, Status status) {
    const CallbackGate::Pass pass(*mGate);
    if (pass && callback) callback(status);
  }
  template <class Member>
  Member read(const Member& member) {
    const LockGuard lock(mLock);
    return member;
  }

  StatusV2Callback mStatusV2Cb = nullptr;

 private:
  template <class Callback>
  static bool open(const ServiceTable& table, const OpeningPoints& points,
                   Callback Service::*member, Callback cb);
  static Created joinClient(const std::shared_ptr<Service>& object, const Change& change);
  static bool close(const ServiceTable& table, const ClosingPoints& points);
  static std::shared_ptr<Service> readyService(const ServiceTable& table,
                                               const RequestPoints& points);
  static std::shared_ptr<Service> obtain(const ServiceTable& table);

  const ServiceTable& mTable;
  ClosedGates::Place mGatePlace = ClosedGates::placeFor(mGate);  // used up by close()
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
