// Codes and messages after "Error : ", and HTTP statuses. Sources of the meanings: Microsoft's lists of
// system error codes and of WinINet error codes; RFC 9110 for the statuses.
#include <algorithm>

#include "logcheck/texts.h"
#include "version.h"

namespace logcheck {
namespace {

constexpr std::string_view kServerUp =
    "check that the update server runs and that the firewall lets QRTTavrelUtility.exe reach it on port 80";
constexpr std::string_view kAgain =
    "check again later; if it happens again, check the update server and any gateway in front of it";
constexpr std::string_view kHolder =
    "find that program, such as a virus scanner or a synchronisation program, and check again";
constexpr std::string_view kNoRedirection =
    "let the update server send the list itself over plain HTTP, without a redirection";
constexpr std::string_view kRestart = "restart Windows and check again";
constexpr std::string_view kTemp = "check the paths of the user's %TEMP% and Documents folders";
constexpr std::string_view kProxy =
    "let the proxy or portal pass the update host without signing in, or switch the checks off";
constexpr std::string_view kPublisher =
    "open the address in URLUpdateInfo with a browser; if it shows no list either, tell the publisher";

constexpr Code kCodes[] = {
    // Windows' error codes.
    {.code = "0", .means = "Windows reported no error", .advice = kRestart},
    {.code = "2",
     .means = "the file, key or value does not exist",
     .advice =
         "find the program that removes the file, such as a virus scanner; installing " TAVREL_PRODUCT_LABEL
         " again brings a registry value back"},
    {.code = "3", .means = "the folder does not exist", .advice = "make the folder, or correct its path"},
    {.code = "5",
     .means = "access is denied",
     .advice = "let an administrator give the user the rights on the file or registry key; a virus scanner "
               "or Controlled Folder Access can be the cause"},
    {.code = "8", .means = "there is too little memory", .advice = kRestart},
    {.code = "14", .means = "there is too little memory", .advice = kRestart},
    {.code = "19", .means = "the disk is write-protected", .advice = "remove the write protection"},
    {.code = "32", .means = "another program holds the file", .advice = kHolder},
    {.code = "33", .means = "another program has locked a part of the file", .advice = kHolder},
    {.code = "87",
     .means = "a parameter is wrong",
     .advice = "check UPDATE_LOC in the user's korsa.ini and URLUpdateInfo of the product; if both are "
               "right, restart Windows"},
    {.code = "112", .means = "the disk is full", .advice = "make space on the disk"},
    {.code = "122", .means = "a buffer is too small", .advice = kAgain},
    {.code = "123", .means = "the name of a file or folder is malformed", .advice = kTemp},
    {.code = "206", .means = "the path is too long", .advice = kTemp},
    {.code = "223",
     .means = "the file is larger than the utility reads: 32 MiB for the list, 1 MiB for korsa.ini",
     .advice = "tell the publisher if it is the list; replace korsa.ini beside the program if it is that"},
    {.code = "225",
     .means = "a virus scanner refuses the file",
     .advice = "look into the virus scanner's log"},
    {.code = "234",
     .means = "the value is longer than 127 characters",
     .advice = "install the product into a folder with a shorter path; if the value is URLUpdateInfo, tell "
               "the publisher"},
    {.code = "1018", .means = "the registry key is being deleted", .advice = kRestart},
    {.code = "1117", .means = "the disk reports an input or output error", .advice = "check the disk"},
    {.code = "1392", .means = "the file or folder is damaged", .advice = "check the disk"},
    {.code = "1450", .means = "Windows lacks resources", .advice = kRestart},
    {.code = "2250",
     .means = "there is no network connection",
     .advice = "check that the computer is online; IGNORE_PATCH_ERROR does not silence this code"},
    {.code = "10054", .means = "the connection was reset", .advice = kAgain},
    {.code = "10060", .means = "the connection timed out", .advice = kAgain},

    // WinINet's error codes.
    {.code = "12001", .means = "no more internet handles can be made", .advice = kRestart},
    {.code = "12002",
     .means = "the answer took too long",
     .advice = "check the update server and the line; the utility waits TIMEOUT seconds (korsa.ini) for each "
               "part of the answer, and 5 minutes for the whole list"},
    {.code = "12004", .means = "an internal error of Windows' internet functions", .advice = kRestart},
    {.code = "12005",
     .means = "the address is malformed",
     .advice = "check UPDATE_LOC in the user's korsa.ini, and that the update server sends no redirection"},
    {.code = "12006",
     .means = "a redirection leads to an address of an unknown kind",
     .advice = kNoRedirection},
    {.code = "12007",
     .means = "the name of the host could not be resolved",
     .advice = "check the name service (DNS) and UPDATE_LOC in the user's korsa.ini"},
    {.code = "12017", .means = "the operation was cancelled", .advice = kAgain},
    {.code = "12026", .means = "an earlier request is still running", .advice = kAgain},
    {.code = "12027",
     .means = "the format of the request is invalid",
     .advice = "check URLUpdateInfo of the product"},
    {.code = "12029", .means = "the connection was refused, or nothing answers", .advice = kServerUp},
    {.code = "12030", .means = "the connection was ended from the other side", .advice = kAgain},
    {.code = "12031", .means = "the connection was reset", .advice = kAgain},
    {.code = "12037", .means = "the certificate of a secure server is out of date", .advice = kNoRedirection},
    {.code = "12038",
     .means = "the certificate of a secure server is for another name",
     .advice = kNoRedirection},
    {.code = "12039", .means = "a redirection leads from HTTP to HTTPS", .advice = kNoRedirection},
    {.code = "12040", .means = "a redirection leads from HTTPS to HTTP", .advice = kNoRedirection},
    {.code = "12045",
     .means = "the certificate of a secure server has an unknown issuer",
     .advice = kNoRedirection},
    {.code = "12150", .means = "the answer lacks a header that was asked for", .advice = kAgain},
    {.code = "12152",
     .means = "the answer is not HTTP",
     .advice = "check what answers at the update host on port 80; it is no web server"},
    {.code = "12153", .means = "a header of the answer is invalid", .advice = kAgain},
    {.code = "12156", .means = "a redirection failed", .advice = kNoRedirection},
    {.code = "12157", .means = "a secure connection could not be made", .advice = kNoRedirection},
    {.code = "12163", .means = "the connection to the internet was lost", .advice = "check the network"},
    {.code = "12164", .means = "the server cannot be reached", .advice = kServerUp},
    {.code = "12168", .means = "a redirection needs the user's consent", .advice = kNoRedirection},
    {.code = "12175", .means = "a secure connection failed", .advice = kNoRedirection},

    // HTTP statuses.
    {.code = "0", .http = true, .means = "no status", .advice = kAgain},
    {.code = "400", .http = true, .means = "the server calls the request malformed", .advice = kPublisher},
    {.code = "401", .http = true, .means = "the server wants the client to sign in", .advice = kPublisher},
    {.code = "403", .http = true, .means = "the server refuses the list", .advice = kPublisher},
    {.code = "404", .http = true, .means = "nothing is at the address of the list", .advice = kPublisher},
    {.code = "407", .http = true, .means = "a proxy wants the client to sign in", .advice = kProxy},
    {.code = "408", .http = true, .means = "the server waited too long for the request", .advice = kAgain},
    {.code = "429", .http = true, .means = "the server gets too many requests", .advice = kAgain},
    {.code = "500", .http = true, .means = "an error within the server", .advice = kPublisher},
    {.code = "502", .http = true, .means = "a gateway got no valid answer from the server", .advice = kAgain},
    {.code = "503", .http = true, .means = "the server is overloaded or being serviced", .advice = kAgain},
    {.code = "504",
     .http = true,
     .means = "a gateway got no answer from the server in time",
     .advice = kAgain},
    {.code = "511", .http = true, .means = "the network wants the user to sign in first", .advice = kProxy},
};

/// The meaning of a status's first digit.
Code ClassOfStatus(std::string_view code) {
  const auto status = [&](std::string_view means, std::string_view advice) {
    return Code{.code = code, .http = true, .means = means, .advice = advice};
  };
  switch (code.size() == 3 ? code.front() : ' ') {
    case '2':
      return status("a success without the list", kPublisher);
    case '3':
      return status("the list has moved elsewhere", kPublisher);
    case '4':
      return status("the server refuses the request", kPublisher);
    case '5':
      return status("the server is in trouble", kAgain);
    default:
      return status("no status that HTTP knows", "check what answers at the update host on port 80");
  }
}

}  // namespace

std::span<const Code> Codes() {
  return kCodes;
}

Code FindCode(std::string_view code, bool http) {
  const auto found = std::find_if(std::begin(kCodes), std::end(kCodes), [&](const Code& known) {
    return known.code == code && known.http == http;
  });
  if (found != std::end(kCodes)) return *found;
  if (http) return ClassOfStatus(code);
  if (code.size() == 5 && code.starts_with("12")) {
    return {.code = code,
            .means = "an error of Windows' internet functions",
            .advice = "look it up in Microsoft's list of WinINet error codes"};
  }
  return {.code = code,
          .means = "an error code of Windows",
          .advice = "look it up: net helpmsg and the number, in a command prompt"};
}

}  // namespace logcheck
