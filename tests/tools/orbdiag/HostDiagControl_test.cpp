// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The control socket of the desktop's libdiag, within one process.
#include <sched.h>
#include <signal.h>
#include <sys/syscall.h>

#include <algorithm>
#include <cerrno>
#include <future>
#include <vector>

#include "HostDiagSupport.h"
#include "ProcessState.h"

namespace {

struct Received {
  std::vector<std::vector<uint8_t>> requests;
  pid_t thread = 0;
  sigset_t blocked = {};
  std::promise<void>* entered = nullptr;
  std::promise<void>* released = nullptr;
};
Received received;

void* takeCommand(void* request, uint16_t length) {
  const auto* const bytes = static_cast<const uint8_t*>(request);
  received.requests.emplace_back(bytes, bytes + length);
  received.thread = static_cast<pid_t>(syscall(SYS_gettid));
  pthread_sigmask(SIG_BLOCK, nullptr, &received.blocked);
  if (received.entered != nullptr) {
    received.entered->set_value();
    received.released->get_future().wait();
  }
  return nullptr;
}

const diagpkt_user_table_entry_type kEntries[] = {{0x89, 0x89, takeCommand},
                                                  {0xA0, 0xA3, takeCommand}};
const diagpkt_user_table_type kTable = {0, 0xFF, 0x12, 2, 0, kEntries};
const diagpkt_user_table_type kOtherTable = {0, 0xFF, 0x13, 1, 0, kEntries + 1};

using processstate::entriesOf;
using processstate::kDescriptors;
using processstate::kThreads;

std::string own(const std::string& entry) { return "/proc/self/" + entry; }

size_t controlThreads() { return processstate::threadsNamed("orb-diag"); }

class HostDiagControlTest : public testing::Test {
 protected:
  HostDiagControlTest() {
    received = {};
    diag.init(nullptr);
  }
  ~HostDiagControlTest() override {
    diag.deinit();
    unsetenv("ORB_DIAG_FILE");
    unsetenv("ORB_DIAG_SOCKET");
  }
  // From now on another libdiag, which reads this value of the variable.
  void loadWith(const char* variable, const char* value) {
    diag.deinit();
    value != nullptr ? setenv(variable, value, 1) : unsetenv(variable);
    diag = HostDiag();
  }
  void startWith(const char* variable, const std::string& value) {
    loadWith(variable, value.c_str());
    diag.init(nullptr);
  }
  // The text that arrives on standard error meanwhile.
  template <class Action>
  static std::string printed(const Action& action) {
    testing::internal::CaptureStderr();
    action();
    return testing::internal::GetCapturedStderr();
  }

  const TempDirectory directory;
  const std::string socket = directory / "control";
  const std::string file = directory / "packets";
  const std::string missing = directory / "missing/file";  // in a folder that does not exist
  HostDiag diag = load();

 private:
  HostDiag load() const {
    unsetenv("ORB_DIAG_FILE");
    setenv("ORB_DIAG_SOCKET", socket.c_str(), 1);
    return HostDiag();
  }
};

TEST_F(HostDiagControlTest, AFileIsEnoughForPacketsToBeWanted) {
  EXPECT_EQ(0, diag.status(0x1E15));
  EXPECT_EQ("ok off, to nowhere: 0 written, 0 dropped", ask(socket, "status"));
  startWith("ORB_DIAG_FILE", file);
  EXPECT_EQ(1, diag.status(0x1E15));
  EXPECT_EQ("ok on, to " + file + ": 0 written, 0 dropped", ask(socket, "status"));
  startWith("ORB_DIAG_FILE", "-");
  EXPECT_EQ(1, diag.status(0x1E15));
  EXPECT_EQ("ok on, to standard error: 0 written, 0 dropped", ask(socket, "status"));
}

TEST_F(HostDiagControlTest, NothingInAPacketSteersATerminal) {
  startWith("ORB_DIAG_FILE", "-");
  EXPECT_EQ("1E15 a?31m b?31m c??? gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x9B\xB0 ?\n",
            printed([&] {
              diag.put(
                  "a\xC2\x9B"
                  "31m b\x9B"
                  "31m c\xE0\x82\x9B"
                  " gr\xC3\xBC\xC3\x9F \xE2\x82\xAC \xF0\x9F\x9B\xB0 \xC3");
            }));
}

TEST_F(HostDiagControlTest, NothingInAReplySteersATerminal) {
  const std::string odd = directory / "\033[31m\xC2\x9B\x9B\x7F\xC3\xBC";
  startWith("ORB_DIAG_FILE", odd);
  EXPECT_NE(std::string::npos, ask(socket, "status").find(odd));
  ASSERT_EQ(0, std::system((built(ORBDIAG) + " status >'" + file + "'").c_str()));
  const std::string reply = readFile(file);
  EXPECT_NE(std::string::npos, reply.find(directory / "?[31m???\xC3\xBC: ")) << reply;
}

TEST_F(HostDiagControlTest, PacketsAreLinesOnATerminal) {
  startWith("ORB_DIAG_FILE", "-");
  EXPECT_EQ("1E15 first line\n00AB tab? escape?[31m\n", printed([&] {
              diag.put("first line");
              diag.put("tab\t escape\033[31m", 0xAB);
            }));
}

TEST_F(HostDiagControlTest, TextThatFillsItsPacketIsShownWhole) {
  startWith("ORB_DIAG_FILE", "-");
  const std::string text(512, 'x');
  EXPECT_EQ("1E15 " + text + "\n", printed([&] { diag.put(text); }));
}

TEST_F(HostDiagControlTest, PacketWithoutTextIsAnEmptyLine) {
  startWith("ORB_DIAG_FILE", "-");
  EXPECT_EQ("1E15 \n", printed([&] { diag.commit(diag.alloc(0x1E15, 12)); }));
}

TEST_F(HostDiagControlTest, SwitchDecidesWhateverTheFileSays) {
  startWith("ORB_DIAG_FILE", file);
  EXPECT_EQ(0u, ask(socket, "off").find("ok off, to " + file));
  EXPECT_EQ(0, diag.status(0x1E15));
  EXPECT_EQ(0u, ask(socket, "on").find("ok on, to " + file));
  EXPECT_EQ(1, diag.status(0x1E15));
  diag.put("text");
  EXPECT_EQ(528u, readFile(file).size());
}

TEST_F(HostDiagControlTest, PacketsSwitchedOnWithoutAFileGoToTheTerminal) {
  EXPECT_EQ(0u, ask(socket, "on").find("ok on, to standard error: "));
  EXPECT_EQ(1, diag.status(0x1E15));
  EXPECT_EQ("1E15 text\n", printed([&] { diag.put("text"); }));
}

TEST_F(HostDiagControlTest, StatusCountsWhatWasWrittenAndDropped) {
  const auto counts = [&] {
    const std::string reply = ask(socket, "status");
    unsigned long written = 0;
    unsigned long dropped = 0;
    EXPECT_EQ(2, std::sscanf(reply.substr(reply.find(": ")).c_str(), ": %lu written, %lu dropped",
                             &written, &dropped));
    return std::make_pair(written, dropped);
  };
  startWith("ORB_DIAG_FILE", file);
  const auto before = counts();
  diag.put("one");
  diag.put("two");
  unlink(file.c_str());
  ASSERT_EQ(0, mkdir(file.c_str(), 0700));  // no file can be written there
  diag.put("three");
  EXPECT_EQ(std::make_pair(before.first + 2, before.second + 1), counts());
  rmdir(file.c_str());
}

TEST_F(HostDiagControlTest, CommandReachesItsHandlerOnTheControlThread) {
  diag.registerTable(&kTable);
  EXPECT_EQ("ok command delivered, 3 bytes", ask(socket, "command ff 12 89 0102FF"));
  ASSERT_EQ(1u, received.requests.size());
  EXPECT_EQ((std::vector<uint8_t>{0x01, 0x02, 0xFF}), received.requests[0]);
  EXPECT_EQ("orb-diag\n", readFile(own("task/" + std::to_string(received.thread) + "/comm")));
  for (const int number : {SIGINT, SIGTERM, SIGPIPE, SIGUSR1, SIGCHLD})
    EXPECT_EQ(1, sigismember(&received.blocked, number)) << number;
}

TEST_F(HostDiagControlTest, PayloadMayBeEmptyOrAsLongAsALengthCanSay) {
  diag.registerTable(&kTable);
  EXPECT_EQ("ok command delivered, 0 bytes", ask(socket, "command ff 12 89"));
  EXPECT_EQ("ok command delivered, 0 bytes", ask(socket, "command ff 12 89 "));
  EXPECT_EQ("ok command delivered, 65535 bytes",
            ask(socket, "command ff 12 89 " + std::string(2 * 65535, 'a')));
  ASSERT_EQ(3u, received.requests.size());
  EXPECT_TRUE(received.requests[0].empty());
  EXPECT_TRUE(received.requests[1].empty());
  EXPECT_EQ(std::vector<uint8_t>(65535, 0xAA), received.requests[2]);
}

TEST_F(HostDiagControlTest, EveryNumberOfARangeIsDelivered) {
  diag.registerTable(&kTable);
  diag.registerTable(&kTable);
  diag.registerTable(&kOtherTable);
  for (const char* id : {"ff 12 a0", "ff 12 a3", "ff 13 a1"})
    EXPECT_EQ("ok command delivered, 1 bytes", ask(socket, std::string("command ") + id + " 00"));
  EXPECT_EQ(3u, received.requests.size());
}

TEST_F(HostDiagControlTest, CommandOutsideEveryRangeIsRefused) {
  diag.registerTable(&kTable);
  diag.registerTable(&kOtherTable);
  for (const char* id : {"fe 12 89", "ff 11 89", "ff 12 88", "ff 12 8a", "ff 12 9f", "ff 12 a4",
                         "ff 13 89", "1ff 12 89"}) {
    EXPECT_EQ("error no such command is registered",
              ask(socket, std::string("command ") + id + " 00"))
        << id;
  }
  EXPECT_TRUE(received.requests.empty());
}

TEST_F(HostDiagControlTest, MalformedRequestsAreRefused) {
  diag.registerTable(&kTable);
  for (const char* request :
       {"command", "command ff", "command ff 12", "command ff 12 89 1", "command ff 12 89 0g",
        "command ff 12 89 01 02", "command 10000 12 89", "command -1 12 89 00",
        "command ff 12 0x89 00"}) {
    EXPECT_EQ("error not a command: code, subsystem, number and payload in hexadecimal",
              ask(socket, request))
        << request;
  }
  for (const char* request : {"On", "on off", "status x", "x", " "})
    EXPECT_EQ("error unknown request", ask(socket, request)) << request;
  EXPECT_EQ("error the request is too long", ask(socket, std::string(140000, 'x')));
  EXPECT_TRUE(received.requests.empty());
}

TEST_F(HostDiagControlTest, ClientThatLeavesWithoutAWordHarmsNobody) {
  { const ControlClient silent(socket); }
  {
    const ControlClient impatient(socket);
    impatient.ask("status");
  }
  EXPECT_EQ(0u, ask(socket, "status").find("ok "));
}

TEST_F(HostDiagControlTest, OneThreadServesHoweverOftenInitIsCalled) {
  ask(socket, "status");  // the thread has its name by now
  EXPECT_EQ(1u, controlThreads());
  diag.init(nullptr);
  ask(socket, "status");
  EXPECT_EQ(1u, controlThreads());
}

TEST_F(HostDiagControlTest, EndGivesBackThreadDescriptorsAndSocket) {
  diag.deinit();
  ASSERT_TRUE(comesTo([] { return controlThreads() == 0; }));
  const auto threads = entriesOf(kThreads);
  const auto descriptors = entriesOf(kDescriptors);
  for (int i = 0; i < 100; ++i) {
    diag.init(nullptr);
    ASSERT_EQ(0u, ask(socket, "status").find("ok "));
    diag.deinit();
  }
  EXPECT_TRUE(comesTo([&] { return entriesOf(kThreads) == threads; }));
  EXPECT_EQ(descriptors, entriesOf(kDescriptors));
  EXPECT_FALSE(exists(socket));
  diag.deinit();
}

TEST_F(HostDiagControlTest, EndWaitsForACommandThatRuns) {
  diag.registerTable(&kTable);
  std::promise<void> entered;
  std::promise<void> released;
  received.entered = &entered;
  received.released = &released;
  const ControlClient client(socket);
  client.ask("command ff 12 89 01");
  entered.get_future().wait();
  std::future<void> ended = std::async(std::launch::async, [&] { diag.deinit(); });
  while (exists(socket)) sched_yield();
  released.set_value();
  ended.wait();
  EXPECT_EQ("ok command delivered, 1 bytes", client.reply());
}

TEST_F(HostDiagControlTest, OnlyTheUserMayConnect) {
  diag.deinit();
  const mode_t mask = umask(0);
  diag.init(nullptr);
  umask(mask);
  struct stat status = {};
  ASSERT_EQ(0, stat(socket.c_str(), &status));
  EXPECT_EQ(static_cast<mode_t>(S_IFSOCK | 0600), status.st_mode);
}

TEST_F(HostDiagControlTest, DescriptorsAreCloseOnExec) {
  const ControlClient client(socket);  // the thread has accepted it or will accept it
  for (const std::string& name : entriesOf(kDescriptors)) {
    const int fd = std::stoi(name);
    char target[256] = "";
    if (fd <= STDERR_FILENO || readlink(own("fd/" + name).c_str(), target, sizeof target - 1) < 0)
      continue;
    if (std::strstr(target, "socket:") == nullptr && std::strstr(target, "eventfd") == nullptr)
      continue;
    EXPECT_EQ(FD_CLOEXEC, fcntl(fd, F_GETFD)) << target;
  }
}

TEST_F(HostDiagControlTest, ProcessIdStandsInForItsMark) {
  startWith("ORB_DIAG_SOCKET", directory / "%p.%p");
  const std::string pid = std::to_string(getpid());
  EXPECT_EQ(0u, ask(directory / (pid + "." + pid), "status").find("ok "));
}

TEST_F(HostDiagControlTest, SocketThatAProcessLeftBehindIsTakenOver) {
  diag.deinit();
  {
    const UniqueFd dead(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    socket.copy(address.sun_path, sizeof address.sun_path - 1);
    const auto* const name = reinterpret_cast<const sockaddr*>(&address);
    ASSERT_EQ(0, bind(dead.get(), name, sizeof address));
  }
  ASSERT_TRUE(exists(socket));
  diag.init(nullptr);
  EXPECT_EQ(0u, ask(socket, "status").find("ok "));
}

TEST_F(HostDiagControlTest, FileInTheWayStays) {
  diag.deinit();
  std::ofstream(socket) << "text";
  EXPECT_EQ("libdiag: cannot serve " + socket + ": " + strerror(EADDRINUSE) + "\n",
            printed([&] { diag.init(nullptr); }));
  EXPECT_EQ("text", readFile(socket));
  EXPECT_TRUE(comesTo([] { return controlThreads() == 0; }));
}

TEST_F(HostDiagControlTest, PathThatCannotBeServedIsToldAndDoneWithout) {
  for (const auto& [path, reason] :
       {std::make_pair(missing, strerror(ENOENT)),
        std::make_pair("/" + std::string(200, 'x'), strerror(ENAMETOOLONG))}) {
    loadWith("ORB_DIAG_SOCKET", path.c_str());
    EXPECT_EQ("libdiag: cannot serve " + path + ": " + reason + "\n",
              printed([&] { EXPECT_EQ(1, diag.init(nullptr)); }));
  }
  EXPECT_TRUE(comesTo([] { return controlThreads() == 0; }));
}

TEST_F(HostDiagControlTest, VariablesCountAsTheyWereAtTheStart) {
  startWith("ORB_DIAG_FILE", file);
  diag.deinit();
  setenv("ORB_DIAG_FILE", "-", 1);
  setenv("ORB_DIAG_SOCKET", (directory / "later").c_str(), 1);
  diag.init(nullptr);
  EXPECT_EQ("ok on, to " + file + ": 0 written, 0 dropped", ask(socket, "status"));
  EXPECT_FALSE(exists(directory / "later"));
}

TEST_F(HostDiagControlTest, NothingIsServedWithoutAPath) {
  for (const char* path : {"", static_cast<const char*>(nullptr)}) {
    loadWith("ORB_DIAG_SOCKET", path);
    EXPECT_EQ("", printed([&] { EXPECT_EQ(1, diag.init(nullptr)); }));
    EXPECT_TRUE(comesTo([] { return controlThreads() == 0; }));
  }
}

}  // namespace
