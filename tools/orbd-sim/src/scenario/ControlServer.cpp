// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

#include "ControlServer.h"

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>

#include "Json.h"
#include "orbsim/ControlSocket.h"

namespace orbsim {
namespace {

constexpr size_t kMostClients = 16;
constexpr size_t kLongestLine = size_t{64} * 1024;
// Without descriptors a connection stays pending: wait a short time, because polling would return
// at once.
constexpr int kPauseMs = 20;

Json serviceJson(const ServiceState& state) {
  return {{"enabled", state.enabled}, {"reports", state.reports}};
}

Json sessionJson(const Daemon& daemon, const SessionView& view) {
  const LceState lce = daemon.lceState(view.id);
  const LleState lle = daemon.lleState(view.id);
  const LliState lli = daemon.lliState(view.id);
  Json json = {{"id", view.id},
               {"pid", view.process},
               {"endpoint", static_cast<int64_t>(view.endpoint)},
               {"lce", serviceJson(lce)},
               {"lle", serviceJson(lle)},
               {"lli", serviceJson(lli)}};
  json["lce"]["criteria"] = lce.criteriaSet;
  json["lce"]["reporting"] = lce.reporting;
  json["lle"]["criteria"] = lle.criteria;
  json["lli"]["registered"] = lli.registered;
  return json;
}

std::string lineOf(const Json& json) {
  return json.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

std::string refusal(const std::string& reason, bool wrong) {
  Json json = {{"ok", false}, {"error", reason}};
  if (wrong) json["wrong"] = true;
  return lineOf(json);
}

}  // namespace

bool ControlServer::open(const std::string& path) {
  mPlace = std::make_unique<SocketPlace>(path, 0600);
  mListenFd = mPlace->open(static_cast<int>(kMostClients));
  if (mListenFd < 0) {
    mError = mPlace->error();
    return false;
  }
  mThread = std::thread(&ControlServer::loop, this);
  return true;
}

void ControlServer::close() {
  if (!mThread.joinable()) return;
  ::shutdown(mListenFd, SHUT_RDWR);
  mWake.wake();
  mThread.join();
  ::close(mListenFd);
  mPlace->removeSocket();
}

void ControlServer::loop() {
  for (;;) {
    std::vector<pollfd> fds = {{mWake.fd(), POLLIN, 0}};
    const bool takes = mClients.size() < kMostClients && !mExhausted;
    fds.push_back({takes ? mListenFd : -1, POLLIN, 0});
    for (const Client& client : mClients) fds.push_back({client.fd, POLLIN, 0});
    if (::poll(fds.data(), fds.size(), mExhausted ? kPauseMs : -1) < 0 && errno != EINTR) break;
    mExhausted = false;
    if (fds[0].revents != 0) break;
    for (size_t i = mClients.size(); i-- > 0;) {
      if (fds[i + 2].revents == 0 || receive(mClients[i])) continue;
      ::close(mClients[i].fd);
      mClients.erase(mClients.begin() + static_cast<std::ptrdiff_t>(i));
    }
    if (fds[1].revents != 0) accept();
  }
  for (const Client& client : mClients) ::close(client.fd);
  mClients.clear();
}

void ControlServer::accept() {
  const int fd = ::accept4(mListenFd, nullptr, nullptr, SOCK_CLOEXEC | SOCK_NONBLOCK);
  if (fd >= 0) {
    mClients.push_back({fd, {}});
  } else {
    mExhausted = errno == EMFILE || errno == ENFILE || errno == ENOMEM;
  }
}

// False at the end of the connection.
bool ControlServer::receive(Client& client) {
  char buffer[4096];
  const ssize_t got = ::recv(client.fd, buffer, sizeof buffer, 0);
  if (got < 0) return errno == EINTR || errno == EAGAIN;
  if (got == 0) return false;
  client.input.append(buffer, static_cast<size_t>(got));
  for (;;) {
    const size_t end = client.input.find('\n');
    if (end == std::string::npos) return client.input.size() <= kLongestLine;
    const std::string text = answer(client.input.substr(0, end));
    client.input.erase(0, end + 1);
    // A client that does not read its answers gets no more.
    const ssize_t sent = ::send(client.fd, text.data(), text.size(), MSG_NOSIGNAL);
    if (sent != static_cast<ssize_t>(text.size())) return false;
  }
}

// An order, or a list of orders. If one of a list is wrong, none is done.
std::string ControlServer::answer(const std::string& line) {
  std::string error;
  const auto json = parseJson(line, error);
  if (!json) return refusal(error, true);
  const bool several = json->is_array() && !json->empty();
  const Json orders = several ? *json : Json::array({*json});
  std::vector<Action> actions;
  for (const Json& order : orders) {
    if (!checkAction(order, error)) return refusal(error, true);
    const auto action = readAction(order, "", error);
    if (!action) return refusal(error, true);
    if (!several && std::holds_alternative<StatusAction>(*action)) return status();
    actions.push_back(*action);
  }
  for (size_t i = 0; i < actions.size(); ++i) {
    error = mStage.perform(actions[i], "control: " + orders[i].dump());
    if (!error.empty()) return refusal(error, false);
  }
  return lineOf({{"ok", true}});
}

std::string ControlServer::status() {
  World& world = mDaemon.world();
  const World::View view = world.view();
  const Estimate& estimate = view.estimate;
  const auto time = world.now();
  Json sessions = Json::array();
  for (const SessionView& session : mDaemon.sessionViews()) {
    sessions.push_back(sessionJson(mDaemon, session));
  }
  Json model = {{"rat", view.rat},
                {"handoff", view.handoff},
                {"rate", estimate.link.rate / 1000.0},
                {"direction", estimate.link.downlink ? "down" : "up"},
                {"uplink-latency", static_cast<double>(estimate.latency.ulLatency) / 1000.0},
                {"downlink-latency", static_cast<double>(estimate.latency.dlLatency) / 1000.0}};
  return lineOf({{"ok", true},
                 {"socket", mDaemon.socketPath()},
                 {"begun", time.has_value()},
                 {"time", time ? static_cast<double>(time->count()) / 1000.0 : 0.0},
                 {"paused", world.paused()},
                 {"model", model},
                 {"sessions", sessions}});
}

// Without a scenario, the socket has its own stage.
struct ControlSocket::Parts {
  explicit Parts(Daemon& daemon) : stage(daemon), server(daemon, stage) {}

  Stage stage;
  ControlServer server;
};

ControlSocket::ControlSocket(Daemon& daemon) : mParts(std::make_unique<Parts>(daemon)) {}

ControlSocket::~ControlSocket() { close(); }

bool ControlSocket::open(const std::string& path) { return mParts->server.open(path); }

const std::string& ControlSocket::error() const { return mParts->server.error(); }

void ControlSocket::close() {
  mParts->server.close();
  mParts->stage.stop();
}

}  // namespace orbsim
