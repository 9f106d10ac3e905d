// SPDX-License-Identifier: Apache-2.0
// Copyright (c) 2026 The OrbSdlSdk authors

// How all tools parse their command line, and how they end.
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <new>
#include <stdexcept>

#include "orbtool/CommandLine.h"
#include "orbtool/Run.h"

namespace {

using orbtool::CommandLine;

class ToolCommandLine : public testing::Test {
 protected:
  ToolCommandLine() {
    line.app().require_subcommand(1);
    line.app().add_option("-s,--socket", socket, "The socket");
    CLI::App* const watch = line.app().add_subcommand("watch", "Look");
    watch->add_option("--seconds", seconds, "How long");
    watch->add_flag("--second-hand", "Not new");
    watch->add_option("--color", color, "When")
        ->type_name("WHEN")
        ->check(CLI::IsMember({"auto", "always", "never"}));
    watch->add_option("SERVICE", services, "Which");
    line.app()
        .add_subcommand("status", "Tell")
        ->add_option("PART", part, "Of what")
        ->check(CLI::IsMember({"all", "none"}));
  }
  std::optional<int> parse(std::vector<const char*> words) {
    words.insert(words.begin(), "orbtest");
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const auto status = line.parse(static_cast<int>(words.size()), words.data());
    out = testing::internal::GetCapturedStdout();
    error = testing::internal::GetCapturedStderr();
    return status;
  }

  CommandLine line{"orbtest", "Try it."};
  std::string socket, color, part, out, error;
  int seconds = 0;
  std::vector<std::string> services;
};

TEST_F(ToolCommandLine, OptionsAndCommandAreRead) {
  EXPECT_EQ(std::nullopt, parse({"-s", "a", "watch", "--seconds=3", "lce", "lle"}));
  EXPECT_EQ("a", socket);
  EXPECT_EQ(3, seconds);
  EXPECT_EQ((std::vector<std::string>{"lce", "lle"}), services);
  EXPECT_EQ("", out + error);
  EXPECT_EQ("orbtest watch", line.name());
}

TEST_F(ToolCommandLine, LongOptionsMayBeAbbreviated) {
  EXPECT_EQ(std::nullopt, parse({"--soc=b", "watch", "--seconds", "4"}));
  EXPECT_EQ("b", socket);
  EXPECT_EQ(4, seconds);
}

TEST_F(ToolCommandLine, LastOfSeveralCountsUnlessTheyAreGathered) {
  EXPECT_EQ(std::nullopt,
            parse({"-s", "a", "--socket=b", "watch", "--seconds=1", "--seconds=2", "lce", "lle"}));
  EXPECT_EQ("b", socket);
  EXPECT_EQ(2, seconds);
  EXPECT_EQ((std::vector<std::string>{"lce", "lle"}), services);
}

TEST_F(ToolCommandLine, WordsThatNothingTakesAreNamedInTheirOrder) {
  EXPECT_EQ(2, parse({"status", "all", "more", "--and"}));
  EXPECT_EQ("orbtest status: unexpected argument: more --and; try 'orbtest status --help'\n",
            error);
  EXPECT_EQ(2, parse({"status", "all", "--completion", "bash"}));
  EXPECT_EQ(0U, error.find("orbtest status: unknown option: --completion bash; ")) << error;
}

TEST_F(ToolCommandLine, AbbreviationOfTwoIsRefused) {
  EXPECT_EQ(2, parse({"watch", "--sec", "4"}));
  EXPECT_EQ("", out);
  EXPECT_EQ(0U, error.find("orbtest watch: ")) << error;
  EXPECT_NE(std::string::npos, error.find("--sec")) << error;
}

TEST_F(ToolCommandLine, WordsAfterTwoDashesAreNoOptions) {
  EXPECT_EQ(std::nullopt, parse({"watch", "--", "--sec", "-x"}));
  EXPECT_EQ((std::vector<std::string>{"--sec", "-x"}), services);
}

TEST_F(ToolCommandLine, WordsOfAnotherProgramStayAsTheyAre) {
  std::vector<std::string> rest;
  line.keepRest(*line.app().get_subcommand("watch"), rest);
  EXPECT_EQ(std::nullopt,
            parse({"watch", "--seconds", "3", "lce", "--", "app", "[1,2]", "--", "-x"}));
  EXPECT_EQ((std::vector<std::string>{"app", "[1,2]", "--", "-x"}), rest);
  EXPECT_EQ((std::vector<std::string>{"lce"}), services);
}

TEST_F(ToolCommandLine, HelpIsOfTheProgramOrOfItsCommand) {
  EXPECT_EQ(0, parse({"--help"}));
  EXPECT_NE(std::string::npos, out.find("--socket")) << out;
  EXPECT_NE(std::string::npos, out.find("watch")) << out;
  EXPECT_EQ(std::string::npos, out.find("--completion")) << out;
  EXPECT_EQ("", error);
  EXPECT_EQ(0, parse({"watch", "-h"}));
  EXPECT_NE(std::string::npos, out.find("--seconds")) << out;
}

TEST_F(ToolCommandLine, HelpOfACommandTellsOfTheToolsOptionsWhereTheyMayStandThere) {
  EXPECT_EQ(0, parse({"watch", "-h"}));
  EXPECT_EQ(std::string::npos, out.find("--socket")) << out;
  line.app().get_subcommand("watch")->fallthrough();
  EXPECT_EQ(0, parse({"watch", "-h"}));
  EXPECT_NE(std::string::npos, out.find("\n\nOptions of all commands:\n")) << out;
  EXPECT_NE(std::string::npos, out.find("\n  -s, --socket ")) << out;
  EXPECT_EQ(out.find("--help"), out.rfind("--help")) << out;
  EXPECT_EQ(std::string::npos, out.find("--completion")) << out;
}

TEST_F(ToolCommandLine, HelpNamesTheKindOfAValueAlone) {
  EXPECT_EQ(0, parse({"watch", "-h"}));
  EXPECT_NE(std::string::npos, out.find("  --color WHEN            When\n")) << out;
}

TEST_F(ToolCommandLine, WrongShellIsNamed) {
  EXPECT_EQ(2, parse({"--completion", "fish"}));
  EXPECT_EQ("orbtest: --completion: fish not in {bash,zsh}; try 'orbtest --help'\n", error);
  EXPECT_EQ(2, parse({"--completion"}));
  EXPECT_EQ(0U, error.find("orbtest: --completion: ")) << error;
}

TEST_F(ToolCommandLine, VersionNamesTheProgram) {
  EXPECT_EQ(0, parse({"-V"}));
  EXPECT_EQ(0U, out.find("orbtest 1.")) << out;
}

TEST_F(ToolCommandLine, WrongUseIsOneLineAndTheStatus) {
  const std::vector<std::vector<const char*>> kCases = {{},
                                                        {"dance"},
                                                        {"--nonsense", "watch"},
                                                        {"--socket"},
                                                        {"status", "extra"},
                                                        {"watch", "--seconds", "soon"},
                                                        {"--completion", "fish"}};
  for (const auto& words : kCases) {
    EXPECT_EQ(2, parse(words));
    EXPECT_EQ("", out);
    EXPECT_EQ(0U, error.find("orbtest")) << error;
    EXPECT_EQ(error.size() - 1, error.find('\n')) << error;
    EXPECT_NE(std::string::npos, error.find("; try 'orbtest")) << error;
  }
}

TEST_F(ToolCommandLine, ReasonsFoundLaterLookTheSame) {
  EXPECT_EQ(std::nullopt, parse({"watch"}));
  testing::internal::CaptureStderr();
  EXPECT_EQ(2, line.refuse("no such file"));
  EXPECT_EQ("orbtest watch: no such file; try 'orbtest watch --help'\n",
            testing::internal::GetCapturedStderr());
}

// The completions of bash for a line with an incomplete last word.
std::string offered(const std::string& script, const std::string& words, int cursor) {
  char path[] = "/tmp/orb_completion_XXXXXX";
  const int fd = mkstemp(path);
  if (fd < 0) std::abort();
  close(fd);
  std::ofstream(path) << script << "COMP_WORDS=(" << words << ")\nCOMP_CWORD=" << cursor
                      << "\n_orbtest\necho \"${COMPREPLY[*]}\"\n";
  FILE* const bash = popen(("bash " + std::string(path) + " 2>&1").c_str(), "r");
  std::string text;
  for (int c = 0; bash != nullptr && (c = std::getc(bash)) != EOF;) text += static_cast<char>(c);
  EXPECT_EQ(0, pclose(bash));
  unlink(path);
  return text;
}

TEST_F(ToolCommandLine, CompletionKnowsCommandsAndTheirOptions) {
  EXPECT_EQ(0, parse({"--completion", "bash"}));
  const std::string script = out;
  EXPECT_EQ("watch\n", offered(script, "orbtest w", 1));
  EXPECT_EQ("--socket\n", offered(script, "orbtest --so", 1));
  EXPECT_EQ("--seconds --second-hand\n", offered(script, "orbtest watch --sec", 2));
  EXPECT_EQ("--seconds --second-hand\n", offered(script, "orbtest -s x watch --sec", 4));
  EXPECT_EQ("\n", offered(script, "orbtest status --sec", 2));
}

TEST_F(ToolCommandLine, CompletionOffersOptionsToADashOnly) {
  EXPECT_EQ(0, parse({"--completion", "bash"}));
  EXPECT_EQ("watch status\n", offered(out, "orbtest ''", 1));
  EXPECT_EQ("--help -h --version -V --socket -s\n", offered(out, "orbtest -", 1));
  EXPECT_EQ("\n", offered(out, "orbtest watch ''", 2));  // files
  EXPECT_EQ("all none\n", offered(out, "orbtest status ''", 2));
  EXPECT_EQ("\n", offered(out, "orbtest watch -- --sec", 3));
  EXPECT_EQ("\n", offered(out, "orbtest watch -- ''", 3));
}

TEST_F(ToolCommandLine, CompletionKnowsValues) {
  EXPECT_EQ(0, parse({"--completion", "bash"}));
  EXPECT_EQ("auto always never\n", offered(out, "orbtest watch --color ''", 3));
  EXPECT_EQ("auto always\n", offered(out, "orbtest watch --color a", 3));
  EXPECT_EQ("auto always never\n", offered(out, "orbtest watch --color =", 3));
  EXPECT_EQ("auto always\n", offered(out, "orbtest watch --color = a", 4));
  EXPECT_EQ("--seconds --second-hand\n", offered(out, "orbtest watch --color = auto --s", 5));
  EXPECT_EQ("\n", offered(out, "orbtest watch --seconds ''", 3));
  EXPECT_EQ("\n", offered(out, "orbtest watch --seconds --s", 3));
}

TEST_F(ToolCommandLine, CompletionTakesNoValueForACommand) {
  EXPECT_EQ(0, parse({"--completion", "bash"}));
  EXPECT_EQ("watch status\n", offered(out, "orbtest -s watch ''", 3));
  EXPECT_EQ("watch status\n", offered(out, "orbtest --socket = watch ''", 4));
  EXPECT_EQ("\n", offered(out, "orbtest -s watch --sec", 3));
}

TEST_F(ToolCommandLine, CompletionHasTheToolsOptionsWhereTheyMayStand) {
  line.app().get_subcommand("status")->fallthrough();
  EXPECT_EQ(0, parse({"--completion", "bash"}));
  EXPECT_EQ("--socket\n", offered(out, "orbtest status --so", 2));
  EXPECT_EQ("\n", offered(out, "orbtest status -s all", 3));
  EXPECT_EQ("\n", offered(out, "orbtest watch --so", 2));
}

TEST_F(ToolCommandLine, CompletionForZshNamesAllWords) {
  EXPECT_EQ(0, parse({"--completion=zsh"}));
  EXPECT_EQ(0U, out.find("#compdef orbtest\n")) << out;
  EXPECT_NE(std::string::npos, out.find("\"orbtest watch\") choices=\"--help -h --seconds "
                                        "--second-hand --color\" ;;"))
      << out;
  EXPECT_NE(std::string::npos,
            out.find("\"orbtest watch --color\") choices=\"auto always never\" ;;"))
      << out;
}

// The status and the error output of a tool with that main function; its output goes to `path`.
std::pair<int, std::string> endOf(const std::function<int()>& body, const char* path) {
  testing::internal::CaptureStderr();
  std::fflush(stdout);
  const pid_t tool = fork();
  if (tool == 0) {
    if (std::freopen(path, "w", stdout) == nullptr) _exit(99);
    _exit(orbtool::runTool("orbtest", body));
  }
  int status = 0;
  waitpid(tool, &status, 0);
  EXPECT_TRUE(WIFEXITED(status));
  return {WEXITSTATUS(status), testing::internal::GetCapturedStderr()};
}

TEST(ToolRun, StatusIsTheTools) {
  EXPECT_EQ(std::make_pair(7, std::string()), endOf([] { return 7; }, "/dev/null"));
}

TEST(ToolRun, NothingThrownLeaves) {
  EXPECT_EQ(std::make_pair(1, std::string("orbtest: why\n")),
            endOf([]() -> int { throw std::runtime_error("why"); }, "/dev/null"));
  EXPECT_EQ(std::make_pair(1, std::string("orbtest: out of memory\n")),
            endOf([]() -> int { throw std::bad_alloc(); }, "/dev/null"));
}

TEST(ToolRun, FullDiskIsToldAndFails) {
  const auto print = [] { return std::puts("text") >= 0 ? 0 : 9; };
  const auto printMuch = [] {
    for (int i = 0; i < 100000; ++i) std::puts("text");
    return 0;
  };
  const std::string told = "orbtest: standard output: ";
  EXPECT_EQ(std::make_pair(1, told + "No space left on device\n"), endOf(print, "/dev/full"));
  const auto [status, error] = endOf(printMuch, "/dev/full");
  EXPECT_EQ(1, status);
  EXPECT_EQ(0U, error.find(told)) << error;
}

}  // namespace
