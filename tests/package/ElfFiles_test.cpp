// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The programs and libraries that `cmake --install` installs: their protections and exports, and
// that no file contains the place of the build.
#include <features.h>
#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <map>
#include <regex>
#include <sstream>
#include <string>
#include <vector>

#include "ElfFile.h"

namespace {

namespace fs = std::filesystem;

// The installed tree, made once for all tests of the program.
class Installed : public testing::Test {
 protected:
  static void SetUpTestSuite() {
    char path[] = INSTALL_FROM "/elf-XXXXXX";
    ASSERT_NE(nullptr, mkdtemp(path));
    root() = path;
    // DESTDIR is used, because the build's folders can be absolute.
    const std::string install = "DESTDIR='" + root() +
                                "' '" CMAKE_PROGRAM "' --install '" INSTALL_FROM
                                "' --prefix /usr >'" +
                                root() + "/log' 2>&1";
    ASSERT_EQ(0, std::system(install.c_str())) << ElfFile(root() + "/log").bytes();
    for (const auto& entry : fs::recursive_directory_iterator(root())) {
      if (entry.is_symlink() || !entry.is_regular_file() || entry.path() == root() + "/log")
        continue;
      const ElfFile file(entry.path());
      if (file.isElf())
        binaries().emplace(entry.path().filename(), file);
      else
        others().emplace(entry.path().filename(), file.bytes());
    }
  }
  static void TearDownTestSuite() { fs::remove_all(root()); }

  static std::string& root() {
    static std::string path;
    return path;
  }
  static std::map<std::string, ElfFile>& binaries() {
    static std::map<std::string, ElfFile> all;
    return all;
  }
  static std::map<std::string, std::string>& others() {
    static std::map<std::string, std::string> all;
    return all;
  }
  static const ElfFile& library() { return binaries().at("libOrbSdlSdk.so." ORB_VERSION); }

  // The names between "global:" and "local:".
  static std::set<std::string> namesOf(const std::string& versionScript) {
    std::istringstream words(ElfFile(versionScript).bytes());
    std::set<std::string> names;
    std::string word;
    while (words >> word && word != "global:") continue;
    while (words >> word && word != "local:") names.insert(word.substr(0, word.find(';')));
    return names;
  }
  // The functions declared in the installed headers, each once.
  static std::vector<std::string> declaredFunctions() {
    static const std::regex declaration("\\nORB_API [a-z0-9_ *]+[ *](\\w+)\\(");
    std::vector<std::string> names;
    for (const auto& [file, text] : others()) {
      if (fs::path(file).extension() != ".h") continue;
      for (std::sregex_iterator found(text.begin(), text.end(), declaration), end; found != end;
           ++found) {
        names.push_back((*found)[1]);
        // Its comment ends on the line before.
        const auto start = static_cast<size_t>(found->position());
        EXPECT_TRUE(start >= 3 && text.compare(start - 3, 3, " */") == 0) << names.back();
      }
    }
    return names;
  }
  static bool importsLike(const ElfFile& file, const std::string& end) {
    for (const std::string& name : file.imported()) {
      if (name != "__stack_chk_fail" && name.size() > end.size() &&
          name.compare(name.size() - end.size(), end.size(), end) == 0)
        return true;
    }
    return false;
  }
};

TEST_F(Installed, AreTheLibraryTheStandInsAndTheTools) {
  std::set<std::string> names;
  for (const auto& [name, file] : binaries()) {
    names.insert(name);
    EXPECT_EQ(ET_DYN, file.header().e_type) << name;  // programs are also position independent
    EXPECT_EQ(name.find(".so") == std::string::npos, file.isProgram()) << name;
  }
  const std::set<std::string> expected = {"libOrbSdlSdk.so." ORB_VERSION,
                                          "orbd-sim",
                                          "orbctl",
                                          "orblog",
                                          "liblog.so",
                                          "libcutils.so",
                                          "libdiag.so",
                                          "liborb_redirect.so",
                                          "orbdiag"};
  EXPECT_EQ(expected, names);
}

TEST_F(Installed, AddressesAreReadOnlyBeforeAnythingRuns) {
  for (const auto& [name, file] : binaries()) {
    EXPECT_NE(nullptr, file.segment(PT_GNU_RELRO)) << name;
    EXPECT_TRUE(file.has(DT_BIND_NOW) || (file.value(DT_FLAGS) & DF_BIND_NOW) != 0 ||
                (file.value(DT_FLAGS_1) & DF_1_NOW) != 0)
        << name;
  }
}

TEST_F(Installed, CodeIsNotWrittenAndTheStackIsNotRun) {
  for (const auto& [name, file] : binaries()) {
    const ElfW(Phdr)* const stack = file.segment(PT_GNU_STACK);
    ASSERT_NE(nullptr, stack) << name;
    EXPECT_EQ(static_cast<ElfW(Word)>(PF_R | PF_W), stack->p_flags) << name;
    EXPECT_FALSE(file.has(DT_TEXTREL)) << name;
    EXPECT_EQ(0u, file.value(DT_FLAGS) & DF_TEXTREL) << name;
  }
}

TEST_F(Installed, EachNamesItsBuild) {
  if (!ORB_BUILD_ID) return;
  std::set<std::string> ids;
  for (const auto& [name, file] : binaries()) {
    EXPECT_EQ(20u, file.buildId().size()) << name;
    ids.insert(file.buildId());
  }
  EXPECT_EQ(binaries().size(), ids.size());
}

TEST_F(Installed, ArraysHaveACanary) {
  if (!ORB_STACK_PROTECTOR) return;
  // If it is in a static library of the compiler, a program can contain it.
  for (const auto& [name, file] : binaries())
    EXPECT_EQ(1u,
              file.imported().count("__stack_chk_fail") + file.exported().count("__stack_chk_fail"))
        << name;
}

TEST_F(Installed, CallsOfTheCLibraryCheckSizes) {
#ifdef __GLIBC__
  if (!ORB_FORTIFIED) return;  // needs optimisation and no AddressSanitizer
  for (const auto& [name, file] : binaries()) {
    if (name == "libcutils.so") continue;  // has no call with a checked size
    EXPECT_TRUE(importsLike(file, "_chk")) << name;
  }
#endif
}

TEST_F(Installed, FunctionsAreEnteredAtTheirBegin) {
  if (!ORB_CONTROL_FLOW) return;
#if defined(__x86_64__)
  const std::set<uint32_t> pads = {0xfa1e0ff3};  // endbr64
#elif defined(__aarch64__)
  const std::set<uint32_t> pads = {0xd503245f, 0xd503233f};  // bti c, paciasp
#endif
#if defined(__x86_64__) || defined(__aarch64__)
  for (const auto& [name, file] : binaries()) {
    if (file.isProgram()) continue;
    for (const std::string& function : file.exported())
      EXPECT_EQ(1u, pads.count(file.firstInstruction(function))) << name << ' ' << function;
  }
#endif
}

// The linker sets the note only if all objects have the property, also those of the C library.
TEST_F(Installed, ControlFlowIsKnownToTheLoaderWhereTheCLibraryIsFitForIt) {
#if defined(__x86_64__)
  constexpr uint32_t kProperty = 0xc0000002;  // IBT and SHSTK
#else
  constexpr uint32_t kProperty = 0xc0000000;                 // BTI and PAC
#endif
  const bool fit = (ElfFile(ORB_SAMPLE_PROGRAM).features(kProperty) & 3) == 3;
  for (const auto& [name, file] : binaries())
    EXPECT_EQ(fit, (file.features(kProperty) & 3) == 3) << name;
}

TEST_F(Installed, ExportsAreThoseOfTheVersionScripts) {
  EXPECT_EQ(namesOf(ORB_SOURCES "/cmake/OrbSdlSdk.map"), library().exported());
  EXPECT_EQ(21u, library().exported().size());
  for (const char* name : {"liblog", "libcutils", "libdiag", "liborb_redirect"}) {
    EXPECT_EQ(namesOf(std::string(ORB_SOURCES "/platform/host/") + name + ".map"),
              binaries().at(std::string(name) + ".so").exported());
  }
  EXPECT_EQ(std::set<std::string>{"__android_log_print"}, binaries().at("liblog.so").exported());
}

TEST_F(Installed, ExportsAreTheFunctionsThatTheHeadersDeclareAndDocument) {
  const std::vector<std::string> declared = declaredFunctions();
  EXPECT_EQ(std::set<std::string>(declared.begin(), declared.end()), library().exported());
  EXPECT_EQ(library().exported().size(), declared.size());
}

TEST_F(Installed, LibrariesAreFoundByNameAndBesideEachOther) {
  EXPECT_EQ("libOrbSdlSdk.so." ORB_VERSION_MAJOR, library().text(DT_SONAME));
  for (const auto& [name, file] : binaries()) {
    EXPECT_FALSE(file.has(DT_RPATH)) << name;
    const char* const beside = name == "orbctl" ? "$ORIGIN/../lib" : "";  // it uses the library
    EXPECT_EQ(&file == &library() ? "$ORIGIN" : beside, file.text(DT_RUNPATH)) << name;
    if (file.isProgram() || &file == &library()) continue;
    EXPECT_EQ(name, file.text(DT_SONAME));
  }
  for (const char* needed : {"liblog.so", "libcutils.so", "libdiag.so"})
    EXPECT_EQ(1u, library().texts(DT_NEEDED).count(needed)) << needed;
}

TEST_F(Installed, NothingTellsWhereItWasBuilt) {
  if (!ORB_PLAIN_BUILD) return;  // sanitizers and coverage store whole paths of files
  for (const auto& [name, file] : binaries()) {
    for (const std::string path : {ORB_SOURCES "/", INSTALL_FROM "/"})
      EXPECT_EQ(std::string::npos, file.bytes().find(path)) << name << " has " << path;
  }
  for (const auto& [name, text] : others()) {
    for (const std::string path : {ORB_SOURCES "/", INSTALL_FROM "/"})
      EXPECT_EQ(std::string::npos, text.find(path)) << name << " has " << path;
  }
}

}  // namespace
