// zrad command families: how a family adds its subcommands, and the shared ways of answering.
//
// Adding a family: write tools/zrad/cmd_<family>.cpp (CMakeLists.txt picks it up by its name and
// builds it when the library subsystem it stands on is built; see the table there). In it, add
// the subcommand to the CLI11 app and register that function with one static `Registration`:
//
//   namespace {
//   std::vector<std::string> files;              // parsed values live for the whole run
//   int run() { ...; return kOk; }               // returns an ExitStatus
//   void add(CLI::App& zrad) {
//     CLI::App* cmd = zrad.add_subcommand("md5", "MD5 digests of files");
//     cmd->add_option("FILE", files, "files to digest; none or \"-\": standard input");
//     onRun(cmd, run);
//   }
//   const Registration kRegistration("md5", add);
//   }  // namespace
//
// A family that needs libraries of its own (cairo, libedit) or more sources adds them to the
// `zrad` target in tools/zrad/cmd_<family>.cmake, which CMakeLists.txt includes when present
// (e.g. `add_subdirectory(render)` for sources in tools/zrad/render/).
//
// Every subcommand thereby gets the same command line: `--opt=value` and `--opt value`, options
// anywhere, `--` ending options, `--help`, `zrad help CMD`, and on a usage error one line with
// the cause and one usage line on stderr (exit status 2). Options of the whole tool (`--log FILE`,
// `--verbose`) are accepted after the subcommand as well.
#pragma once

#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <string_view>

#include <CLI/CLI.hpp>

namespace zradtool {

enum ExitStatus { kOk = 0, kFailed = 1, kUsage = 2 };

// Registers the function that adds a family's subcommand(s) to the tool. Families are added,
// and `zrad help` lists them, in the order of their names.
struct Registration {
  Registration(const char* family, void (*add)(CLI::App& zrad));
};

// Runs `body` when `cmd` is the subcommand chosen; its result becomes zrad's exit status.
void onRun(CLI::App* cmd, std::function<int()> body);

// Prints "zrad <cmd>: <what>: <cause>" (without ": <cause>" when cause is empty) on stderr,
// <cmd> being the running subcommand ("json cat"); returns kFailed.
int fail(const std::string& what, const std::string& cause = std::string());

// For usage checks CLI11 cannot express: prints "zrad <cmd>: <what>" and the subcommand's usage
// line on stderr; returns kUsage.
int usageError(const std::string& what);

// "-" stands for standard input or standard output in every file operand.
inline bool isStdStream(const std::string& operand) { return operand == "-"; }

// The operand as messages name it: "standard input" / "standard output" for "-".
std::string operandName(const std::string& operand, bool input);

// A stream opened for an operand; closing it leaves standard input and output open.
using Stream = std::unique_ptr<FILE, int (*)(FILE*)>;

// Opens an input operand for reading ("-": standard input). Null, with the system's error text
// in `cause`, when it cannot be opened.
Stream openInput(const std::string& operand, std::string& cause);

// Reads all of an input operand. False, with the system's error text in `cause` ("No such file
// or directory", "Is a directory", "Permission denied"), when it cannot be read.
bool readAll(const std::string& operand, std::string& bytes, std::string& cause);

// Writes `bytes` to an output operand ("-": standard output). A file is written beside its
// destination and renamed over it only when complete, so a failure never leaves a truncated
// file. False, with the system's error text in `cause`, on failure.
bool writeAll(const std::string& operand, std::string_view bytes, std::string& cause);

// Used by main.cpp: adds every registered family to `zrad`, and the exit status of the
// subcommand that ran (kOk when none ran).
void addFamilies(CLI::App& zrad);
int exitStatus();
// "zrad json cat" for the subcommand `cmd`, and its one-line usage "usage: zrad json cat ...".
std::string commandPath(const CLI::App* cmd);
std::string usageLine(const CLI::App* cmd);

}  // namespace zradtool
