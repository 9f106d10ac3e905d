// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#pragma once

#include <functional>
#include <memory>
#include <new>

#include "Service.h"
#include "ServiceApi.h"
#include "ServiceFixture.h"

// A service object that is called directly with all notifications of the SDK client. Each service's
// *Listener_test.cpp instantiates the suites; ObjectOf names the class.
namespace servicetest {

using Status = SdkClientBase::SdkStatus;

template <class S>
struct ObjectOf;

// Both generations are enabled with a daemon that does not answer.
template <class S>
class ServiceListener : public ServiceTest<S> {
 protected:
  static std::shared_ptr<Service> object() { return ObjectOf<S>::Type::mInstance().get(); }
};

TYPED_TEST_SUITE_P(ServiceListener);

TYPED_TEST_P(ServiceListener, FailedSendIsAnInternalErrorToBoth) {
  this->enableBothQuietly();
  this->object()->blobListener(Status::SendFailed, {});
  EXPECT_EQ(this->calls(), (typename TestFixture::CallList{{"status", STATUS_INTERNAL_ERROR, {}},
                                                           {"v2", STATUS_V2_INTERNAL_ERROR, {}}}));
  EXPECT_EQ(this->lines(), (LogLines{this->entered()}));
}

TYPED_TEST_P(ServiceListener, ServiceDownIsToldToBoth) {
  this->enableBothQuietly();
  this->object()->blobListener(Status::ServiceDown, {});
  EXPECT_EQ(this->calls(), (typename TestFixture::CallList{{"status", STATUS_SERVICE_DOWN, {}},
                                                           {"v2", STATUS_V2_SERVICE_DOWN, {}}}));
  EXPECT_EQ(this->lines(), (LogLines{this->entered()}));
}

TYPED_TEST_P(ServiceListener, ServiceUpAndUnknownStatusesAreOnlyLogged) {
  this->enableBothQuietly();
  LogLines expected;
  for (const int status : {3, 4, 100, -1}) {
    this->object()->blobListener(static_cast<Status>(status), {});
    expected.push_back(this->entered());
    expected.push_back(this->said("unknown internal status " + std::to_string(status)));
  }
  EXPECT_TRUE(this->calls().empty());
  EXPECT_EQ(this->lines(), expected);
}

TYPED_TEST_P(ServiceListener, StatusCallbackMayDisable) {
  ASSERT_EQ(1, TypeParam::enable([](status_e status) {
              TestFixture::onStatus(status);
              TestFixture::note("disable", TypeParam::disable());
            }));
  ASSERT_TRUE(this->daemon().waitForFrames(1));
  this->object()->blobListener(Status::ServiceDown, {});
  EXPECT_EQ(this->calls(), (typename TestFixture::CallList{{"status", STATUS_SERVICE_DOWN, {}},
                                                           {"disable", 1, {}}}));
  EXPECT_EQ(nullptr, this->object());
  const std::string name = TypeParam::kName;
  EXPECT_TRUE(this->waitForLine({"~" + name, "~" + name + " called"}));
}

TYPED_TEST_P(ServiceListener, DisabledObjectCallsNobody) {
  this->enableBothQuietly();
  const auto former = this->object();
  ASSERT_EQ(1, TypeParam::disable());
  former->blobListener(Status::SendFailed, {});
  former->blobListener(Status::ServiceDown, {});
  former->blobListener(Status::BlobReceived, serialise(statusMessage<TypeParam>(1)));
  EXPECT_TRUE(this->calls().empty());
}

// The line about a missing client is for objects that never had a client.
TYPED_TEST_P(ServiceListener, RequestDuringWhichTheServiceIsDisabledIsRefusedInSilence) {
  using Object = typename ObjectOf<TypeParam>::Type;
  const RequestPoints points = requestPoints(Object::kSource, "request", 1, 2);
  this->enableBothQuietly();
  EXPECT_EQ(-5, serviceApi::request<Object>(points, true, [](Object& object) {
    EXPECT_EQ(1, TypeParam::disable());
    return object.request(typename TypeParam::ClientMsg());
  }));
  ASSERT_EQ(1, TypeParam::enable(this->onStatus));
  EXPECT_EQ(-2, serviceApi::request<Object>(points, true, [](Object&) {
    EXPECT_EQ(1, TypeParam::disable());
    return kInvalidArguments;
  }));
  EXPECT_TRUE(this->linesOf("request").empty());
}

REGISTER_TYPED_TEST_SUITE_P(ServiceListener, FailedSendIsAnInternalErrorToBoth,
                            ServiceDownIsToldToBoth, ServiceUpAndUnknownStatusesAreOnlyLogged,
                            StatusCallbackMayDisable, DisabledObjectCallsNobody,
                            RequestDuringWhichTheServiceIsDisabledIsRefusedInSilence);

// Without enable: no callback is set, and no client and no daemon are needed.
template <class S>
class BareServiceObject : public ServiceObject<S> {
 protected:
  using Object = typename ObjectOf<S>::Type;

  // The service without memory for its object.
  static ServiceTable withoutMemory() {
    ServiceTable table = Object::kTable;
    table.make = []() -> std::shared_ptr<Service> { throw std::bad_alloc(); };
    return table;
  }
};

TYPED_TEST_SUITE_P(BareServiceObject);

TYPED_TEST_P(BareServiceObject, LogsItsLife) {
  std::make_shared<typename TestFixture::Object>();
  const std::string name = TypeParam::kName;
  EXPECT_EQ(this->lines(),
            (LogLines{{name, name + " ctor"}, {"~" + name, "~" + name + " called"}}));
}

TYPED_TEST_P(BareServiceObject, WithoutCallbacksStatusesAreLoggedAndDropped) {
  typename TestFixture::Object object;
  this->forgetAll();
  object.blobListener(Status::SendFailed, {});
  object.blobListener(Status::ServiceDown, {});
  object.blobListener(Status::BlobReceived, serialise(statusMessage<TypeParam>(8)));
  EXPECT_EQ(this->lines(),
            (LogLines{this->entered(), this->entered(), this->entered(), this->said("STATUS_IND"),
                      this->said("status_msg 8"), this->said("status 7")}));
  EXPECT_FALSE(recording::has("Unknown Status!")) << "nobody asks for the second number";
}

TYPED_TEST_P(BareServiceObject, HalfAMessageCountsForNothing) {
  typename TestFixture::Object object;
  this->forgetAll();
  // A complete event number, then a member that is cut off.
  object.blobListener(Status::BlobReceived, {0x08, 0x01, 0x1a, 0x05, 0x12});
  EXPECT_EQ(this->lines(), (LogLines{this->entered(), this->said("STATUS_IND"),
                                     this->said("Status IND message data not filled")}));
}

TYPED_TEST_P(BareServiceObject, EnableWithoutMemoryIsReportedToItsCallback) {
  EXPECT_EQ(0, serviceApi::enable(this->withoutMemory(), this->onStatus));
  EXPECT_EQ(this->calls(), (typename TestFixture::CallList{{"status", STATUS_INTERNAL_ERROR, {}}}));
  EXPECT_EQ(this->lines(), (LogLines{{TypeParam::kEnable, "Enable"},
                                     {TypeParam::kEnable, "Failed to get SDK instance."}}));
}

TYPED_TEST_P(BareServiceObject, CreateWithoutMemoryIsReportedToItsCallback) {
  EXPECT_EQ(-1, serviceApi::create(this->withoutMemory(), this->onV2));
  EXPECT_EQ(this->calls(), (typename TestFixture::CallList{{"v2", STATUS_V2_INTERNAL_ERROR, {}}}));
  EXPECT_EQ(this->lines(), (LogLines{{TypeParam::kCreate, "Create"},
                                     {TypeParam::kCreate, "Failed to get SDK instance."}}));
}

REGISTER_TYPED_TEST_SUITE_P(BareServiceObject, LogsItsLife,
                            WithoutCallbacksStatusesAreLoggedAndDropped,
                            HalfAMessageCountsForNothing,
                            EnableWithoutMemoryIsReportedToItsCallback,
                            CreateWithoutMemoryIsReportedToItsCallback);

// A complete log line, and the call that makes a service write it.
struct LineRow {
  const char* text;
  std::function<void()> provoke;
};

// A test of such rows: each must give its line, at debug priority with the default tag.
inline void expectLines(const std::vector<LineRow>& rows) {
  for (const LineRow& row : rows) {
    recording::clear();
    row.provoke();
    size_t found = 0;
    for (const recording::Line& line : recording::lines()) {
      if (line.text != row.text) continue;
      EXPECT_EQ(3, line.priority) << row.text;
      EXPECT_FALSE(line.hasTag) << row.text;
      ++found;
    }
    EXPECT_EQ(1u, found) << row.text;
  }
}

// The calls that give the lines of a service that has an object but no client, or no memory.
template <class S>
class LineSources : public BareServiceObject<S> {
 protected:
  using typename BareServiceObject<S>::Object;
  using Function = std::function<void()>;

  static Function withoutClient(Function function) {
    return [function] {
      {
        ServiceSlot& slot = Object::mInstance();
        const LockGuard lock(slot.lock);
        slot.instance = std::make_shared<Object>();
      }
      function();
      const LockGuard lock(Object::mInstance().lock);
      Object::mInstance().instance.reset();
    };
  }
  static Function told(int status) {
    return [status] { Object().blobListener(static_cast<Status>(status), {}); };
  }
  static Function receives(const Blob& blob) {
    return [blob] { Object().blobListener(Status::BlobReceived, blob); };
  }
  // The same after the enabled service has got the request of @p prepare.
  static Function receives(const Blob& blob, const std::function<void()>& prepare) {
    return [blob, prepare] {
      S::enable(BareServiceObject<S>::onStatus);
      prepare();
      const auto object = Object::mInstance().get();
      object->blobListener(Status::BlobReceived, blob);
      S::disable();
    };
  }
  static void enableWithoutCallback() { S::enable(nullptr); }
  static void createWithoutCallback() { S::create(nullptr); }
  static void enableWithoutMemory() {
    Service::enable(BareServiceObject<S>::withoutMemory(), BareServiceObject<S>::onStatus);
  }
  static void createWithoutMemory() {
    Service::create(BareServiceObject<S>::withoutMemory(), BareServiceObject<S>::onV2);
  }
  static void disable() { S::disable(); }
  static void destroy() { S::destroy(); }
  static void live() { Object(); }
};

}  // namespace servicetest
