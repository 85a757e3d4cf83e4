// Codes and messages after "Error : ", and HTTP statuses. Sources of the meanings: Microsoft's lists of
// system error codes and of WinINet error codes; RFC 9110 for the statuses.
#include <algorithm>

#include "logcheck/texts.h"
#include "text/text.h"
#include "update/update_texts.h"

namespace logcheck {
namespace {

constexpr std::string_view kServerUp =
    "check that the update server runs and that the firewall lets QRTTavrelUtility.exe reach it on port 80";
constexpr std::string_view kAgain =
    "check again later; if it happens again, check the update server and any gateway in front of it";
constexpr std::string_view kRights = "check the rights of the user on the file or registry key";
constexpr std::string_view kRestart = "restart Windows and check again";
constexpr std::string_view kTemp = "check the user's %TEMP%";
constexpr std::string_view kProxy =
    "let the proxy or portal pass the update host without signing in, or switch the checks off";
constexpr std::string_view kPublisher =
    "open the address in URLUpdateInfo with a browser; if it shows no list either, tell the publisher";

constexpr Code kCodes[] = {
    {.code = update_texts::kMismatch,
     .means = "the settings and the product's URLUpdateInfo do not fit together, so no server was asked",
     .advice = "look at the entries above it"},

    // Windows' error codes.
    {.code = L"0", .means = "Windows reported no error", .advice = kRestart},
    {.code = L"2", .means = "the file, key or value does not exist", .advice = "look at the entry above it"},
    {.code = L"3", .means = "the folder does not exist", .advice = "make the folder, or correct its path"},
    {.code = L"5",
     .means = "access is denied",
     .advice = "check the rights of the user; a virus scanner or Controlled Folder Access can be the cause"},
    {.code = L"8", .means = "there is too little memory", .advice = kRestart},
    {.code = L"14", .means = "there is too little memory", .advice = kRestart},
    {.code = L"19", .means = "the disk is write-protected", .advice = kRights},
    {.code = L"32",
     .means = "another program holds the file",
     .advice = "find that program, such as a virus scanner or a synchronisation program, and check again"},
    {.code = L"33", .means = "another program has locked a part of the file", .advice = "find that program"},
    {.code = L"87",
     .means = "a parameter is wrong",
     .advice = "check UPDATE_LOC and TIMEOUT in the user's korsa.ini"},
    {.code = L"112", .means = "the disk is full", .advice = "make space on the disk"},
    {.code = L"122", .means = "a buffer is too small", .advice = kAgain},
    {.code = L"123", .means = "the name of a file or folder is malformed", .advice = kTemp},
    {.code = L"206", .means = "the path is too long", .advice = kTemp},
    {.code = L"223",
     .means = "the list is larger than 32 MiB, the most that the utility reads",
     .advice = "tell the publisher"},
    {.code = L"225",
     .means = "a virus scanner refuses the file",
     .advice = "look into the virus scanner's log"},
    {.code = L"234",
     .means = "the value is longer than 127 characters",
     .advice = "install Varnexa 15.0 again"},
    {.code = L"1018", .means = "the registry key is being deleted", .advice = kRestart},
    {.code = L"1117", .means = "the disk reports an input or output error", .advice = "check the disk"},
    {.code = L"1392", .means = "the file or folder is damaged", .advice = "check the disk"},
    {.code = L"1450", .means = "Windows lacks resources", .advice = kRestart},
    {.code = L"2250",
     .means = "there is no network connection",
     .advice = "check that the computer is online; IGNORE_PATCH_ERROR does not silence this code"},
    {.code = L"10054", .means = "the connection was reset", .advice = kAgain},
    {.code = L"10060", .means = "the connection timed out", .advice = kAgain},

    // WinINet's error codes.
    {.code = L"12001", .means = "no more internet handles can be made", .advice = kRestart},
    {.code = L"12002",
     .means = "the answer took too long",
     .advice =
         "check the update server and the line; TIMEOUT in korsa.ini is how many seconds the utility waits"},
    {.code = L"12004", .means = "an internal error of Windows' internet functions", .advice = kRestart},
    {.code = L"12005",
     .means = "the address is malformed",
     .advice = "check UPDATE_LOC in the user's korsa.ini"},
    {.code = L"12006",
     .means = "the address is of an unknown kind",
     .advice = "check URLUpdateInfo of the product"},
    {.code = L"12007",
     .means = "the name of the host could not be resolved",
     .advice = "check the name service (DNS) and UPDATE_LOC in the user's korsa.ini"},
    {.code = L"12017", .means = "the operation was cancelled", .advice = kAgain},
    {.code = L"12026", .means = "an earlier request is still running", .advice = kAgain},
    {.code = L"12027",
     .means = "the format of the request is invalid",
     .advice = "check URLUpdateInfo of the product"},
    {.code = L"12029", .means = "the connection was refused, or nothing answers", .advice = kServerUp},
    {.code = L"12030", .means = "the connection was ended from the other side", .advice = kAgain},
    {.code = L"12031", .means = "the connection was reset", .advice = kAgain},
    {.code = L"12150", .means = "a header that was asked for is missing in the answer", .advice = kAgain},
    {.code = L"12152",
     .means = "the answer is not HTTP",
     .advice = "check what answers at the update host on port 80; it is no web server"},
    {.code = L"12153", .means = "a header of the answer is invalid", .advice = kAgain},
    {.code = L"12156",
     .means = "a redirection failed",
     .advice = "let the update server send the list itself"},
    {.code = L"12157",
     .means = "a secure connection could not be made",
     .advice = "let the update server send the list over plain HTTP, without a redirection"},
    {.code = L"12163", .means = "the connection to the internet was lost", .advice = "check the network"},
    {.code = L"12164", .means = "the server cannot be reached", .advice = kServerUp},

    // HTTP statuses.
    {.code = L"0", .http = true, .means = "no status", .advice = kAgain},
    {.code = L"400", .http = true, .means = "the server calls the request malformed", .advice = kPublisher},
    {.code = L"401", .http = true, .means = "the server wants the client to sign in", .advice = kPublisher},
    {.code = L"403", .http = true, .means = "the server refuses the list", .advice = kPublisher},
    {.code = L"404", .http = true, .means = "nothing is at the address of the list", .advice = kPublisher},
    {.code = L"407", .http = true, .means = "a proxy wants the client to sign in", .advice = kProxy},
    {.code = L"408", .http = true, .means = "the server waited too long for the request", .advice = kAgain},
    {.code = L"429", .http = true, .means = "the server gets too many requests", .advice = kAgain},
    {.code = L"500", .http = true, .means = "an error within the server", .advice = kPublisher},
    {.code = L"502",
     .http = true,
     .means = "a gateway got no valid answer from the server",
     .advice = kAgain},
    {.code = L"503", .http = true, .means = "the server is overloaded or being serviced", .advice = kAgain},
    {.code = L"504",
     .http = true,
     .means = "a gateway got no answer from the server in time",
     .advice = kAgain},
    {.code = L"511", .http = true, .means = "the network wants the user to sign in first", .advice = kProxy},
};

/// The meaning of a status's first digit.
Code ClassOfStatus(std::wstring_view code) {
  const auto status = [&](std::string_view means, std::string_view advice) {
    return Code{.code = code, .http = true, .means = means, .advice = advice};
  };
  switch (code.size() == 3 ? code.front() : L' ') {
    case L'2':
      return status("a success without the list", kPublisher);
    case L'3':
      return status("the list has moved elsewhere", kPublisher);
    case L'4':
      return status("the server refuses the request", kPublisher);
    case L'5':
      return status("the server is in trouble", kAgain);
    default:
      return status("no status that HTTP knows", "check what answers at the update host on port 80");
  }
}

}  // namespace

std::span<const Code> Codes() {
  return kCodes;
}

Code FindCode(std::wstring_view code, bool http) {
  const auto found = std::find_if(std::begin(kCodes), std::end(kCodes), [&](const Code& known) {
    return known.code == code && known.http == http;
  });
  if (found != std::end(kCodes)) return *found;
  if (http) return ClassOfStatus(code);
  constexpr std::int32_t kWinInetFirst = 12000, kWinInetLast = 12175;
  const std::int32_t number = text::ParseDecimal(code);
  if (number >= kWinInetFirst && number <= kWinInetLast) {
    return {.code = code,
            .means = "an error of Windows' internet functions",
            .advice = "look it up in Microsoft's list of WinINet error codes"};
  }
  return {.code = code,
          .means = "an error code of Windows",
          .advice = "look it up: net helpmsg and the number, in a command prompt"};
}

}  // namespace logcheck
