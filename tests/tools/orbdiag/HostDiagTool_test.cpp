// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Programs with the desktop's libdiag, and `orbdiag` as their diagnostic service.
#include <signal.h>
#include <sys/eventfd.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <cerrno>
#include <functional>

#include "HostDiagSupport.h"

namespace {

// A program with libdiag, one registered command and a place for packets. It lives until end().
class Program {
 public:
  using Life = std::function<void(const HostDiag&)>;

  // `life` runs in the program after the set-up, also of the control thread.
  Program(const std::string& socket, const std::string& packets, const Life& life = nullptr) {
    UniqueFd ready(eventfd(0, EFD_CLOEXEC));
    mPid = fork();
    if (mPid == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);
      setenv("ORB_DIAG_SOCKET", socket.c_str(), 1);
      setenv("ORB_DIAG_FILE", packets.c_str(), 1);
      run(ready.get(), mStop.get(), life);
    }
    wait(ready.get());
  }
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;
  ~Program() { end(); }

  pid_t pid() const { return mPid; }
  void kill() const { ::kill(mPid, SIGKILL); }
  // Lets the program return. Its exit status, or -1 for a signal.
  int end() {
    if (mPid <= 0) return -1;
    eventfd_write(mStop.get(), 1);
    int status = 0;
    EXPECT_EQ(mPid, waitpid(mPid, &status, 0));
    mPid = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }

 private:
  static void* onCommand(void* request, uint16_t length) {
    const std::string payload(static_cast<const char*>(request), length);
    if (payload == "exit") exit(7);
    theDiag->put(payload);
    return nullptr;
  }

  [[noreturn]] static void run(int ready, int stop, const Life& life) {
    static const HostDiag diag;
    theDiag = &diag;
    static const diagpkt_user_table_entry_type kEntry = {0x89, 0x89, onCommand};
    static const diagpkt_user_table_type kTable = {0, 0xFF, 0x12, 1, 0, &kEntry};
    diag.registerTable(&kTable);
    diag.init(nullptr);
    if (life) life(diag);
    eventfd_write(ready, 1);
    wait(stop);
    exit(0);
  }

  static void wait(int event) {
    eventfd_t value = 0;
    EXPECT_EQ(0, eventfd_read(event, &value));
  }

  static const HostDiag* theDiag;
  const UniqueFd mStop{eventfd(0, EFD_CLOEXEC)};
  pid_t mPid = -1;
};

const HostDiag* Program::theDiag = nullptr;

struct Outcome {
  int status;
  std::string out;
  std::string err;
};

class HostDiagToolTest : public testing::Test {
 protected:
  // Runs orbdiag through the shell, so that arguments are written as a user types them.
  Outcome orbdiag(const std::string& arguments) const {
    const std::string out = directory / "out";
    const std::string err = directory / "err";
    const std::string line = built(ORBDIAG) + " " + arguments + " >" + out + " 2>" + err;
    const int status = std::system(line.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, readFile(out), readFile(err)};
  }
  Outcome orbdiagAt(const std::string& path, const std::string& arguments) const {
    return orbdiag(arguments + " --socket " + path);
  }
  static std::string textOf(const std::string& packets, size_t index) {
    return packets.size() < 528 * (index + 1) ? "" : packets.c_str() + 528 * index + 16;
  }

  const TempDirectory directory;
  const std::string socket = directory / "control";
  const std::string packets = directory / "packets";
};

TEST_F(HostDiagToolTest, SwitchesAndTellsTheState) {
  Program program(socket, packets);
  Outcome outcome = orbdiagAt(socket, "status");
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("on, to " + packets + ": 0 written, 0 dropped\n", outcome.out);
  EXPECT_EQ("off, to " + packets + ": 0 written, 0 dropped\n", orbdiagAt(socket, "off").out);
  EXPECT_EQ("on, to " + packets + ": 0 written, 0 dropped\n", orbdiagAt(socket, "on").out);
  setenv("ORB_DIAG_SOCKET", socket.c_str(), 1);
  outcome = orbdiag("status");
  unsetenv("ORB_DIAG_SOCKET");
  EXPECT_EQ("on, to " + packets + ": 0 written, 0 dropped\n", outcome.out);
  EXPECT_EQ("", outcome.err);
  EXPECT_EQ(0, program.end());
}

TEST_F(HostDiagToolTest, SendsTheCommandWithItsPayload) {
  Program program(socket, packets);
  const Outcome outcome = orbdiagAt(socket, "command 68656C6c6f");
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ("command delivered, 5 bytes\n", outcome.out);
  EXPECT_EQ("hello", textOf(readFile(packets), 0));
  EXPECT_EQ("command delivered, 0 bytes\n", orbdiagAt(socket, "command ''").out);
}

TEST_F(HostDiagToolTest, TwoProgramsAreToldApartByTheirProcessIds) {
  Program first(directory / "control.%p", packets);
  Program second(directory / "control.%p", packets);
  const std::string socketOfFirst = directory / ("control." + std::to_string(first.pid()));
  const std::string socketOfSecond = directory / ("control." + std::to_string(second.pid()));
  EXPECT_EQ(0, orbdiagAt(socketOfFirst, "off").status);
  EXPECT_EQ(0u, orbdiagAt(socketOfSecond, "status").out.find("on, "));
  EXPECT_EQ(0, orbdiagAt(socketOfSecond, "command 32").status);
  EXPECT_EQ(0, orbdiagAt(socketOfFirst, "command 31").status);
  EXPECT_EQ("2", textOf(readFile(packets), 0));
  EXPECT_EQ("1", textOf(readFile(packets), 1));
  EXPECT_EQ(0, first.end());
  EXPECT_FALSE(exists(socketOfFirst));
  EXPECT_EQ(0, orbdiagAt(socketOfSecond, "status").status);
  EXPECT_EQ(0, second.end());
  EXPECT_FALSE(exists(socketOfSecond));
}

TEST_F(HostDiagToolTest, SocketOfALivingProgramIsNotTakenAway) {
  Program first(socket, packets);
  Program second(socket, packets);
  EXPECT_EQ(0, second.end());
  EXPECT_TRUE(exists(socket));
  EXPECT_EQ(0, orbdiagAt(socket, "command 31").status);
}

TEST_F(HostDiagToolTest, SocketOfAKilledProgramServesTheNextOne) {
  {
    Program killed(socket, packets);
    killed.kill();
    EXPECT_EQ(-1, killed.end());
  }
  EXPECT_TRUE(exists(socket));
  const Outcome outcome = orbdiagAt(socket, "status");
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ("orbdiag: " + socket + ": " + strerror(ECONNREFUSED) + "\n", outcome.err);
  Program next(socket, packets);
  EXPECT_EQ(0, orbdiagAt(socket, "status").status);
}

TEST_F(HostDiagToolTest, CommandMayEndTheProgram) {
  Program program(socket, packets);
  const Outcome outcome = orbdiagAt(socket, "command 65786974");
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ("orbdiag: " + socket + ": " + strerror(ECONNRESET) + "\n", outcome.err);
  EXPECT_EQ(7, program.end());
  EXPECT_FALSE(exists(socket));
}

TEST_F(HostDiagToolTest, ForkedChildLeavesItsParentsSocketAlone) {
  Program parent(socket, packets, [](const HostDiag& diag) {
    const pid_t child = fork();
    if (child == 0) {
      // Like the normal end, but without exit(), because the parent's threads may have held locks
      // of a sanitizer.
      diag.deinit();
      _exit(0);
    }
    waitpid(child, nullptr, 0);
  });
  EXPECT_EQ(0, orbdiagAt(socket, "status").status);
  EXPECT_EQ(0, parent.end());
  EXPECT_FALSE(exists(socket));
}

TEST_F(HostDiagToolTest, RefusalComesOnStandardError) {
  // A program that refuses every request and reports it.
  const UniqueFd listener(::socket(AF_UNIX, SOCK_SEQPACKET | SOCK_CLOEXEC, 0));
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  socket.copy(address.sun_path, sizeof address.sun_path - 1);
  ASSERT_EQ(0, bind(listener.get(), reinterpret_cast<sockaddr*>(&address), sizeof address));
  ASSERT_EQ(0, listen(listener.get(), 1));
  const pid_t other = fork();
  if (other == 0) {
    const int client = accept(listener.get(), nullptr, nullptr);
    char request[64] = "";
    const ssize_t size = read(client, request, sizeof request);
    const std::string reply = "error " + std::string(request, static_cast<size_t>(size));
    _exit(write(client, reply.data(), reply.size()) > 0 ? 0 : 1);
  }
  const Outcome outcome = orbdiagAt(socket, "command 00ff");
  shutdown(listener.get(), SHUT_RDWR);  // the program's wait ends even if no client came
  waitpid(other, nullptr, 0);
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ("", outcome.out);
  EXPECT_EQ("orbdiag: command ff 12 89 00ff\n", outcome.err);
}

TEST_F(HostDiagToolTest, WrongUseIsNamedInOneLine) {
  const struct {
    const char* arguments;
    const char* message;
  } kCases[] = {
      {"", "no command given"},
      {"on", "no socket: give --socket or ORB_DIAG_SOCKET"},
      {"start", "no such command or option: start"},
      {"on off", "unexpected argument: off"},
      {"command", "HEX is required"},
      {"command 00 11", "unexpected argument: 11"},
      {"command 0", "HEX: not a payload of at most 65535 bytes in hexadecimal: 0"},
      {"command 0x00", "HEX: not a payload of at most 65535 bytes in hexadecimal: 0x00"},
      {"on -s /tmp/x.%p", "which program? Give --socket with its process id for %p"},
      {"on -s /$(printf %0200d 0)", "the socket's path is too long"},
  };
  for (const auto& c : kCases) {
    const Outcome outcome = orbdiag(c.arguments);
    EXPECT_EQ(2, outcome.status) << c.arguments;
    EXPECT_EQ("", outcome.out);
    const std::string request = std::string(c.arguments).substr(0, strcspn(c.arguments, " "));
    const std::string tool = request == "" || request == "start" ? "orbdiag" : "orbdiag " + request;
    EXPECT_EQ(tool + ": " + c.message + "; try '" + tool + " --help'\n", outcome.err);
  }
  EXPECT_EQ(2, orbdiag("--unknown").status);
}

TEST_F(HostDiagToolTest, AbsentProgramIsToldByItsSocket) {
  const Outcome outcome = orbdiagAt(socket, "on");
  EXPECT_EQ(1, outcome.status);
  EXPECT_EQ("orbdiag: " + socket + ": " + strerror(ENOENT) + "\n", outcome.err);
}

TEST_F(HostDiagToolTest, HelpGoesToStandardOutput) {
  const Outcome outcome = orbdiag("--help");
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ(0u, outcome.out.find("Usage: orbdiag [OPTIONS] COMMAND\n"));
  EXPECT_EQ("", outcome.err);
}

TEST_F(HostDiagToolTest, VersionGoesToStandardOutput) {
  const Outcome outcome = orbdiag("--version");
  EXPECT_EQ(0, outcome.status);
  EXPECT_EQ(0u, outcome.out.find("orbdiag 1."));
  EXPECT_EQ("", outcome.err);
}

}  // namespace
