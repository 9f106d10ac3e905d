// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "Service.h"

#include <functional>
#include <new>
#include <utility>

#include "HardStop.h"
#include "SdkClient.h"
#include "StatusConversion.h"

ProcessMark Service::mUsedIn;

Service::Service(const ServiceTable& table) : mTable(table) { log(table.points.constructed); }

Service::~Service() {
  log(mTable.points.destroyed);
  // Only an object that was never disabled still has a client.
  if (hasClient()) SdkClient::destroyInstance(mTable.type);
}

std::shared_ptr<Service> Service::obtain(const ServiceTable& table) {
  mUsedIn.setOnce();
  ServiceSlot& slot = table.slot();
  const LockGuard lock(slot.lock);
  try {
    if (!slot.instance) slot.instance = table.make();
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
  return slot.instance;
}

namespace {

void reportFailure(void (*cb)(status_e)) { cb(STATUS_INTERNAL_ERROR); }
void reportFailure(void (*cb)(status_v2_e)) { cb(STATUS_V2_INTERNAL_ERROR); }

}  // namespace

template <class Callback>
bool Service::enableWith(const ServiceTable& table, const EnablePoints& points,
                         CallbackSlot<Callback> Service::*slot, Callback cb) {
  points.entry.print();
  if (cb == nullptr) {
    points.nullCallback.print();
    return false;
  }
  for (;;) {
    const std::shared_ptr<Service> object = obtain(table);
    if (!object) {
      points.noInstance.print();
      reportFailure(cb);
      return false;
    }
    try {
      const Created created = joinClient(object, [&object, slot, cb] { (*object.*slot).set(cb); });
      // Another thread has just disabled the object and removed it from its slot: obtain() makes a
      // new one.
      if (created != Created::Disabled) return created == Created::Yes;
    } catch (const std::bad_alloc&) {
      const CallbackGate::Pass pass(*object->mGate);
      if (pass) reportFailure(cb);
      return false;
    }
  }
}

SdkBase::Created Service::joinClient(const std::shared_ptr<Service>& object, const Change& change) {
  const ServiceTable& table = object->mTable;
  const auto listener = [object](SdkClientBase::SdkStatus status,
                                 const std::vector<uint8_t>& blob) {
    object->blobListener(status, blob);
  };
  return object->createSdkInstance(
      table.type, listener, std::make_shared<SdkClientEvent>(table.type, table.enableMessage(true)),
      std::make_shared<SdkClientEvent>(table.type, table.enableMessage(false), true), change);
}

bool Service::disableWith(const ServiceTable& table, const DisablePoints& points) {
  points.entry.print();
  ServiceSlot& slot = table.slot();
  std::shared_ptr<Service> object;
  std::shared_ptr<SdkDisable> disable;
  uint64_t gate = 0;
  StatusCallback status = nullptr;
  StatusV2Callback statusV2 = nullptr;
  bool refused = false;
  do {
    // Here, without a lock, hasClient() waits for a thread that creates a client. Below nothing
    // waits.
    if (const auto present = slot.get()) present->hasClient();
    const LockGuard lock(slot.lock);
    object = slot.instance;
    // Read in one step with the decision: the callback of a later enable must not be told.
    const auto refuse = [&] {
      refused = true;
      status = object->mStatusIndCb.get();
      statusV2 = (*object.*table.statusV2).get();
    };
    if (object) disable = object->beginDisable(std::ref(refuse));  // by reference: no memory
    if (disable) {
      slot.instance.reset();
      gate = slot.closedGates.add(std::move(object->mGatePlace));
    }
  } while (object && !disable && !refused && !processStops());
  if (!object) {
    points.noInstance.print();
    return false;
  }
  if (!disable) {
    points.noClient.print();
    object->tell(status, STATUS_INTERNAL_ERROR);
    object->tell(statusV2, STATUS_V2_INTERNAL_ERROR);
    return false;
  }
  object->forgetRequests();
  if (!CallbackGate::insideCallback()) slot.closedGates.await(gate);
  finishDisable(disable);
  return true;
}

bool Service::enable(const ServiceTable& table, StatusCallback cb) {
  return enableWith<StatusCallback>(table, table.points.enable, &Service::mStatusIndCb, cb);
}

bool Service::create(const ServiceTable& table, StatusV2Callback cb) {
  return enableWith(table, table.points.create, table.statusV2, cb);
}

bool Service::disable(const ServiceTable& table) {
  return disableWith(table, table.points.disable);
}

bool Service::destroy(const ServiceTable& table) {
  return disableWith(table, table.points.destroy);
}

std::shared_ptr<Service> Service::objectFor(const ServiceTable& table,
                                            const RequestPoints& points) {
  std::shared_ptr<Service> object = table.slot().get();
  if (!object) points.noInstance.print();
  return object;
}

std::vector<uint8_t> Service::serialise(const google::protobuf::MessageLite& message) {
  std::vector<uint8_t> blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

int64_t Service::request(const google::protobuf::MessageLite& message, const Change& change) {
  auto event = std::make_shared<SdkClientEvent>(mTable.type, serialise(message));
  return accept(change, std::move(event)) ? kRequestDone : kNoService;
}

void Service::handleStatusInd(status_e status) {
  callBack(mStatusIndCb, status);
  // Converted only if there is a callback: the conversion logs a status that has no second number.
  const StatusV2Callback statusV2 = (this->*mTable.statusV2).get();
  if (statusV2) tell(statusV2, orb::utils::statusToStatusV2(status));
}

void Service::blobListener(SdkClientBase::SdkStatus status, const std::vector<uint8_t>& blob) {
  log(mTable.points.blobListener);
  switch (status) {
    case SdkClientBase::BlobReceived:
      handleBlob(blob);
      break;
    case SdkClientBase::SendFailed:
      handleStatusInd(STATUS_INTERNAL_ERROR);
      break;
    case SdkClientBase::ServiceDown:
      handleStatusInd(STATUS_SERVICE_DOWN);
      break;
    default:
      // Service up included: it is not passed on.
      mTable.points.unknownStatus.print(static_cast<int>(status));
      break;
  }
}
