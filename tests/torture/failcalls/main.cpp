// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors
//
// Tries all faults, or a part of them; scripts/torture runs it in a sandbox.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "Campaign.h"

namespace {

const char kUsage[] =
    "Usage: failcalls [OPTIONS]\n"
    "Make every call that the library makes in a scenario fail, one in each run, and check that\n"
    "nothing worse happens than documented. To be run in scripts/sandbox.\n"
    "\n"
    "  --scenario NAME     Only this one: services or log.\n"
    "  --call NAME         Only this call, for example recv or operator-new.\n"
    "  --fault CALL:HOW:N  Only the Nth such call, failing like this: recv:EINTR:3. With a + at "
    "the\n"
    "                      end, all that follow it fail as well.\n"
    "  --sample N          About N points of each scenario. [Default: all]\n"
    "  --jobs N            So many runs at a time, where they can. [Default: 2]\n"
    "  --words             Print the lines that failures brought, with how many runs had them.\n"
    "  --help              Print this text and exit.\n"
    "\n"
    "Columns: unnoticed, everything came and nothing was said; said, everything came and a line\n"
    "tells of it; status, something did not come and a result or status says so; message, a line\n"
    "says so; not told, nothing does, which is documented; end, the documented end of the process; "
    "BAD, anything else: see the findings.\n"
    "Exit status: 0 all as documented, 1 findings, 2 wrong arguments.\n";

[[noreturn]] void wrongUse(const char* argument) {
  std::fprintf(stderr, "failcalls: unexpected argument: %s; try --help\n", argument);
  std::exit(2);
}

}  // namespace

int main(int argc, char** argv) {
  failcalls::Settings settings;
  for (int i = 1; i < argc; ++i) {
    const auto is = [&](const char* name) { return std::strcmp(argv[i], name) == 0; };
    if (is("--help")) {
      std::fputs(kUsage, stdout);
      return 0;
    }
    if (is("--words")) {
      settings.words = true;
      continue;
    }
    if (i + 1 == argc) wrongUse(argv[i]);
    const char* const value = argv[i + 1];
    if (is("--scenario")) {
      settings.scenario = value;
    } else if (is("--call")) {
      settings.call = value;
    } else if (is("--fault")) {
      settings.fault = value;
    } else if (is("--sample")) {
      settings.sample = std::strtoul(value, nullptr, 10);
    } else if (is("--jobs")) {
      settings.sideBySide = static_cast<unsigned>(std::max(1ul, std::strtoul(value, nullptr, 10)));
    } else {
      wrongUse(argv[i]);
    }
    ++i;
  }
  failcalls::Campaign campaign(settings);
  return campaign.run() ? 0 : 1;
}
