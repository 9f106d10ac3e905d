// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include <fcntl.h>
#include <orb/lce.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <ctime>
#include <filesystem>
#include <fstream>
#include <mutex>

#include "Accounts.h"
#include "Application.h"
#include "Interposer.h"
#include "RecordingPlatform.h"
#include "Scenario.h"
#include "TestKeys.h"
#include "orbsim/Daemon.h"

namespace failcalls {

namespace {

namespace fs = std::filesystem;

constexpr char kLogs[] = "/data/vendor/orb_logs/other";
constexpr char kConfig[] = "/data/vendor/orb_logs/config/orb_log_config";
constexpr char kThreadOfDumps[] = "orb-log-dump";
constexpr int kOldFiles = 5;

void onLast(LceEstimationReportStatus, LceEstimationReport) {
  Application::get().hear(Lce, Heard::Last);
}

// Files that earlier processes with this name left, of different ages: more than the log keeps.
void leaveOldFiles(const std::string& name) {
  const std::string start = "orb_log_" + name;
  for (const auto& entry : fs::directory_iterator(kLogs)) {
    if (entry.path().filename().string().find(start) == 0) fs::remove(entry.path());
  }
  for (int i = 0; i < kOldFiles; ++i) {
    const std::string path = std::string(kLogs) + "/" + start + "_0" + std::to_string(i);
    std::ofstream(path) << "old";
    const timespec time = {::time(nullptr) - 100 * i, 0};
    const timespec times[] = {time, time};
    utimensat(AT_FDCWD, path.c_str(), times, 0);
  }
}

class Logging {
 public:
  explicit Logging(Run& run)
      : mRun(run), mName(fs::path(run.socketPath).filename()), mDaemon(optionsOf(run)) {
    mApp.begin(run);
    mRun.stopDaemon = [this] { stopDaemon(); };
  }

  void run() {
    // The files contain the process's name, so runs at the same time use different files.
    program_invocation_short_name = mName.data();
    leaveOldFiles(mName);
    recording::setProperty("persist.vendor.data.orb.logging", "1");
    recording::setProperty("persist.vendor.data.orb.log_perms", "1");
    recording::setDiagListening(true);
    const std::set<std::string> before = descriptors();
    if (!mDaemon.start()) return put(mRun.report.broken, "no daemon: " + mDaemon.error());
    arm(mRun.fault, mRun.report.probe);
    useLce("");
    command();
    phase("disable");
    if (mApp.isEnabled(Lce)) mApp.disable(Lce);
    disarm();
    if (mApp.isEnabled(Lce) && !mApp.disable(Lce)) breaks("cannot disable");
    again();
    stopDaemon();
    const std::string missing = notGivenBack(before);
    if (!missing.empty()) breaks("not given back:" + missing);
  }

 private:
  static orbsim::Options optionsOf(const Run& run) {
    orbsim::Options options;
    options.socketPath = run.socketPath;
    options.reportInterval = std::chrono::milliseconds(0);
    return options;
  }
  void stopDaemon() {
    std::call_once(mDaemonStop, [this] { mDaemon.stop(); });
  }
  void phase(const std::string& name) {
    put(mRun.report.phase, name);
    mApp.listen();
  }
  void breaks(const std::string& rule) {
    if (mRun.report.broken[0] == '\0') put(mRun.report.broken, rule);
  }

  void useLce(const std::string& when) {
    phase("enable" + when);
    if (mApp.enable(Lce)) mApp.await(Lce, Heard::Success);
    phase("request" + when);
    const bool asked = mApp.request("lceGetLastEstimationReport",
                                    [] { return lceGetLastEstimationReport(onLast); });
    if (asked) mApp.await(Lce, Heard::Last);
  }

  // Like the diagnostic library's thread, which does not catch exceptions.
  void command() {
    phase("diagnostic command");
    try {
      recording::callDiagCommand({1, 2, 3});
    } catch (...) {
      breaks("an exception left the diagnostic command");
    }
    if (!runs(kThreadOfDumps)) return;
    // Here a failure may lose a dump, and nothing reports that.
    const bool failed = mRun.report.probe.injected != 0;
    recording::waitFor(isDump, failed ? mRun.patience : std::chrono::seconds(3));
  }
  static bool isDump(const recording::Line& line) {
    return line.text.find("Dump completed, request type: USER_COMMAND") != std::string::npos;
  }

  void again() {
    const unsigned lost = mRun.report.lost;
    mRun.patience = std::chrono::seconds(5);
    useLce(" again");
    if (mRun.report.lost != lost) {
      breaks(std::string("does not work again, first lost: ") + mRun.report.firstLost);
    }
    mRun.report.logStopped = !runs(kThreadOfDumps);
    if (!mApp.isEnabled(Lce) || !mApp.disable(Lce)) breaks("cannot enable and disable again");
  }

  Run& mRun;
  std::string mName;
  Application& mApp = Application::get();
  orbsim::Daemon mDaemon;
  std::once_flag mDaemonStop;
};

}  // namespace

const Scenario kLogScenario{
    "log",
    [](Run& run) { Logging(run).run(); },
    {Call::Open, Call::Read, Call::Write, Call::Stat, Call::Unlink, Call::Fdopendir, Call::Close,
     Call::ClockGettime, Call::PthreadCreate, Call::Malloc, Call::Calloc, Call::OperatorNew}};

// In a separate process: libcrypto's own set-up is one of the things that may fail later.
void prepareLogScenario() {
  const pid_t writer = fork();
  if (writer == 0) {
    const char head[] = {static_cast<char>(3000 & 0xff), 3000 >> 8, 0, 0, 0, 0, 0, 0, 3};
    fs::create_directories(fs::path(kConfig).parent_path());
    std::ofstream file(kConfig, std::ios::binary);
    file.write(head, sizeof head);
    file << testkeys::rsaKey(2048).publicPem;
    file.close();
    _exit(0);
  }
  waitpid(writer, nullptr, 0);
}

}  // namespace failcalls
