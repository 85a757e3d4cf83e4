#include "logcheck/guide.h"

#include "logcheck/texts.h"
#include "logcheck/verdict.h"
#include "text/text.h"

namespace logcheck {
namespace {

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
  std::string guide = "\n## Outcomes\n\n| outcome | means |\n|---|---|\n";
  for (const OutcomeText& outcome : Outcomes()) {
    guide.append("| `").append(outcome.name).append("` | ").append(Cell(outcome.means)).append("|\n");
  }
  guide += "\nAn answer with an HTTP status other than 200 and 404 is `failed` unless a list came with it.\n";
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
