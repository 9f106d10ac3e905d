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

Service::Service(const ServiceTable& table) : mTable(table) { log(table.constructed); }

Service::~Service() {
  log(mTable.destroyed);
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
bool Service::open(const ServiceTable& table, const OpeningPoints& points,
                   Callback Service::*member, Callback cb) {
  points.entry.print(table.source);
  if (cb == nullptr) {
    points.nullCallback.print(table.source);
    return false;
  }
  for (;;) {
    const std::shared_ptr<Service> object = obtain(table);
    if (!object) {
      points.noInstance.print(table.source);
      reportFailure(cb);
      return false;
    }
    try {
      const Created created = joinClient(object, [&object, member, cb] { *object.*member = cb; });
      // An object that another thread has just disabled is out of its slot: the next one is new.
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

bool Service::close(const ServiceTable& table, const ClosingPoints& points) {
  points.entry.print(table.source);
  ServiceSlot& slot = table.slot();
  std::shared_ptr<Service> object;
  std::shared_ptr<SdkDisable> disable;
  uint64_t gate = 0;
  StatusCallback status = nullptr;
  StatusV2Callback statusV2 = nullptr;
  bool refused = false;
  do {
    // A creation under way is waited for here, with no lock held, and not below.
    if (const auto present = slot.get()) present->hasClient();
    const LockGuard lock(slot.lock);
    object = slot.instance;
    // Who is told is read with the decision: the callback of an enable that comes a moment later
    // has nothing to hear.
    const auto refuse = [&]() ORB_REQUIRES(object->mLock) {
      refused = true;
      status = object->mStatusIndCb;
      statusV2 = *object.*table.statusV2;
    };
    if (object) disable = object->beginDisable(std::ref(refuse));  // by reference: no memory
    if (disable) {
      slot.instance.reset();
      gate = slot.closedGates.add(std::move(object->mGatePlace));
    }
  } while (object && !disable && !refused && !processStops());
  if (!object) {
    points.noInstance.print(table.source);
    return false;
  }
  if (!disable) {
    points.noClient.print(table.source);
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
  return open<StatusCallback>(table, table.enable, &Service::mStatusIndCb, cb);
}

bool Service::create(const ServiceTable& table, StatusV2Callback cb) {
  return open(table, table.create, table.statusV2, cb);
}

bool Service::disable(const ServiceTable& table) { return close(table, table.disable); }

bool Service::destroy(const ServiceTable& table) { return close(table, table.destroy); }

std::shared_ptr<Service> Service::readyService(const ServiceTable& table,
                                               const RequestPoints& points) {
  std::shared_ptr<Service> object = table.slot().get();
  if (!object) {
    points.noInstance.print(table.source);
  } else if (!object->hasClient()) {
    points.noClient.print(table.source);
    object.reset();
  }
  return object;
}

// Not analysed: read() locks around the members that it is handed.
void Service::handleStatusInd(status_e status) ORB_NO_THREAD_ANALYSIS {
  callBack(mStatusIndCb, status);
  const StatusV2Callback& statusV2 = this->*mTable.statusV2;
  if (read(statusV2)) callBack(statusV2, orb::utils::statusToStatusV2(status));
}

void Service::blobListener(SdkClientBase::SdkStatus status, const std::vector<uint8_t>& blob) {
  log(mTable.blobListener);
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
      mTable.unknownStatus.print(mTable.source, static_cast<int>(status));
      break;
  }
}
