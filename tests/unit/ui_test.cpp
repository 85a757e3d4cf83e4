#include "ui/launch_parameters.h"
#include "ui/page_state.h"
#include "unit.h"

namespace {

// Written out, not taken from the product: what a person reads is compared to the byte.
const std::wstring kOffer =
    L" Varnexa 15.0 patch updates are available on our server."
    L"Click \"Install Updates\" button to initiate the update  process. ";
const std::wstring kServerTried =
    L" Varnexa has tried to connect to the update server for the auto-update feature.\n";
const std::wstring kNoList = kServerTried +
                             L" Unable to collect the update information from the server.\n"
                             L" Please click \"Retry\" button to attempt again.\n";
const std::wstring kNoServer = kServerTried +
                               L" The attempt to connect to the server failed."
                               L" Please click \"Retry\" button to attempt again.\n";
const std::wstring kNothing = L" No new patches available on our server.";
const std::wstring kMissing = L" Varnexa 15.0 application is not installed in this machine.";

// The input's letters: i, product installed; f and x, the sheet's check found and failed; F and X, the page's
// did. Behind the bar stands the code of the error texts that both checks left. The result: which text, then
// the first letters of the buttons that can be pressed: Install, Retry, Continue.
std::wstring Page(bool interactive, std::wstring_view in) {
  const std::vector<std::wstring> parts = Split(in);
  const auto has = [&parts](wchar_t flag) { return parts[0].find(flag) != std::wstring::npos; };
  const std::wstring sheet = parts[1].empty() ? L"" : L" Error : " + parts[1] + L" (sheet)";
  const std::wstring page = parts[1].empty() ? L"" : L" Error : " + parts[1] + L" (page)";
  const std::wstring& detail = interactive ? sheet : page;
  const PageState state =
      DecidePageState({interactive, has('i'), has('f'), has('x'), sheet, has('X'), page, has('F')});
  std::wstring result = state.text;
  if (state.text == kOffer) result = L"offer ";
  if (state.text == kNothing) result = L"nothing ";
  if (state.text == kMissing) result = L"missing ";
  if (state.text == kNoList + detail) result = L"no list ";
  if (state.text == kNoServer + detail) result = L"no server ";
  if (state.install_enabled) result += L'I';
  if (state.retry_enabled) result += L'R';
  if (state.continue_offered) result += L'C';
  return result;
}

}  // namespace

TEST_CASE("the page of the regular mode tells of another result than its check's") {
  CheckRows({L"i| => nothing ", L"if| => offer I", L"ifx|12007 => offer I", L"ix|12007 => no server R",
             L"ix|404 => no list R", L"ix|14045 => no list R", L"ix| => nothing ", L"i|12007 => nothing ",
             L"iF| => nothing ", L"iX|12007 => nothing ", L"| => missing ", L"f| => missing ",
             L"x|404 => missing "},
            [](std::wstring_view in) { return Page(true, in); });
}

TEST_CASE("the page of patch verification forgets a found update or hides a failure") {
  CheckRows({L"i| => nothing ", L"if| => offer IC", L"ifX|12007 => offer IC", L"ix|12007 => nothing ",
             L"iF| => offer IC", L"iF|12007 => offer IC", L"i|12007 => nothing ", L"iX|12007 => no server R",
             L"iX|404 => no list R", L"iFX|12007 => no server R", L"iX| => nothing ", L"iFX| => ",
             L"| => missing ", L"F| => missing C", L"f| => missing C", L"X|12007 => missing "},
            [](std::wstring_view in) { return Page(false, in); });
}

TEST_CASE("the installer's file name is quoted by itself, or its switch stands outside the quotes") {
  CheckRows({L"Qrt.exe => /c \"Qrt.exe /update\"", L"My Qrt.exe => /c \"My Qrt.exe /update\""},
            LaunchParameters);
}
