#pragma once

#include <CLI/CLI.hpp>
#include <filesystem>
#include <optional>
#include <ostream>
#include <string>
#include <vector>

/// The command line of a console tool. Arguments are UTF-8 on Windows, and unchanged bytes elsewhere.
namespace console {

/// Exit status of every tool.
enum Status { kClean = 0, kFound = 1, kFailed = 2 };

/// Each tool defines this function, and the shared main function calls it. Returns the exit status. An
/// exception that leaves it ends the tool with kFailed and the exception's message on standard error.
int RunTool(const std::vector<std::string>& arguments);

/// Adds --help, -h and --version to `app`, which has the tool's name, and reads `arguments` into it. Returns
/// the exit status when the tool must end: after help or version, or, with a message on standard error, after
/// wrong use.
std::optional<int> Parse(CLI::App& app, const std::vector<std::string>& arguments);

/// Prints the tool's name, ": " and `why`, which must be safe on a terminal, on standard error. Returns
/// kFailed.
int Fail(const CLI::App& app, const std::string& why);

/// Writes UTF-8 to std::cout or std::cerr, also where that is a Windows console. False when that fails.
bool Write(std::ostream& stream, const std::string& text);

/// Writes `text` to standard output. False, after a message on standard error, when that fails.
bool Print(const CLI::App& app, const std::string& text);

/// The path that an argument names.
std::filesystem::path PathOf(const std::string& argument);

}  // namespace console
