// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <orb/sdl.h>

#include <mutex>

#include "Accounts.h"
#include "Application.h"
#include "Interposer.h"
#include "Scenario.h"
#include "lce.pb.h"
#include "lle.pb.h"
#include "lli.pb.h"
#include "orbsim/Daemon.h"

namespace failcalls {

namespace {

constexpr std::chrono::seconds kRecovery(3);

void onLast(LceEstimationReportStatus, LceEstimationReport) {
  Application::get().hear(Lce, Heard::Last);
}
void onReport(LceEstimationReportStatus, LceEstimationReport) {
  Application::get().hear(Lce, Heard::Report);
}
void onCriteria(LceReportingCriteriaStatus) { Application::get().hear(Lce, Heard::Criteria); }
void onLleLast(int32_t, const LleEstimationReport*) { Application::get().hear(Lle, Heard::Last); }
void onLleReport(int32_t, const LleEstimationReport*) {
  Application::get().hear(Lle, Heard::Report);
}
void onInterrupt(LliHandoffIndType, LliPreHandoffState, const LliInterruptInfo*) {
  Application::get().hear(Lli, Heard::Report);
}

orbsim::Options optionsOf(const Run& run) {
  orbsim::Options options;
  options.socketPath = run.socketPath;
  options.reportInterval = std::chrono::milliseconds(0);
  return options;
}

template <class Message>
orbsim::Blob bytesOf(const Message& message) {
  orbsim::Blob blob(message.ByteSizeLong());
  message.SerializeToArray(blob.data(), static_cast<int>(blob.size()));
  return blob;
}

orbsim::Blob indicationOf(Service service) {
  if (service == Lce) {
    LceProto::ClientMsg message;
    message.set_event_id(LceProto::ESTIMATION_REPORTS_IND);
    auto* const report = message.mutable_data()->mutable_estimation_reports_resp();
    report->set_rate(1000);
    report->set_error_string("a text that no short-string buffer has room for");
    return bytesOf(message);
  }
  if (service == Lle) {
    LleProto::ClientMsg message;
    message.set_event_id(LleProto::IND_REPORT_RESP);
    message.mutable_data()->mutable_ind_report_resp()->set_status(true);
    return bytesOf(message);
  }
  LliProto::ClientMsg message;
  message.set_event_id(LliProto::LLI_IND_RESP);
  message.mutable_data()->mutable_lli_ind_resp()->set_estimated_time_to_interruption(20);
  return bytesOf(message);
}

// The steps of the scenario, in their order.
class Services {
 public:
  explicit Services(Run& run) : mRun(run), mDaemon(optionsOf(run)) {
    mApp.begin(run);
    mRun.stopDaemon = [this] { stopDaemon(); };
  }

  void run() {
    const std::set<std::string> before = descriptors();
    if (!mDaemon.start()) return put(mRun.report.broken, "no daemon: " + mDaemon.error());
    arm(mRun.fault, mRun.report.probe);
    enableAll();
    requests();
    indications();
    loseConnection();
    disableInside();
    disableAll();
    disarm();
    again();
    phase("accounts");
    stopDaemon();
    const std::string missing = notGivenBack(before);
    if (!missing.empty()) breaks("not given back:" + missing);
  }

 private:
  void stopDaemon() {
    std::call_once(mDaemonStop, [this] { mDaemon.stop(); });
  }
  void phase(const char* name) {
    put(mRun.report.phase, name);
    mApp.listen();
  }
  void breaks(const std::string& rule) {
    if (mRun.report.broken[0] == '\0') put(mRun.report.broken, rule);
  }

  void enableAll() {
    phase("enable");
    for (const Service service : {Lce, Lle, Lli}) mApp.enable(service);
    for (const Service service : {Lce, Lle, Lli}) {
      if (mApp.isEnabled(service)) mApp.await(service, Heard::Success);
    }
  }

  void requests() {
    phase("requests");
    LceReportingCriteria criteria = {};
    criteria.firstListCount = criteria.secondListCount = LCE_REPORTING_CRITERIA_LIST_MAX;
    const bool set = mApp.request("lceSetReportingCriteria",
                                  [&] { return lceSetReportingCriteria(&criteria, onCriteria); });
    mApp.request("lceRegEstimationReports", [] { return lceRegEstimationReports(onReport); });
    const bool last = askForLast();
    mApp.request("lcePerformReportingAction",
                 [] { return lcePerformReportingAction(LCE_REPORTING_ACTION_START); });
    const bool lleSet =
        mApp.request("lleSetReportingCriteria", [] { return lleSetReportingCriteria(1); });
    mApp.request("lleRegEstimationReports", [] { return lleRegEstimationReports(onLleReport); });
    const bool lleLast = mApp.request("lleGetLastEstimationReport",
                                      [] { return lleGetLastEstimationReport(onLleLast); });
    const bool lli = registerInterrupts();
    if (set) mApp.await(Lce, Heard::Criteria);
    if (last) mApp.await(Lce, Heard::Last);
    if (lleSet) mApp.await(Lle, Heard::Success);
    if (lleLast) mApp.await(Lle, Heard::Last);
    if (lli) mApp.await(Lli, Heard::Success);
  }
  bool askForLast() {
    return mApp.request("lceGetLastEstimationReport",
                        [] { return lceGetLastEstimationReport(onLast); });
  }
  bool registerInterrupts() {
    return mApp.request("lliRegLinkInterruptInd",
                        [] { return lliRegLinkInterruptInd(onInterrupt); });
  }

  void indications() {
    phase("indications");
    for (const Service service : {Lce, Lle, Lli}) {
      const uint32_t id = sessionOf(service);
      if (id != 0) mDaemon.sendBlob(id, sdkTypeOf(service), indicationOf(service));
    }
    for (const Service service : {Lce, Lle, Lli}) {
      if (sessionOf(service) != 0) mApp.await(service, Heard::Report);
    }
  }
  // The service's open session; 0 if there is none.
  uint32_t sessionOf(Service service) {
    uint32_t found = 0;
    for (const orbsim::Frame& frame : mDaemon.frames()) {
      if (frame.header.source == endpointOf(service)) found = frame.sessionId;
    }
    for (const uint32_t id : mDaemon.sessionIds()) {
      if (id == found) return id;
    }
    return 0;
  }

  // Every service gets the loss; the next request connects again.
  void loseConnection() {
    phase("lost connection");
    const uint32_t id = sessionOf(Lce);
    mApp.expectDown(id != 0);
    if (id != 0 && mDaemon.closeSession(id)) {
      for (const Service service : {Lce, Lle, Lli}) {
        if (mApp.isEnabled(service)) mApp.await(service, Heard::Down);
      }
    }
    mApp.expectDown(false);
    phase("reconnect");
    if (askForLast()) mApp.await(Lce, Heard::Last);
  }

  void disableInside() {
    phase("disable inside a callback");
    if (!mApp.isEnabled(Lli)) return;
    mApp.inNextSuccess(Lli, [this] { mApp.disable(Lli); });
    registerInterrupts();
    mApp.awaitAction();
    phase("enable after that");
    if (mApp.isEnabled(Lli)) return;
    if (mApp.enable(Lli)) mApp.await(Lli, Heard::Success);
  }

  // A disable that was refused because memory ran out is repeated, as its result demands.
  void disableAll() {
    phase("disable");
    for (const Service service : {Lle, Lce, Lli}) {
      if (mApp.isEnabled(service)) mApp.disable(service);
    }
    disarm();
    phase("disable once more");
    for (const Service service : {Lle, Lce, Lli}) {
      if (mApp.isEnabled(service) && !mApp.disable(service)) {
        breaks(std::string("cannot disable ") + nameOf(service));
      }
    }
  }

  // Nothing fails any more, so everything must work.
  void again() {
    phase("again");
    mRun.patience = kRecovery;
    for (const Service service : {Lce, Lle, Lli}) {
      if (!mApp.enable(service)) breaks(std::string("cannot enable again ") + nameOf(service));
    }
    if (!worksAgain()) breaks("does not work again");
    phase("disable again");
    for (const Service service : {Lce, Lle, Lli}) {
      if (!mApp.disable(service)) breaks(std::string("cannot disable again ") + nameOf(service));
    }
  }
  bool worksAgain() {
    for (const Service service : {Lce, Lle, Lli}) {
      if (!mApp.await(service, Heard::Success)) return false;
    }
    return askForLast() && mApp.await(Lce, Heard::Last);
  }

  Run& mRun;
  Application& mApp = Application::get();
  orbsim::Daemon mDaemon;
  std::once_flag mDaemonStop;
};

}  // namespace

const Scenario kServicesScenario{
    "services",
    [](Run& run) { Services(run).run(); },
    {Call::Socket, Call::Connect, Call::Send, Call::Recv, Call::Shutdown, Call::Close,
     Call::Eventfd, Call::EpollCreate1, Call::EpollCtl, Call::EpollWait, Call::Read, Call::Write,
     Call::ClockGettime, Call::PthreadCreate, Call::Malloc, Call::Calloc, Call::OperatorNew,
     Call::Open, Call::Dlopen}};

}  // namespace failcalls
