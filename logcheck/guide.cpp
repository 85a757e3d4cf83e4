#include "logcheck/guide.h"

#include "logcheck/texts.h"
#include "logcheck/verdict.h"
#include "text/text.h"

namespace logcheck {
namespace {

constexpr std::string_view kBeginning = R"(# The log, text by text

This file is generated from the table in `logcheck/`: change that, then run `./dev log-guide`.

Every run that makes a check adds to the newest file `QRT_15_SystemTavrel_….log` in
`C:\ProgramData\Varnexa\QRT15`. A file holds many runs, of all users of the computer. An entry is a line; an entry of
two lines is shown here as one. The misspelt words are part of the texts: search for them exactly as written.

`logcheck` reads such files and tells for each run what happened and what to do:

    logcheck QRT_15_SystemTavrel_21Nov2026_10_30_PM.log     every run of a log
    logcheck --summary D:\logs                              500 logs: which outcome, how often, since when
    logcheck --json D:\logs                                 a JSON object for each run, one per line

It also reads what the log page saves, and standard input (`-`). In a folder it reads all files `*.log` and `*.txt`,
those in sub-folders included. The exit status is 0; 1 when the last check of a file has another outcome than `offered`
and `none`, or a file has no check; 2 after wrong use or for a file that cannot be read.

## Outcomes

| outcome | means |
|---|---|
)";

constexpr std::string_view kJson = R"(
An answer with an HTTP status other than 200 and 404 is `failed` unless a list came with it.

## JSON

`--json` writes these fields for each run. A field is `null` where the log does not tell.

| field | holds |
|---|---|
| `file` | the file's name as it was given; `-` for standard input |
| `time` | local time at which the run began, such as `2026-11-21T22:30` |
| `mode` | `regular`: started by a user; `patch`: started by the product |
| `utility`, `product` | versions of the utility and of the product's Qrt.exe |
| `administrator` | whether the run had an administrator's rights |
| `checks` | an object for each check, in their order |
| `unknown` | lines that no version of the utility writes |

| field of a check | holds |
|---|---|
| `outcome` | see above |
| `exit_code` | the number of `Exit code` in the log: 1, 2 or 3. After a failed exchange it means nothing |
| `error` | the code or message of the failure |
| `step` | the entry that names the step that failed |
| `advice` | a sentence: what it means and what to do |
| `entries` | all entries, from the end of the check before it |

With `--summary` each object describes one outcome: `outcome`, `error`, `runs`, `files`, the times `first` and
`last`, and `advice`, an object that maps each sentence to its number of runs. A run counts by its last check.
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
