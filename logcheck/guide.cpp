#include <algorithm>
#include <sstream>

#include "logcheck/output.h"
#include "logcheck/texts.h"

namespace logcheck {
namespace {

constexpr char kColumns[] = " | means | what to do |\n|---|---|---|\n";

std::string Cell(std::string_view clause) {
  return clause.empty() ? "" : Sentence(std::string(clause)) + " ";
}

}  // namespace

std::string Guide() {
  std::ostringstream guide;
  guide << "\n## Outcomes\n\n| outcome | means |\n|---|---|\n";
  for (const OutcomeText& outcome : Outcomes())
    guide << "| `" << outcome.name << "` | " << Cell(outcome.means) << "|\n";
  guide << "\nAn answer with an HTTP status other than 200 and 404 is `failed` unless a list came with it.\n";
  for (const TextGroup& group : TextGroups()) {
    guide << "\n## " << group.title << "\n\n| entry" << kColumns;
    for (const Text& text : group.texts) {
      std::string entry = Narrow(text.text);
      std::replace(entry.begin(), entry.end(), '\n', ' ');
      const bool asks_code = text.role == Role::exchange_failed || text.role == Role::odd_status;
      guide << "| `" << entry << "`" << (text.open_ended ? " …" : "") << " | " << Cell(text.means) << "| "
            << Cell(text.advice.empty() && asks_code ? "see the code that follows" : text.advice)
            << (text.role == Role::value_missing ? "After another code than 2: see that code. |\n" : "|\n");
    }
  }
  for (const bool http : {false, true}) {
    guide << (http ? "\n## HTTP statuses\n\n| status"
                   : "\n## Codes and messages after \"Error :\"\n\n"
                     "`net helpmsg NUMBER` explains a number that is not listed here. Numbers from 12000 on "
                     "are in Microsoft's list of WinINet error codes.\n\n| code")
          << kColumns;
    for (const Code& code : Codes(http))
      guide << "| `" << code.code << "` | " << Cell(code.means) << "| " << Cell(code.advice) << "|\n";
  }
  return guide.str();
}

}  // namespace logcheck
