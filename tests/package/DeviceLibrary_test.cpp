// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// The linked library for a device: its imports, its exports and its size. It is read, not loaded,
// because this machine does not have the device's libraries.
#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <sstream>
#include <utility>

#include "ElfFile.h"

namespace {

using Names = std::set<std::string>;

// Each library of the platform, and its soname on a device.
const std::pair<std::string, std::string> kPlatform[] = {
    {"log", ORB_SONAME_LOG}, {"cutils", ORB_SONAME_CUTILS}, {"diag", ORB_SONAME_DIAG}};

class DeviceLibrary : public testing::Test {
 protected:
  const ElfFile mLibrary{ORB_DEVICE_LIBRARY};
  const ElfFile mStripped{ORB_DEVICE_STRIPPED};

  void SetUp() override {
    ASSERT_TRUE(mLibrary.isElf()) << ORB_DEVICE_LIBRARY;
    ASSERT_TRUE(mStripped.isElf()) << ORB_DEVICE_STRIPPED;
  }

  static bool startsWith(const std::string& text, const std::string& start) {
    return text.compare(0, start.size(), start) == 0;
  }
  static bool isOfCompiler(const std::string& name) {
    for (const char* start :
         {"_ITM_", "__gmon_start__", "__stack_chk_", "__cxa_finalize", "__cxa_atexit"})
      if (startsWith(name, start)) return true;
    return false;
  }
  static bool isOfCxx(const std::string& name) {
    for (const char* start : {"_Z", "__cxa_", "__gxx_", "_Unwind_"})
      if (startsWith(name, start)) return true;
    return false;
  }
  // The name in the source of a function that fortification renamed.
  static std::string plain(const std::string& name) {
    std::smatch parts;
    return std::regex_match(name, parts, std::regex("__(\\w+)_chk")) ? parts[1].str() : name;
  }
  bool sharesCxx() const {
    for (const std::string& name : mLibrary.texts(DT_NEEDED))
      if (startsWith(name, "libprotobuf-lite.so")) return true;
    return false;
  }

  // The names in the reviewed list, without comments and headings.
  static Names reviewed() {
    std::istringstream lines(ElfFile(ORB_SOURCES "/platform/imports.txt").bytes());
    Names names;
    for (std::string line, word; std::getline(lines, line);) {
      if (line.empty() || line[0] == '#' || line[0] == '[') continue;
      for (std::istringstream words(line); words >> word;) names.insert(word);
    }
    return names;
  }
  static Names declaredIn(const std::string& header) {
    std::istringstream lines(ElfFile(ORB_SOURCES "/platform/include/" + header).bytes());
    const std::regex function("^[a-z]\\w*\\*? (\\w+)\\(.*");
    Names names;
    std::smatch parts;
    for (std::string line; std::getline(lines, line);)
      if (std::regex_match(line, parts, function)) names.insert(parts[1]);
    return names;
  }
  static Names declared() {
    Names all;
    for (const char* header : {"android/log.h", "cutils/properties.h", "diag/diag.h"})
      all.merge(declaredIn(header));
    return all;
  }
  static ElfFile stub(const std::string& name) { return ElfFile(ORB_STUBS "/lib" + name + ".so"); }
};

TEST_F(DeviceLibrary, IsForThisProcessorAndHasItsName) {
#if defined(__aarch64__)
  EXPECT_EQ(EM_AARCH64, mLibrary.header().e_machine);
#elif defined(__x86_64__)
  EXPECT_EQ(EM_X86_64, mLibrary.header().e_machine);
#endif
  EXPECT_EQ(ET_DYN, mLibrary.header().e_type);
  EXPECT_EQ("libOrbSdlSdk.so." ORB_VERSION_MAJOR, mLibrary.text(DT_SONAME));
}

TEST_F(DeviceLibrary, NeedsThePlatformAndLibcrypto) {
  Names needed = mLibrary.texts(DT_NEEDED);
  for (const auto& [name, soname] : kPlatform) EXPECT_EQ(1u, needed.erase(soname)) << soname;
  EXPECT_EQ(1u, needed.erase("libcrypto.so.3"));
#ifdef __GLIBC__
  EXPECT_EQ(1u, needed.erase("libc.so.6"));
  needed.erase("libm.so.6");
  for (const std::string& name : Names(needed))
    if (startsWith(name, "ld-linux")) needed.erase(name);
#else
  EXPECT_EQ(1u, needed.erase("libc.so") + needed.erase("libc.musl-aarch64.so.1"));
#endif
  if (ORB_STATIC_CXX) {
    EXPECT_EQ(0u, needed.count("libstdc++.so.6") + needed.count("libgcc_s.so.1") +
                      needed.count("libc++.so.1"));
  } else {
    needed.erase("libstdc++.so.6");
    needed.erase("libgcc_s.so.1");
  }
  for (const std::string& name : Names(needed))
    if (!ORB_STATIC_PROTOBUF && startsWith(name, "libprotobuf-lite.so")) needed.erase(name);
  EXPECT_EQ(Names{}, needed);
  EXPECT_FALSE(mLibrary.has(DT_RPATH));
  EXPECT_FALSE(mLibrary.has(DT_RUNPATH));
}

TEST_F(DeviceLibrary, ExportsThePublicFunctions) {
  EXPECT_EQ(ElfFile(ORB_HOST_LIBRARY).exported(), mLibrary.exported());
  EXPECT_EQ(21u, mLibrary.exported().size());
}

TEST_F(DeviceLibrary, CallsWhatHasBeenReviewed) {
  const Names known = reviewed();
  Names unknown;
  for (const std::string& name : mLibrary.imported()) {
    if (name.empty() || isOfCompiler(name) || (isOfCxx(name) && sharesCxx())) continue;
    if (known.count(plain(name)) == 0) unknown.insert(name);
  }
  EXPECT_EQ(Names{}, unknown) << "not in platform/imports.txt";
}

TEST_F(DeviceLibrary, CallsAllThatThePlatformsHeadersDeclare) {
  const Names imported = mLibrary.imported();
  for (const std::string& name : declared()) EXPECT_EQ(1u, imported.count(name)) << name;
  EXPECT_EQ(8u, declared().size());
}

TEST_F(DeviceLibrary, IsLinkedToStubsOfWhatTheHeadersDeclare) {
  Names all;
  for (const auto& [name, soname] : kPlatform) {
    ASSERT_TRUE(stub(name).isElf()) << name;
    EXPECT_EQ(soname, stub(name).text(DT_SONAME));
    all.merge(stub(name).exported());
  }
  EXPECT_EQ(declared(), all);
}

TEST_F(DeviceLibrary, HasNeitherWritableCodeNorARunnableStack) {
  const ElfW(Phdr)* const stack = mLibrary.segment(PT_GNU_STACK);
  ASSERT_NE(nullptr, stack);
  EXPECT_EQ(static_cast<ElfW(Word)>(PF_R | PF_W), stack->p_flags);
  EXPECT_FALSE(mLibrary.has(DT_TEXTREL));
  EXPECT_EQ(0u, mLibrary.value(DT_FLAGS) & DF_TEXTREL);
  EXPECT_NE(nullptr, mLibrary.segment(PT_GNU_RELRO));
  EXPECT_NE(0u, mLibrary.value(DT_FLAGS_1) & DF_1_NOW);
}

TEST_F(DeviceLibrary, IsEnteredAtTheBeginOfFunctions) {
  if (!ORB_CONTROL_FLOW) return;
#if defined(__x86_64__)
  const std::set<uint32_t> pads = {0xfa1e0ff3};  // endbr64
  constexpr uint32_t kProperty = 0xc0000002;     // IBT and SHSTK
#else
  const std::set<uint32_t> pads = {0xd503245f, 0xd503233f};  // bti c, paciasp
  constexpr uint32_t kProperty = 0xc0000000;                 // BTI and PAC
#endif
  for (const std::string& function : mLibrary.exported())
    EXPECT_EQ(1u, pads.count(mLibrary.firstInstruction(function))) << function;
  // The loader gets the note only if all parts have the property, also the C++ runtime.
  const bool fit = (ElfFile(ORB_SAMPLE_LIBRARY).features(kProperty) & 3) == 3;
  EXPECT_EQ(fit, (mLibrary.features(kProperty) & 3) == 3);
}

TEST_F(DeviceLibrary, IsToldFromOtherBuildsAlsoWhenStripped) {
  EXPECT_EQ(20u, mLibrary.buildId().size());
  EXPECT_EQ(mLibrary.buildId(), mStripped.buildId());
}

TEST_F(DeviceLibrary, StrippedKeepsWhatTheLoaderReads) {
  for (const char* name : {".symtab", ".strtab", ".debug_info", ".debug_line", ".debug_str"})
    EXPECT_FALSE(mStripped.hasSection(name)) << name;
  EXPECT_EQ(mLibrary.exported(), mStripped.exported());
  EXPECT_EQ(mLibrary.imported(), mStripped.imported());
  EXPECT_EQ(mLibrary.texts(DT_NEEDED), mStripped.texts(DT_NEEDED));
}

TEST_F(DeviceLibrary, IsSmall) {
  EXPECT_LT(mStripped.bytes().size(), 1000000u)
      << "The stripped library has grown: `nm -S --size-sort` of " << ORB_DEVICE_LIBRARY
      << " tells what is in it; docs/porting.md has the sizes that it had.";
}

// Names of days for std::time_get, and the name of a type that only the demangler has.
TEST_F(DeviceLibrary, HasNeitherLocalesNorNamesOfTypesInside) {
  for (const char* text : {"Wednesday", "decltype(auto)"})
    EXPECT_EQ(std::string::npos, mStripped.bytes().find(text))
        << text << ": is protobuf-lite compiled with -ffunction-sections?";
}

TEST_F(DeviceLibrary, DoesNotTellWhereItWasBuilt) {
  for (const char* path : {ORB_SOURCES "/", INSTALL_FROM "/"})
    EXPECT_EQ(std::string::npos, mStripped.bytes().find(path)) << path;
}

}  // namespace
