// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
// Writing key files at the same time as other runs, and with a kill or a failure at every step.
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdarg>

#include "CLibrary.h"
#include "Interposed.h"
#include "OrblogFiles.h"
#include "orblog/KeyFolder.h"

using namespace orblogtest;

namespace {

// The plan for the calls that change the directory. The call with this number fails, or ends the
// process before or after it.
enum class Fate { None, Fails, DiesBefore, DiesAfter };
struct Plan {
  Fate fate = Fate::None;
  int at = 0;
  int count = 0;
  bool links = true;      // the file system supports hard links
  bool exclusive = true;  // the kernel supports renames that replace nothing
  bool locks = true;      // the file system supports locks
};
Plan plan;

// Whether the call must be made.
bool proceeds() {
  if (plan.fate == Fate::None || ++plan.count != plan.at) return true;
  if (plan.fate == Fate::DiesBefore) raise(SIGKILL);
  errno = EIO;
  return plan.fate != Fate::Fails;
}

template <class Function, class... Arguments>
auto make(const char* name, Arguments... arguments) {
  const auto result = interposed::next<Function>(name)(arguments...);
  const int error = errno;
  if (plan.fate == Fate::DiesAfter && plan.count == plan.at) raise(SIGKILL);
  errno = error;
  return result;
}

int refuse(int error) {
  errno = error;
  return -1;
}

}  // namespace

// These functions are used instead of the C library's.
extern "C" {

int link(const char* from, const char* to) ORB_C_FUNCTION {
  if (!plan.links) return refuse(EPERM);
  return proceeds() ? make<int(const char*, const char*)>("link", from, to) : -1;
}
int unlink(const char* path) ORB_C_FUNCTION {
  return proceeds() ? make<int(const char*)>("unlink", path) : -1;
}
int rename(const char* from, const char* to) ORB_C_FUNCTION {
  return proceeds() ? make<int(const char*, const char*)>("rename", from, to) : -1;
}
int rmdir(const char* path) ORB_C_FUNCTION {
  return proceeds() ? make<int(const char*)>("rmdir", path) : -1;
}
char* mkdtemp(char* name) ORB_C_FUNCTION {
  return proceeds() ? make<char*(char*)>("mkdtemp", name) : nullptr;
}
// There is no loss of power in this test.
int fsync(int) { return proceeds() ? 0 : -1; }
int flock(int fd, int operation) ORB_C_FUNCTION {
  return plan.locks ? make<int(int, int)>("flock", fd, operation) : refuse(ENOLCK);
}
long syscall(long number, ...) ORB_C_FUNCTION {
  long given[6] = {};
  va_list arguments;
  va_start(arguments, number);
  for (long& argument : given) argument = va_arg(arguments, long);
  va_end(arguments);
  if (number == SYS_renameat2 && !plan.exclusive) return refuse(ENOSYS);
  using Call = long(long, long, long, long, long, long, long);
  if (number == SYS_renameat2 && !proceeds()) return -1;
  return make<Call>("syscall", number, given[0], given[1], given[2], given[3], given[4], given[5]);
}

}  // extern "C"

namespace {

using Names = std::vector<std::string>;

class OrblogKeyFolder : public testing::Test {
 protected:
  ~OrblogKeyFolder() override { plan = {}; }
  // Like `orblog keygen`, with existing keys.
  bool keygen(bool force = false) {
    notes.clear();
    error.clear();
    fs::create_directories(keys);
    const Pair& pair = pairs()[mNext++ % pairs().size()];
    const auto view = [&pair](size_t i) {
      return orblog::ByteView(pair[i].data(), pair[i].size());
    };
    orblog::KeyFolder folder(keys.string());
    return folder.take(force, notes, error) && folder.put(view(1), view(2), view(0), error);
  }
  // The exit status of a child that makes keys with this plan; -1 if it was killed.
  int keygenInChild(const Plan& childs, bool force) {
    const pid_t child = startKeygen(childs, force);
    return statusOf(child);
  }
  pid_t startKeygen(const Plan& childs, bool force = false) {
    const pid_t child = fork();
    if (child == 0) {
      plan = childs;
      _exit(keygen(force) ? 0 : 1);
    }
    ++mNext;
    return child;
  }
  static int statusOf(pid_t child) {
    int status = 0;
    while (waitpid(child, &status, 0) < 0 && errno == EINTR) {
    }
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  Names names() const {
    Names all;
    for (const auto& entry : fs::directory_iterator(keys))
      all.push_back(entry.path().filename().string());
    std::sort(all.begin(), all.end());
    return all;
  }
  // The three files, in the order of their names.
  using Pair = std::vector<Bytes>;
  Pair files() const {
    Pair all;
    for (const std::string& name : kNames) all.push_back(readFile(keys / name));
    return all;
  }
  // Whether the configuration and the public key belong to the private key.
  bool isWhole() const {
    const Pair present = files();
    return std::find(pairs().begin(), pairs().end(), present) != pairs().end();
  }
  void expectWholeAndNothingElse() const {
    EXPECT_EQ(names(), kNames);
    EXPECT_TRUE(isWhole());
  }
  // An existing configuration must belong to the existing private key.
  void expectNothingMisleads() const { EXPECT_TRUE(!fs::exists(keys / kNames[0]) || isWhole()); }

  static inline const Names kNames = {"orb_log_config", "orb_log_private.pem",
                                      "orb_log_public.pem"};
  TemporaryDirectory directory;
  const fs::path keys = directory / "keys";
  Names notes;
  std::string error;
  size_t mNext = 0;  // index of the pairs

 private:
  static const std::vector<Pair>& pairs() {
    static const std::vector<Pair> kPairs = {pairOf('1'), pairOf('2'), pairOf('3'), pairOf('4'),
                                             pairOf('5')};
    return kPairs;
  }
  static Pair pairOf(char name) {
    return {Bytes(600, static_cast<uint8_t>(name)), Bytes(1700, static_cast<uint8_t>(name + 10)),
            Bytes(450, static_cast<uint8_t>(name + 20))};
  }
};

// The features of the file system and the kernel.
struct Kind {
  const char* name;
  bool links, exclusive;
};
// Otherwise GoogleTest prints the bytes, those between the members included.
void PrintTo(const Kind& kind, std::ostream* out) { *out << kind.name; }
class OrblogKeyFolderSteps : public OrblogKeyFolder, public testing::WithParamInterface<Kind> {
 protected:
  // Calls `check` with the result of a run for every step and every kind of failure, until there
  // are no more steps.
  template <class Prepare, class Check>
  void atEveryStep(std::initializer_list<Fate> fates, bool force, Prepare prepare, Check check) {
    for (const Fate fate : fates) {
      int step = 1;
      for (bool reached = true; reached; ++step) {
        SCOPED_TRACE(step);
        fs::remove_all(keys);
        prepare();
        Plan childs;
        childs.links = GetParam().links;
        childs.exclusive = GetParam().exclusive;
        childs.fate = fate;
        childs.at = step;
        // The child reports the number of steps with a special status.
        const pid_t child = fork();
        if (child == 0) {
          plan = childs;
          const bool done = keygen(force);
          _exit((done ? 0 : 1) + (plan.count < step ? 2 : 0));
        }
        ++mNext;
        const int status = statusOf(child);
        reached = status < 2;
        expectNothingMisleads();
        check(status);
        if (HasFailure()) return;
      }
      EXPECT_GT(step, 12);
    }
  }
};

TEST_P(OrblogKeyFolderSteps, RunThatIsKilledNeitherBlocksNorMisleadsTheNext) {
  const auto nothing = [] {};
  atEveryStep({Fate::DiesBefore, Fate::DiesAfter}, false, nothing, [this](int status) {
    if (status >= 0) return;
    const bool complete = fs::exists(keys / kNames[0]);
    EXPECT_EQ(keygen(), !complete) << error;
    EXPECT_EQ(keygen(), false);
    EXPECT_TRUE(notes.empty());
    expectWholeAndNothingElse();
  });
}

TEST_P(OrblogKeyFolderSteps, RunThatIsKilledLosesNoFormerKey) {
  Pair former;
  const auto prepare = [&] {
    ASSERT_TRUE(keygen());
    former = files();
  };
  atEveryStep({Fate::DiesBefore, Fate::DiesAfter}, true, prepare, [&](int status) {
    if (status >= 0) return;
    const fs::path configuration = keys / kNames[0];
    const bool complete = fs::exists(configuration) && readFile(configuration) != former[0];
    EXPECT_FALSE(keygen());
    EXPECT_EQ(files() != former, complete);
    EXPECT_NE(error.find("exists; --force replaces it"), std::string::npos) << error;
    expectWholeAndNothingElse();
  });
}

TEST_P(OrblogKeyFolderSteps, FailureLeavesWhatWasThere) {
  for (const bool force : {false, true}) {
    Pair former;
    const auto prepare = [&] {
      if (!force) return;
      ASSERT_TRUE(keygen());
      former = files();
    };
    atEveryStep({Fate::Fails}, force, prepare, [&](int status) {
      const bool done = status % 2 == 0;
      if (force) {
        EXPECT_TRUE(isWhole());
        EXPECT_EQ(files() == former, !done);
      } else {
        EXPECT_EQ(isWhole(), done);
        EXPECT_EQ(fs::exists(keys / kNames[1]), done);
      }
      // The next run removes what a failed call could not remove.
      EXPECT_EQ(keygen(), !force && !done) << error;
      expectWholeAndNothingElse();
    });
  }
}

INSTANTIATE_TEST_SUITE_P(Kinds, OrblogKeyFolderSteps,
                         testing::Values(Kind{"All", true, true}, Kind{"NoLinks", false, true},
                                         Kind{"NoExclusiveMoves", true, false}),
                         [](const auto& kind) { return std::string(kind.param.name); });

// With locks, and without if the file system has none.
class OrblogKeyFolderRuns : public OrblogKeyFolder, public testing::WithParamInterface<bool> {};

TEST_P(OrblogKeyFolderRuns, OfThoseAtTheSameTimeOneSucceeds) {
  Plan childs;
  childs.locks = GetParam();
  for (int round = 0; round < 60 && !HasFailure(); ++round) {
    SCOPED_TRACE(round);
    fs::remove_all(keys);
    std::vector<pid_t> children;
    for (int i = 0; i < 4; ++i) children.push_back(startKeygen(childs));
    int done = 0;
    for (const pid_t child : children) done += statusOf(child) == 0 ? 1 : 0;
    EXPECT_EQ(done, 1);
    expectWholeAndNothingElse();
  }
}

INSTANTIATE_TEST_SUITE_P(Locks, OrblogKeyFolderRuns, testing::Bool());

TEST_F(OrblogKeyFolder, OfThoseThatReplaceOneAfterTheOtherSucceeds) {
  for (int round = 0; round < 25 && !HasFailure(); ++round) {
    ASSERT_TRUE(keygen(true));
    const Pair former = files();
    std::vector<pid_t> children;
    for (int i = 0; i < 4; ++i) children.push_back(startKeygen({}, true));
    int done = 0;
    for (const pid_t child : children) done += statusOf(child) == 0 ? 1 : 0;
    EXPECT_GE(done, 1);
    EXPECT_NE(files(), former);
    expectWholeAndNothingElse();
  }
}

TEST_F(OrblogKeyFolder, RunBesideAnotherIsRefused) {
  fs::create_directories(keys);
  orblog::KeyFolder other(keys.string());
  ASSERT_TRUE(other.take(false, notes, error));
  EXPECT_FALSE(keygen());
  EXPECT_EQ(error, keys.string() + ": another orblog keygen is writing there");
  EXPECT_TRUE(names().empty());
}

TEST_F(OrblogKeyFolder, WithoutLocksNothingIsReplaced) {
  ASSERT_TRUE(keygen());
  const Pair former = files();
  plan.locks = false;
  EXPECT_FALSE(keygen(true));
  EXPECT_EQ(error, keys.string() + ": cannot be locked, which --force needs: No locks available");
  EXPECT_EQ(files(), former);
}

TEST_F(OrblogKeyFolder, WhatOthersPutThereMeanwhileStays) {
  ASSERT_TRUE(keygen());
  const Pair former = files();
  const Bytes foreign = {'f', 'o', 'r', 'e', 'i', 'g', 'n'};
  const auto view = [](const Bytes& bytes) { return orblog::ByteView(bytes.data(), bytes.size()); };
  fs::remove_all(keys);
  fs::create_directories(keys);
  orblog::KeyFolder folder(keys.string());
  ASSERT_TRUE(folder.take(false, notes, error));
  writeFile(keys / kNames[2], foreign);
  EXPECT_FALSE(folder.put(view(former[1]), view(former[2]), view(former[0]), error));
  EXPECT_EQ(error, (keys / kNames[2]).string() + ": File exists");
  EXPECT_EQ(names(), Names{kNames[2]});
  EXPECT_EQ(readFile(keys / kNames[2]), foreign);
}

TEST_F(OrblogKeyFolder, RemainsOfAKilledRunAreToldOf) {
  Plan killed;
  killed.fate = Fate::DiesAfter;
  killed.at = 5;  // the private key has its name
  ASSERT_EQ(keygenInChild(killed, false), -1);
  EXPECT_EQ(names().size(), 2u);
  EXPECT_TRUE(keygen()) << error;
  EXPECT_EQ(notes, Names{keys.string() + ": undid the changes of a killed run"});
  expectWholeAndNothingElse();
}

TEST_F(OrblogKeyFolder, FormerFileWhoseNameIsTakenIsKeptAndToldOf) {
  ASSERT_TRUE(keygen());
  const Pair former = files();
  Plan killed;
  killed.fate = Fate::DiesAfter;
  killed.at = 7;  // the three old files are moved away
  ASSERT_EQ(keygenInChild(killed, true), -1);
  ASSERT_EQ(names().size(), 1u);
  const fs::path kept = keys / names().front() / ("former." + kNames[1]);
  EXPECT_EQ(readFile(kept), former[1]);
  const Bytes foreign = {'f', 'o', 'r', 'e', 'i', 'g', 'n'};
  writeFile(keys / kNames[1], foreign);
  EXPECT_FALSE(keygen());
  EXPECT_EQ(notes, Names{kept.parent_path().string() +
                         ": holds files that a killed run was about to replace; they cannot be "
                         "restored, because other files have their names"});
  EXPECT_EQ(readFile(kept), former[1]);
  EXPECT_EQ(readFile(keys / kNames[1]), foreign);
}

}  // namespace
