#include "logcheck/guide.h"

#include "logcheck/texts.h"
#include "logcheck/verdict.h"
#include "text/text.h"

namespace logcheck {
namespace {

constexpr std::string_view kBeginning = R"md(# The log, text by text

<!-- Generated from the table in logcheck/: change that, then run ./dev log-guide. -->

Every run that makes a check adds to the newest file `QRT_15_SystemTavrel_….log` in
`C:\ProgramData\Varnexa\QRT15`. A file holds many runs, of all users of the computer. An entry is a line; an entry of
two lines is shown here as one. The misspelt words are part of the texts: search for them exactly as written.

`logcheck` reads such files and tells for each run what happened and what to do:

    logcheck QRT_15_SystemTavrel_21Nov2026_10_30_PM.log     every run of a log
    logcheck --summary D:\logs                              500 logs: which outcome, how often, since when, where
    logcheck --json D:\logs                                 a JSON object for each run, one per line

It also reads what the log page saves, and standard input (`-`). In a folder it reads all files `*.log` and `*.txt`,
those in sub-folders included, and passes over files that are no log of the utility. A file counts once, however often
and under whatever name it is given. `--last`, `--outcome NAME` and `--since DATE` choose runs: the last one of each
file, those whose last check has this outcome, those that began on this day or later. The exit status tells about the
runs that are shown: 0; 1 when the last check of a file is neither `offered` nor `none`, or a file has no check; 2 after
wrong use, for a file or folder that cannot be read (all others are read), and for a folder without a log.

## Which machines fail?

    logcheck --summary D:\logs                       what happened, how often, since when, on which machines
    logcheck --summary --last D:\logs                the same for the last run of each log: what fails now
    logcheck --last --outcome failed D:\logs         those runs, each with what to do

Each row of the summary shows the names of its first five files; with `--json` it has all of them. The machines that
fail because of 12007 (the name of the update host is not found), at any time and now, by
[jq](https://jqlang.org):

    logcheck --summary --json D:\logs | jq -r "select(.error == \"12007\").files[]"
    logcheck --summary --json --last D:\logs | jq -r "select(.error == \"12007\").files[]"

The runs of a fleet in a database of [SQLite](https://sqlite.org) 3.38 or later, and its answer to the same question:

    logcheck --json D:\logs > runs.jsonl
    sqlite3 runs.db ".read runs.sql"
    sqlite3 runs.db "SELECT file, max(time), count(*) FROM runs WHERE error = '12007' GROUP BY file"

`runs.sql` makes one JSON array of the lines, and a row of each of its elements:

    CREATE TABLE runs AS
      SELECT value->>'file' AS file, value->>'time' AS time, value->>'product' AS product,
             value->>'$.checks[#-1].outcome' AS outcome, value->>'$.checks[#-1].error' AS error
      FROM json_each('[' || replace(rtrim(readfile('runs.jsonl'), char(10)), char(10), ',') || ']');

## Outcomes

| outcome | means |
|---|---|
)md";

constexpr std::string_view kJson = R"(
An answer with an HTTP status other than 200 and 404 is `failed` unless a list came with it.

## JSON

`--json` writes these fields for each run. A field is `null` where the log does not tell.

| field | holds |
|---|---|
| `file` | the file's name as it was given; `-` for standard input |
| `time` | local time at which the run began, such as `2026-11-21T22:30` |
| `mode` | `start-up`: the product started it, for the start-up check; `interactive`: a user did |
| `utility`, `product` | versions of the utility and of the product's Qrt.exe |
| `administrator` | whether the run had an administrator's rights |
| `checks` | an object for each check, in their order |
| `unknown` | lines that no version of the utility writes, 1,000 at most |
| `unknown_lines` | the number of all of them |

| field of a check | holds |
|---|---|
| `outcome` | see above |
| `exit_code` | the number of `Exit code` in the log: 1, 2 or 3. After a failed exchange it means nothing |
| `error` | the code or message of the failure |
| `step` | the entry that names the step that failed |
| `advice` | a sentence: what it means and what to do |
| `notes` | a sentence for each error that did not decide the outcome |
| `entries` | all entries, from the end of the check before it, each with the code that follows it |

With `--summary` each object describes one outcome and error: `outcome`, `error`, `runs` (their number), `files` (all
names), the times `first` and `last`, and `advice`, an object that maps each sentence to its number of runs. A run counts
by its last check.
)";

/// A constant of the utility, all of which are ASCII.
std::string Span(std::wstring_view text) {
  std::string span = "`";
  for (const wchar_t c : text::Trim(text)) span += c == L'\n' ? ' ' : static_cast<char>(c);
  return span + "`";
}

std::string Cell(std::string_view clause) {
  return clause.empty() ? "" : Sentence(std::string(clause)) + " ";
}

}  // namespace

std::string Guide() {
  std::string guide(kBeginning);
  for (const OutcomeText& outcome : Outcomes()) {
    guide.append("| `").append(outcome.name).append("` | ").append(Cell(outcome.means)).append("|\n");
  }
  guide += kJson;
  for (const TextGroup& group : TextGroups()) {
    guide.append("\n## ").append(group.title).append("\n\n| entry | means | what to do |\n|---|---|---|\n");
    for (const Text& text : group.texts) {
      guide.append("| ").append(Span(text.text)).append(text.open_ended ? " …" : "").append(" | ");
      const bool asks_code = text.role == Role::exchange_failed || text.role == Role::odd_status;
      const std::string_view advice =
          text.advice.empty() && asks_code ? "see the code that follows" : text.advice;
      guide.append(Cell(text.means)).append("| ").append(Cell(advice));
      if (text.role == Role::value_missing) guide.append("After another code than 2: see that code. ");
      guide.append("|\n");
    }
  }
  for (const bool http : {false, true}) {
    guide +=
        http ? "\n## HTTP statuses\n\n| status | means | what to do |\n|---|---|---|\n"
             : "\n## Codes and messages after \"Error :\"\n\n"
               "`net helpmsg NUMBER` explains a number that is not listed here. Numbers from 12000 on are in "
               "Microsoft's list of WinINet error codes.\n\n| code | means | what to do |\n|---|---|---|\n";
    for (const Code& code : Codes()) {
      if (code.http != http) continue;
      guide.append("| `").append(code.code).append("` | ").append(Cell(code.means)).append("| ");
      guide.append(Cell(code.advice)).append("|\n");
    }
  }
  return guide;
}

}  // namespace logcheck
