// logcheck: reads the utility's logs and shows what happened in each run and what to do.
#include <algorithm>
#include <filesystem>
#include <map>
#include <optional>
#include <regex>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include "console/command_line.h"
#include "console/input.h"
#include "console/text.h"
#include "logcheck/output.h"

namespace {

using Path = std::filesystem::path;

struct Options {
  bool json = false;
  bool summary = false;
  bool last = false;
  bool guide = false;
  std::string outcome;  ///< empty: all
  std::string since;    ///< "2026-11-21"; empty: all times
  std::vector<std::string> inputs;
};

std::string Quoted(const Path& path) {
  return "'" + console::PrintablePath(path) + "'";
}

bool HasLogExtension(const Path& path) {
  static const std::regex extension("\\.(log|txt)", std::regex::icase);
  return std::regex_match(console::PrintablePath(path.extension()), extension);
}

/// Empty for a date such as 2026-11-21, otherwise what is wrong.
std::string CheckDate(const std::string& text) {
  static const std::regex date("[0-9]{4}-(0[1-9]|1[0-2])-(0[1-9]|[12][0-9]|3[01])");
  return std::regex_match(text, date) ? std::string() : "'" + text + "' is not a date such as 2026-11-21";
}

class LogCheck {
 public:
  LogCheck(const CLI::App& app, const Options& options) : app_(app), options_(options) {}

  int Run() {
    for (const std::string& argument : options_.inputs) {
      const Path path = console::PathOf(argument);
      std::error_code error;
      if (path != "-" && std::filesystem::is_directory(path, error)) {
        CheckFolder(path);
      } else {
        CheckFile(path, true);
      }
    }
    if (options_.summary && options_.json) {
      for (const logcheck::SummaryRow& row : summary_.Rows()) Print(console::JsonLine(row));
    } else if (options_.summary) {
      Print(summary_.AsText());
    }
    return status_;
  }

 private:
  void Worsen(int status) { status_ = std::max(status_, status); }
  void Fail(const std::string& why) { Worsen(console::Fail(app_, why)); }
  void Print(const std::string& text) {
    if (!console::Print(app_, text)) Worsen(console::kFailed);
  }

  /// Adds the logs in a folder and its sub-folders to `found`. A folder that cannot be listed is named.
  void List(const Path& folder, std::vector<Path>& found) {
    std::error_code error, ignored;
    auto entry = std::filesystem::directory_iterator(folder, error);
    for (; !error && entry != std::filesystem::end(entry); entry.increment(error)) {
      if (entry->is_directory(ignored) && !entry->is_symlink(ignored)) {
        List(entry->path(), found);
      } else if (entry->is_regular_file(ignored) && HasLogExtension(entry->path())) {
        found.push_back(entry->path());
      }
    }
    if (error) Fail("cannot list " + Quoted(folder) + " (" + error.message() + "); check its rights");
  }

  void CheckFolder(const Path& folder) {
    std::vector<Path> found;
    List(folder, found);
    std::sort(found.begin(), found.end());
    bool has_log = false;
    for (const Path& path : found) has_log = CheckFile(path, false) || has_log;
    if (!has_log)
      Fail("no file *.log or *.txt in " + Quoted(folder) + " is a log of the utility; name the log itself");
  }

  /// Whether an argument or a folder has named this file before, perhaps in another way.
  bool IsKnown(const Path& path) {
    std::error_code error;
    const std::pair key(std::filesystem::file_size(path, error),
                        std::filesystem::last_write_time(path, error));
    if (error) return false;
    const auto [first, last] = known_.equal_range(key);
    const bool known =
        std::any_of(first, last, [&](const auto& other) { return equivalent(other.second, path, error); });
    if (!known) known_.emplace(key, path);
    return known;
  }

  /// Shows the runs of a file. False if it has none: `named` on the command line, it is an error; a folder
  /// may hold the logs of other programs.
  bool CheckFile(const Path& path, bool named) {
    if (IsKnown(path)) return true;
    bool has_run = false;
    logcheck::Run last;
    shown_.reset();
    logcheck::LogReader reader([&](logcheck::Run& run) {
      if (!named && run.checks.empty() && !run.utility && !run.time) return;
      has_run = true;
      if (!options_.last) return Show(run, path);
      std::swap(run, last);
    });
    const std::string error = console::ReadText(path, [&](std::string_view text) { reader.Read(text); });
    reader.End();
    if (!error.empty()) Fail(error);
    if (has_run && options_.last) Show(last, path);
    if (!has_run && named && error.empty()) {
      shown_ = logcheck::Outcome::no_check;
      if (IsText()) Print(ShownName(path) + "  no run of the utility\n");
    }
    const auto shown = shown_.value_or(logcheck::Outcome::none);
    if (shown != logcheck::Outcome::offered && shown != logcheck::Outcome::none) Worsen(console::kFound);
    return has_run || !error.empty();
  }

  void Show(logcheck::Run& run, const Path& path) {
    Judge(run);
    const logcheck::Outcome outcome = run.LastCheck().outcome;
    if (!options_.outcome.empty() && options_.outcome != NameOf(outcome)) return;
    if (run.time.value_or("") < options_.since) return;
    if (IsText() && !shown_) Print(ShownName(path));
    if (outcome != logcheck::Outcome::no_check || !shown_) shown_ = outcome;
    run.file = console::PrintablePath(path);
    if (options_.summary) return summary_.Add(run);
    Print(options_.json ? console::JsonLine(run) : AsText(run) + "\n");
  }

  bool IsText() const { return !options_.summary && !options_.json; }

  static std::string ShownName(const Path& path) {
    return (path == "-" ? "standard input" : console::PrintablePath(path)) + "\n";
  }

  const CLI::App& app_;
  const Options& options_;
  logcheck::Summary summary_;
  std::multimap<std::pair<std::uintmax_t, std::filesystem::file_time_type>, Path> known_;
  std::optional<logcheck::Outcome> shown_;  ///< of the current file's last check that was shown
  int status_ = console::kClean;
};

}  // namespace

int console::RunTool(const std::vector<std::string>& arguments) {
  CLI::App app(
      "Tells what happened in the runs of the update utility, from its logs, and what to do.\n"
      "Exit status, of the runs that are shown: 0; 1 when the last check of a file is neither 'offered' nor "
      "'none', or a file\nhas no check; 2 after wrong use, for a file or folder that cannot be read, and for "
      "a folder without a log.",
      "logcheck");
  Options options;
  std::vector<std::string> outcomes;
  for (const logcheck::OutcomeText& outcome : logcheck::Outcomes()) outcomes.emplace_back(outcome.name);
  app.add_flag("--json", options.json, "Write one JSON object for each run, one a line");
  app.add_flag("--summary", options.summary,
               "Count runs and files for each outcome and code, the newest first");
  app.add_flag("--last", options.last, "Only the last run of each file");
  app.add_option("--outcome", options.outcome, "Only runs whose last check has this outcome")
      ->check(CLI::IsMember(outcomes));
  app.add_option("--since", options.since, "Only runs that began on this day or later (2026-11-21)")
      ->check(CheckDate);
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
