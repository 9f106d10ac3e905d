// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
#include "orbctl/StatusReport.h"

#include <poll.h>

#include <algorithm>
#include <cerrno>

#include "orbctl/LibraryClient.h"
#include "orbctl/Names.h"
#include "orbctl/QuietLog.h"

namespace orbctl {
namespace {

using std::chrono::milliseconds;

// Waits for events; false after the timeout.
bool waitForEvents(const EventQueue& queue, Clock::time_point end) {
  for (;;) {
    const auto left = std::chrono::ceil<milliseconds>(end - Clock::now()).count();
    pollfd waited = {queue.fd(), POLLIN, 0};
    const int ready = poll(&waited, 1, left > 0 ? static_cast<int>(left) : 0);
    if (ready >= 0 || errno != EINTR) return ready > 0;
  }
}

std::optional<status_e> firstStatus(const std::vector<Event>& events, const LibraryClient& client) {
  for (const Event& event : events) {
    if (!client.isCurrent(event)) continue;
    if (const auto* const status = std::get_if<StatusEvent>(&event.data)) return status->status;
  }
  return std::nullopt;
}

ServiceFinding::State stateFor(status_e status) {
  if (status == STATUS_SUCCESS || status == STATUS_SERVICE_UP)
    return ServiceFinding::State::kEnabled;
  return status == STATUS_SERVICE_DOWN ? ServiceFinding::State::kDown
                                       : ServiceFinding::State::kRefused;
}

ServiceFinding ask(LibraryClient& client, EventQueue& queue, Service service,
                   milliseconds timeout) {
  ServiceFinding finding;
  finding.service = service;
  const Clock::time_point start = Clock::now();
  (void)client.enable(service);  // if the library cannot start, a status reports it
  while (!finding.status && waitForEvents(queue, start + timeout)) {
    size_t lost = 0;
    finding.status = firstStatus(queue.take(lost), client);
  }
  finding.after = std::chrono::duration_cast<milliseconds>(Clock::now() - start);
  if (finding.status) finding.state = stateFor(*finding.status);
  client.disable(service);
  return finding;
}

std::string secondsText(milliseconds time) {
  const auto tenths = (time.count() + 50) / 100;
  std::string text = std::to_string(tenths / 10);
  if (tenths % 10 != 0) text += "." + std::to_string(tenths % 10);
  return text + " s";
}

std::string textOf(const ServiceFinding& finding, milliseconds timeout) {
  switch (finding.state) {
    case ServiceFinding::State::kEnabled:
      return "enabled after " + std::to_string(finding.after.count()) + " ms";
    case ServiceFinding::State::kRefused:
      return std::string("refused with status ") + nameOf(*finding.status);
    case ServiceFinding::State::kDown:
      return "SERVICE_DOWN";
    case ServiceFinding::State::kNoAnswer:
      break;
  }
  return "no answer within " + secondsText(timeout);
}

}  // namespace

const char* wordOf(ServiceFinding::State state) {
  switch (state) {
    case ServiceFinding::State::kEnabled:
      return "enabled";
    case ServiceFinding::State::kRefused:
      return "refused";
    case ServiceFinding::State::kDown:
      return "down";
    case ServiceFinding::State::kNoAnswer:
      break;
  }
  return "no-answer";
}

const ServiceFinding* StatusReport::firstTrouble() const {
  const auto found = std::find_if(services.begin(), services.end(), [](const auto& service) {
    return service.state != ServiceFinding::State::kEnabled;
  });
  return found == services.end() ? nullptr : &*found;
}

StatusReport findStatus(const std::string& path, milliseconds timeout) {
  StatusReport report;
  report.path = path;
  report.timeout = timeout;
  report.socket = probeSocket(path, timeout);
  if (report.socket.state != SocketState::kWell) {
    report.notAskedBecause = "the socket has a problem";
  } else if (path != daemonSocket()) {
    report.notAskedBecause = "the library uses " + daemonSocket() + " only";
  } else {
    const QuietLog quiet;
    EventQueue queue;
    LibraryClient client(queue);
    report.asked = true;
    // One after the other, because a lost connection is reported to all enabled services.
    for (const Service service : kAllServices)
      report.services.push_back(ask(client, queue, service, timeout));
  }
  return report;
}

int exitStatusOf(const StatusReport& report) {
  switch (report.socket.state) {
    case SocketState::kNoFolder:
    case SocketState::kNoSocket:
      return 3;
    case SocketState::kNotASocket:
      return 4;
    case SocketState::kNoPermission:
      return 5;
    case SocketState::kRefused:
      return 6;
    case SocketState::kNotAccepting:
      return 7;
    case SocketState::kSilent:
      return 8;
    case SocketState::kClosed:
      return 9;
    case SocketState::kWrongRecord:
      return 10;
    case SocketState::kFailed:
      return 1;
    case SocketState::kWell:
      break;
  }
  const ServiceFinding* const trouble = report.firstTrouble();
  if (trouble == nullptr) return 0;
  switch (trouble->state) {
    case ServiceFinding::State::kRefused:
      return 11;
    case ServiceFinding::State::kDown:
      return 12;
    default:
      return 13;
  }
}

std::string nextStepOf(const StatusReport& report) {
  if (!report.socket.next.empty()) return report.socket.next;
  const ServiceFinding* const trouble = report.firstTrouble();
  if (trouble == nullptr) return "nothing to do";
  const std::string name = nameOf(trouble->service);
  switch (trouble->state) {
    case ServiceFinding::State::kRefused:
      return "look in the daemon's log for why it refuses " + name;
    case ServiceFinding::State::kDown:
      return "the daemon drops " + name + " or ends meanwhile: see its log, try again";
    default:
      return "the daemon does not answer " + name + ": see its log; --timeout for a slow one";
  }
}

std::string textOf(const StatusReport& report) {
  std::string text = "daemon  " + std::string(wordOf(report.socket.state)) + ": ";
  if (report.socket.state == SocketState::kWell) {
    text += "handshake done on " + report.path + ", session " +
            std::to_string(report.socket.sessionId) + "\n";
  } else {
    text += report.socket.reason + "\n";
  }
  if (!report.socket.bytes.empty()) text += "came    " + hexText(report.socket.bytes) + "\n";
  for (const ServiceFinding& service : report.services)
    text += std::string(nameOf(service.service)) + "     " + textOf(service, report.timeout) + "\n";
  if (!report.asked) text += "services not asked: " + report.notAskedBecause + "\n";
  return text + "next: " + nextStepOf(report) + "\n";
}

}  // namespace orbctl
