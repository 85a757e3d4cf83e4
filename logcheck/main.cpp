// logcheck: reads the utility's logs and shows what happened in each run and what to do.
#include <algorithm>
#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

#include "console/command_line.h"
#include "console/input.h"
#include "console/text.h"
#include "logcheck/guide.h"
#include "logcheck/output.h"

namespace {

using Path = std::filesystem::path;

/// In bytes; far more than a log has, because a run takes about a kilobyte.
constexpr std::size_t kLogSizeLimit = 256 * 1024 * 1024;

struct Options {
  bool json = false;
  bool summary = false;
  bool guide = false;
  std::vector<std::string> inputs;
};

struct Input {
  Path path;
  bool named = true;  ///< on the command line, not found in a folder
};

std::string NameOf(const Path& path) {
#ifdef _WIN32
  return console::Utf8(path.native());
#else
  return path.native();
#endif
}

bool HasLogExtension(const Path& path) {
  std::string extension = NameOf(path.extension());
  std::transform(extension.begin(), extension.end(), extension.begin(),
                 [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
  return extension == ".log" || extension == ".txt";
}

class LogCheck {
 public:
  LogCheck(const CLI::App& app, const Options& options) : app_(app), options_(options) {}

  int Run() {
    for (const std::string& argument : options_.inputs) {
      for (const Input& input : Expand(console::PathOf(argument))) Check(input);
    }
    if (options_.summary) Print(options_.json ? summary_.AsJson() : summary_.AsText());
    return status_;
  }

 private:
  void Worsen(int status) { status_ = std::max(status_, status); }
  void Fail(const std::string& why) { Worsen(console::Fail(app_, why)); }
  void Print(const std::string& text) {
    if (!console::Print(app_, text)) Worsen(console::kFailed);
  }

  /// The logs in a folder and its sub-folders, sorted by name; for a file or "-" only that.
  std::vector<Input> Expand(const Path& path) {
    std::error_code error;
    if (path == "-" || !std::filesystem::is_directory(path, error)) return {{path}};
    std::vector<Input> found;
    auto entry = std::filesystem::recursive_directory_iterator(path, error);
    for (; !error && entry != std::filesystem::end(entry); entry.increment(error)) {
      std::error_code ignored;
      if (HasLogExtension(entry->path()) && !entry->is_directory(ignored))
        found.push_back({entry->path(), false});
    }
    const std::string name = "'" + console::PrintablePath(path) + "'";
    if (error) Fail("cannot list " + name + " (" + error.message() + "); check its rights");
    if (!error && found.empty()) Fail("no file in " + name + " ends in .log or .txt; name the log itself");
    std::sort(found.begin(), found.end(), [](const Input& a, const Input& b) { return a.path < b.path; });
    return found;
  }

  void Check(const Input& input) {
    std::wstring log;
    {
      const console::Input read = console::Read(input.path, kLogSizeLimit);
      if (!read.error.empty()) return Fail(read.error);
      log = console::DecodeText(read.bytes);
    }
    bool shown = false, last_is_good = false;
    logcheck::ReadLog(log, [&](logcheck::Run&& run) {
      const logcheck::JudgedRun judged = logcheck::JudgeRun(std::move(run));
      // A folder may hold the logs of other programs.
      const bool foreign = judged.run.checks.empty() && judged.run.utility.empty() && judged.run.time.empty();
      if (foreign && !input.named) return;
      if (!shown) PrintName(input.path);
      shown = true;
      if (!judged.verdicts.empty()) {
        const logcheck::Outcome last = judged.verdicts.back().outcome;
        last_is_good = last == logcheck::Outcome::offered || last == logcheck::Outcome::none;
      }
      Show(judged, input.path);
    });
    if (last_is_good || (!shown && !input.named)) return;
    Worsen(console::kFound);
    if (!shown) PrintName(input.path);
    if (!shown && IsText()) Print("  no run of the utility\n");
  }

  bool IsText() const { return !options_.summary && !options_.json; }

  void PrintName(const Path& path) {
    if (IsText()) Print((path == "-" ? "standard input" : console::PrintablePath(path)) + "\n");
  }

  void Show(const logcheck::JudgedRun& judged, const Path& path) {
    if (options_.summary) return summary_.Add(judged, NameOf(path));
    Print(options_.json ? logcheck::AsJson(judged, NameOf(path)) : logcheck::AsText(judged) + "\n");
  }

  const CLI::App& app_;
  const Options& options_;
  logcheck::Summary summary_;
  int status_ = console::kClean;
};

}  // namespace

int console::RunTool(const std::vector<std::string>& arguments) {
  CLI::App app(
      "Tells what happened in the runs of the update utility, from its logs, and what to do.\n"
      "Exit status: 0; 1 when the last check of a file is neither 'offered' nor 'none', or a file has no "
      "check;\n"
      "2 after wrong use or for a file that cannot be read.",
      "logcheck");
  Options options;
  app.add_flag("--json", options.json, "Write one JSON object for each run, one a line");
  app.add_flag("--summary", options.summary,
               "Count runs and files for each outcome and code, the newest first");
  // Writes docs/log.md.
  app.add_flag("--guide", options.guide)->group("");
  app.add_option("FILE_OR_FOLDER", options.inputs,
                 "Logs, folders with logs (*.log and *.txt, sub-folders included), or - for standard input");
  if (const auto status = Parse(app, arguments)) return *status;
  if (options.guide) return Print(app, logcheck::Guide()) ? kClean : kFailed;
  if (options.inputs.empty())
    return Fail(app, "name a log or a folder with logs; logcheck --help shows the usage");
  return LogCheck(app, options).Run();
}
