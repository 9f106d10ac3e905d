// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// orbd-sim ctl: gives orders to a running daemon stand-in through its control socket.

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <memory>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "Commands.h"
#include "orbtool/Run.h"
#include "orbtool/SocketAddress.h"

namespace orbsim {
namespace {

using Json = nlohmann::json;
using Words = std::vector<std::string>;

constexpr time_t kPatience = 10;  // seconds to wait for an answer
constexpr char kNoAnswer[] = "no answer";

struct Arguments {
  std::string control;
  bool json = false;
  Words words;
};

// A JSON number or boolean if the text is one; otherwise the text.
Json valueOf(const std::string& text) {
  const Json number = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  return number.is_number() || number.is_boolean() ? number : Json(text);
}

// The "name=value" words, beginning with the word at `from`. Nothing if one has another form.
std::optional<Json> fieldsOf(const Words& words, size_t from, std::string& error) {
  Json fields = Json::object();
  for (size_t i = from; i < words.size(); ++i) {
    const size_t equals = words[i].find('=');
    if (equals == std::string::npos || equals == 0) {
      error = "not in the form NAME=VALUE: " + words[i];
      return std::nullopt;
    }
    fields[words[i].substr(0, equals)] = valueOf(words[i].substr(equals + 1));
  }
  return fields;
}

// "50..2" is from 50 to 2.
Json rampOf(const Json& value, const Json& over) {
  if (!value.is_string() && over.is_null()) return value;
  Json ramp = {{"to", value}};
  const std::string text = value.is_string() ? value.get<std::string>() : "";
  const size_t dots = text.find("..");
  if (dots != std::string::npos) {
    ramp = {{"from", valueOf(text.substr(0, dots))}, {"to", valueOf(text.substr(dots + 2))}};
  } else if (value.is_string()) {
    return value;
  }
  if (!over.is_null()) ramp["over"] = over;
  return ramp;
}

// "set rate=5 rat=lte" is one order per word. The daemon checks all of them before it does the
// first.
bool setOrders(const Words& words, std::vector<Json>& orders, std::string& error) {
  const auto fields = fieldsOf(words, 1, error);
  if (!fields) return false;
  const Json over = fields->value("over", Json());
  bool goes = false;
  for (const auto& field : fields->items()) {
    if (field.key() == "over") continue;
    if (field.key() != "rate" && field.key() != "latency" && field.key() != "rat") {
      error = "set accepts rate, latency, rat and over, not " + field.key();
      return false;
    }
    const bool rat = field.key() == "rat";
    // The name of a technology can look like a number.
    const Json value =
        rat && !field.value().is_string() ? Json(field.value().dump()) : field.value();
    const Json order = rat ? value : rampOf(value, over);
    goes = goes || (order.is_object() && order.contains("over"));
    orders.push_back({{field.key(), order}});
  }
  if (orders.empty()) {
    error = "set needs rate=, latency= or rat=";
  } else if (!over.is_null() && !goes) {
    error = "over is only for rate= or latency= with a number";
  }
  return error.empty();
}

// An order of one word, with at most one value after it.
bool oneOrder(const Words& words, std::vector<Json>& orders, std::string& error) {
  const std::string& verb = words[0];
  const bool needsValue = verb == "vanish" || verb == "delay";
  if (words.size() > 2 || (verb == "resume" || verb == "status" ? words.size() > 1 : false)) {
    error = "too many words after " + verb;
    return false;
  }
  if (needsValue && words.size() < 2) {
    error = verb + " needs a number of seconds";
    return false;
  }
  orders.push_back({{verb, words.size() > 1 ? valueOf(words[1]) : Json(true)}});
  return true;
}

// A name and fields: "handoff 5g notice=1", "refuse lce NOT_SUPPORTED request=set-criteria".
bool namedOrder(const Words& words, const std::vector<const char*>& names,
                std::vector<Json>& orders, std::string& error) {
  Json value = Json::object();
  size_t next = 1;
  for (const char* const name : names) {
    if (next >= words.size()) {
      error = words[0] + " needs a value for " + name;
      return false;
    }
    value[name] = words[next++];
  }
  const auto fields = fieldsOf(words, next, error);
  if (!fields) return false;
  if (words[0] == "send") {
    value["fields"] = *fields;
  } else {
    value.update(*fields);
  }
  orders.push_back({{words[0], value}});
  return true;
}

bool ordersOf(const Words& words, std::vector<Json>& orders, std::string& error) {
  const std::string& verb = words[0];
  if (verb == "set") return setOrders(words, orders, error);
  if (verb == "send") return namedOrder(words, {"service"}, orders, error);
  if (verb == "handoff") return namedOrder(words, {"to"}, orders, error);
  if (verb == "refuse") return namedOrder(words, {"service", "with"}, orders, error);
  if (verb == "fault") return namedOrder(words, {"words"}, orders, error);
  for (const char* const alone : {"drop", "pause", "resume", "status", "vanish", "delay"}) {
    if (verb == alone) return oneOrder(words, orders, error);
  }
  error = "no such order: " + verb +
          "; orders are send, drop, set, handoff, pause, resume, vanish, delay, refuse, fault, "
          "status";
  return false;
}

// A connection to the control socket with a time limit for reads and writes. -1 with errno on
// failure.
int connectTo(const std::string& path) {
  const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (fd < 0) return -1;
  const timeval patience = {kPatience, 0};
  ::setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &patience, sizeof patience);
  ::setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &patience, sizeof patience);
  if (orbtool::SocketAddress(path).connect(fd) == 0) return fd;
  const int error = errno;
  ::close(fd);
  errno = error;
  return -1;
}

// The answer to one line; empty if the connection ends or the time limit passes.
std::string answerTo(int fd, const std::string& line) {
  if (::send(fd, line.data(), line.size(), MSG_NOSIGNAL) != static_cast<ssize_t>(line.size())) {
    return {};
  }
  std::string answer;
  char buffer[4096];
  while (answer.find('\n') == std::string::npos) {
    const ssize_t got = ::recv(fd, buffer, sizeof buffer, 0);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return {};
    answer.append(buffer, static_cast<size_t>(got));
  }
  answer.erase(answer.find('\n'));
  return answer;
}

void printSession(const Json& session) {
  std::printf("session %u pid %d endpoint %lld", session.value("id", 0u), session.value("pid", 0),
              static_cast<long long>(session.value("endpoint", int64_t{0})));
  for (const char* const name : {"lce", "lle", "lli"}) {
    const Json service = session.value(name, Json::object());
    const bool reports = service.value("reporting", false) || service.value("registered", false) ||
                         (std::string(name) == "lle" && service.value("criteria", 0u) != 0);
    if (!service.value("enabled", false) && !reports) continue;
    std::printf(", %s %s%s, %llu reports", name,
                service.value("enabled", false) ? "enabled" : "not enabled",
                reports ? " and reporting" : "",
                static_cast<unsigned long long>(service.value("reports", uint64_t{0})));
  }
  std::printf("\n");
}

void printStatus(const Json& status) {
  const Json model = status.value("model", Json::object());
  std::printf("listening on %s\n", status.value("socket", "").c_str());
  if (status.value("begun", false)) {
    std::printf("time %.3f s%s\n", status.value("time", 0.0),
                status.value("paused", false) ? ", paused" : "");
  } else {
    std::printf("time has not begun\n");
  }
  std::printf("device on %s%s, %s %.3f Mbit/s, latency up %.3f ms, down %.3f ms\n",
              model.value("rat", "").c_str(), model.value("handoff", false) ? " in a handoff" : "",
              model.value("direction", "").c_str(), model.value("rate", 0.0),
              model.value("uplink-latency", 0.0), model.value("downlink-latency", 0.0));
  for (const Json& session : status.value("sessions", Json::array())) printSession(session);
}

int ctl(const Arguments& arguments, const orbtool::CommandLine& line) {
  std::vector<Json> orders;
  std::string error;
  if (!ordersOf(arguments.words, orders, error)) return line.refuse(error);
  const int fd = connectTo(arguments.control);
  if (fd < 0) {
    // EAGAIN: the queue of connections is full, so the daemon does not answer either.
    const char* const reason = errno == EAGAIN ? kNoAnswer : std::strerror(errno);
    std::fprintf(stderr, "orbd-sim ctl: %s: %s\n", arguments.control.c_str(), reason);
    return orbtool::kExitFailed;
  }
  const Json order = orders.size() == 1 ? orders.front() : Json(orders);
  const std::string text = answerTo(fd, order.dump() + "\n");
  ::close(fd);
  const Json answer = Json::parse(text, nullptr, /*allow_exceptions=*/false);
  if (!answer.is_object()) {
    std::fprintf(stderr, "orbd-sim ctl: %s: %s\n", arguments.control.c_str(), kNoAnswer);
    return orbtool::kExitFailed;
  }
  if (arguments.json) std::printf("%s\n", text.c_str());
  if (answer.value("ok", false)) {
    if (!arguments.json && order.contains("status")) printStatus(answer);
    return orbtool::kExitDone;
  }
  const std::string reason = answer.value("error", "refused");
  if (answer.value("wrong", false)) return line.refuse(reason);
  std::fprintf(stderr, "orbd-sim ctl: %s\n", reason.c_str());
  return orbtool::kExitFailed;
}

constexpr char kFooter[] =
    "Orders; times are in seconds, rates in Mbit/s, latencies in ms:\n"
    "  send lce|lle|lli [NAME=VALUE...]    Send a message to all clients of the service.\n"
    "  drop [SESSION]                      Close all connections, or one session.\n"
    "  set [rate=N] [latency=N] [rat=RAT]  Change the device. FROM..TO with over=SECONDS changes\n"
    "                                      the value slowly; with wander it varies again.\n"
    "  handoff RAT [notice=N] [duration=N] [result=success|failure|called-off]\n"
    "  pause [SECONDS], resume             Send only answers.\n"
    "  vanish SECONDS                      Remove the socket and all sessions for a time.\n"
    "  delay SECONDS                       Delay all later answers.\n"
    "  refuse SERVICE STATUS [request=R] [times=N]\n"
    "  fault WORDS [for=SECONDS]           Misbehave as --faults says.\n"
    "  status                              Print the sessions, the services they use, and the "
    "device.\n"
    "\n"
    "Exit status: 0 done, 1 the daemon cannot be reached, does not answer within 10 seconds or\n"
    "refuses, 2 wrong arguments.\n"
    "Example: orbd-sim ctl --control build/control set rate=50..2 over=1";

}  // namespace

Command addCtl(orbtool::CommandLine& line) {
  const auto arguments = std::make_shared<Arguments>();
  CLI::App* const app =
      line.app().add_subcommand("ctl", "Give an order to a daemon that runs with --control.");
  app->add_option("-c,--control", arguments->control, "The daemon's control socket.")
      ->type_name("PATH")
      ->required()
      ->take_last();
  app->add_flag("-j,--json", arguments->json, "Print the daemon's answer, a JSON object.");
  app->add_option("WORD", arguments->words, "The words of the order, see below.")
      ->required()
      ->type_name("");
  app->footer(kFooter);
  return {app, [arguments, &line] { return ctl(*arguments, line); }};
}

}  // namespace orbsim
