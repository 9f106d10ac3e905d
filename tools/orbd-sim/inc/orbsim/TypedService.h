// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>

#include "orbsim/Service.h"
#include "orbsim/Session.h"

namespace orbsim {

// Numbers with the same meaning in the packages of all services.
constexpr int kEnableEvent = 0;
constexpr int kStatusEvent = 0;
enum class Outcome { kSuccess = 1, kInvalidArg = 2, kNotSupported = 4 };

template <class Message>
Blob serialize(const Message& message) {
  Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

// The common part of all services: reads or refuses a request, enables and disables, sends periodic
// messages at the ticks of the world, answers, logs and records. Each service defines its other
// requests, when it reports, and the texts for the log.
//
// Requests are answered whether or not the client has enabled the service, because a client of a
// restarted daemon continues with any request. While the answers of the service are off, it keeps
// its state and sends nothing.
template <class Request, class Answer, class State, uint32_t kSdkType, bool kDropsStale = true>
class TypedService : public Service {
 public:
  void handleBlob(const Blob& blob) final {
    Request request;
    if (!request.ParseFromArray(blob.data(), static_cast<int>(blob.size()))) {
      mSession.log("%s: request of %zu bytes cannot be read", name(), blob.size());
      sendStatus(Outcome::kInvalidArg);
      return;
    }
    if (mControl.logs()) mSession.log("%s: %s", name(), requestText(request).c_str());
    const bool wasReporting = reporting();
    mAnswering = true;
    if (request.event_id() == kEnableEvent) {
      handleEnable(request);
    } else if (!handleRequest(request)) {
      sendStatus(Outcome::kNotSupported);
    }
    mAnswering = false;
    if (reporting() && !wasReporting) startReports();
    record();
  }

  std::optional<Clock::time_point> nextDue() final {
    if (!reporting()) return std::nullopt;
    return reportDue();
  }

  void handleDue() final {
    // A client that does not read must not get many old reports.
    const bool stale = kDropsStale && mSession.queuedBytes() > 0;
    Answer report;
    if (!makeReport(report) || stale || !send(report)) return;
    ++mState.reports;
    record();
  }

 protected:
  using RequestData = std::decay_t<decltype(std::declval<Request>().data())>;
  using AnswerData = std::decay_t<decltype(std::declval<Answer>().data())>;

  TypedService(Session& session, Control& control) : mControl(control), mSession(session) {
    record();
  }

  // Handles any request except enable. False if there is no such request.
  virtual bool handleRequest(const Request& request) = 0;
  // Whether periodic messages are requested; and: stops them.
  virtual bool reporting() const = 0;
  virtual void stopReporting() = 0;
  // Starts periodic messages; when the next one is due.
  virtual void startReports() = 0;
  virtual std::optional<Clock::time_point> reportDue() = 0;
  // The next periodic message. False if there is nothing to send this time.
  virtual bool makeReport(Answer& report) = 0;
  // The service's part of a log line, with a leading blank, or nothing.
  virtual std::string describe(const RequestData& data) const = 0;
  virtual std::string describe(const AnswerData& data) const = 0;

  void sendStatus(Outcome outcome) {
    using Event = decltype(std::declval<Answer>().event_id());
    using Status = decltype(std::declval<Answer>().data().status_msg().status());
    Answer message;
    message.set_event_id(static_cast<Event>(kStatusEvent));
    message.mutable_data()->mutable_status_msg()->set_status(static_cast<Status>(outcome));
    send(message);
  }

  bool send(const Answer& message) {
    if (!(mAnswering ? mSession.answersRequest() : mControl.answers(kSdkType))) return false;
    const Blob blob = serialize(message);
    const bool sent =
        mAnswering ? mSession.answerBlob(kSdkType, blob) : mSession.sendBlob(kSdkType, blob);
    if (mControl.logs()) {
      mSession.log("%s: %s %s", name(), sent ? "->" : "not sent:", answerText(message).c_str());
    }
    return sent;
  }

  Control& mControl;
  State mState;

 private:
  static const char* name() { return serviceName(kSdkType); }
  void record() { mControl.recorder().setState(mSession.id(), mState); }

  void handleEnable(const Request& request) {
    if (!request.data().has_enable_msg()) {
      sendStatus(Outcome::kInvalidArg);
      return;
    }
    mState.enabled = request.data().enable_msg().enable();
    if (!mState.enabled) stopReporting();
    // After a disable the client may already be gone; then nobody needs the answer.
    sendStatus(Outcome::kSuccess);
  }

  template <class Message>
  static std::string headText(const Message& message, const std::string& eventName) {
    std::string text = eventName;
    if (text.empty()) text = "event " + std::to_string(message.event_id());
    if (message.transaction_id() != 0) text += " txn=" + std::to_string(message.transaction_id());
    return text;
  }
  // The names of events and statuses are in the message's package.
  std::string requestText(const Request& request) const {
    std::string text = headText(request, ServiceEventId_Name(request.event_id()));
    const RequestData& data = request.data();
    if (data.has_enable_msg()) {
      text += data.enable_msg().enable() ? " enable=true" : " enable=false";
    }
    return text + describe(data);
  }
  std::string answerText(const Answer& answer) const {
    std::string text = headText(answer, ClientEventId_Name(answer.event_id()));
    const AnswerData& data = answer.data();
    if (data.has_status_msg()) text += " " + Status_Name(data.status_msg().status());
    return text + describe(data);
  }

  Session& mSession;
  bool mAnswering = false;
};

}  // namespace orbsim
