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

constexpr Code Error(std::string_view code, std::string_view means, std::string_view advice) {
  return {.code = code, .means = means, .advice = advice};
}

constexpr Code Status(std::string_view code, std::string_view means, std::string_view advice) {
  return {.code = code, .http = true, .means = means, .advice = advice};
}

constexpr Code kCodes[] = {
    // Windows' error codes.
    Error("0", "Windows reported no error", kRestart),
    Error("2", "the file, key or value does not exist",
          "find the program that removes the file, such as a virus scanner; installing " TAVREL_PRODUCT_LABEL
          " again brings a registry value back"),
    Error("3", "the folder does not exist", "make the folder, or correct its path"),
    Error("5", "access is denied",
          "let an administrator give the user the rights on the file or registry key; a virus scanner or "
          "Controlled Folder Access can be the cause"),
    Error("8", "there is too little memory", kRestart),
    Error("14", "there is too little memory", kRestart),
    Error("19", "the disk is write-protected", "remove the write protection"),
    Error("32", "another program holds the file", kHolder),
    Error("33", "another program has locked a part of the file", kHolder),
    Error("87", "a parameter is wrong",
          "check UPDATE_LOC in the user's korsa.ini and URLUpdateInfo of the product; if both are right, "
          "restart Windows"),
    Error("112", "the disk is full", "make space on the disk"),
    Error("122", "a buffer is too small", kAgain),
    Error("123", "the name of a file or folder is malformed", kTemp),
    Error("206", "the path is too long", kTemp),
    Error("223", "the file is larger than the utility reads: 32 MiB for the list, 1 MiB for korsa.ini",
          "tell the publisher if it is the list; replace korsa.ini beside the program if it is that"),
    Error("225", "a virus scanner refuses the file", "look into the virus scanner's log"),
    Error("234", "the value is longer than 127 characters",
          "install the product into a folder with a shorter path; if the value is URLUpdateInfo, tell the "
          "publisher"),
    Error("1018", "the registry key is being deleted", kRestart),
    Error("1117", "the disk reports an input or output error", "check the disk"),
    Error("1392", "the file or folder is damaged", "check the disk"),
    Error("1450", "Windows lacks resources", kRestart),
    Error("2250", "there is no network connection",
          "check that the computer is online; IGNORE_PATCH_ERROR does not silence this code"),
    Error("10054", "the connection was reset", kAgain),
    Error("10060", "the connection timed out", kAgain),

    // WinINet's error codes.
    Error("12001", "no more internet handles can be made", kRestart),
    Error("12002", "the answer took too long, or the server sent more than ten redirections",
          "check the update server and the line; the utility waits TIMEOUT seconds (korsa.ini) for each part "
          "of the answer, and 5 minutes for all of it"),
    Error("12004", "an internal error of Windows' internet functions", kRestart),
    Error("12005", "the address is malformed",
          "check UPDATE_LOC in the user's korsa.ini, and that the update server sends no redirection"),
    Error("12006", "a redirection leads to an address of an unknown kind", kNoRedirection),
    Error("12007", "the name of the host could not be resolved",
          "check the name service (DNS) and UPDATE_LOC in the user's korsa.ini"),
    Error("12017", "the operation was cancelled", kAgain),
    Error("12026", "an earlier request is still running", kAgain),
    Error("12027", "the format of the request is invalid", "check URLUpdateInfo of the product"),
    Error("12029", "the connection was refused, or nothing answers", kServerUp),
    Error("12030", "the connection was ended from the other side", kAgain),
    Error("12031", "the connection was reset", kAgain),
    Error("12037", "the certificate of a secure server is out of date", kNoRedirection),
    Error("12038", "the certificate of a secure server is for another name", kNoRedirection),
    Error("12039", "a redirection leads from HTTP to HTTPS", kNoRedirection),
    Error("12040", "a redirection leads from HTTPS to HTTP", kNoRedirection),
    Error("12045", "the certificate of a secure server has an unknown issuer", kNoRedirection),
    Error("12150", "the answer lacks a header that was asked for", kAgain),
    Error("12152", "the answer is not HTTP",
          "check what answers at the update host on port 80; it is no web server"),
    Error("12153", "a header of the answer is invalid", kAgain),
    Error("12156", "a redirection failed", kNoRedirection),
    Error("12157", "a secure connection could not be made", kNoRedirection),
    Error("12163", "the connection to the internet was lost", "check the network"),
    Error("12164", "the server cannot be reached", kServerUp),
    Error("12168", "a redirection needs the user's consent", kNoRedirection),
    Error("12175", "a secure connection failed", kNoRedirection),

    // HTTP statuses.
    Status("0", "no status", kAgain),
    Status("400", "the server calls the request malformed", kPublisher),
    Status("401", "the server wants the client to sign in", kPublisher),
    Status("403", "the server refuses the list", kPublisher),
    Status("404", "nothing is at the address of the list", kPublisher),
    Status("407", "a proxy wants the client to sign in", kProxy),
    Status("408", "the server waited too long for the request", kAgain),
    Status("429", "the server gets too many requests", kAgain),
    Status("500", "an error within the server", kPublisher),
    Status("502", "a gateway got no valid answer from the server", kAgain),
    Status("503", "the server is overloaded or being serviced", kAgain),
    Status("504", "a gateway got no answer from the server in time", kAgain),
    Status("511", "the network wants the user to sign in first", kProxy),
};

/// The meaning of a status's first digit.
Code ClassOfStatus(std::string_view code) {
  switch (code.size() == 3 ? code.front() : ' ') {
    case '2':
      return Status(code, "a success without the list", kPublisher);
    case '3':
      return Status(code, "the list has moved elsewhere", kPublisher);
    case '4':
      return Status(code, "the server refuses the request", kPublisher);
    case '5':
      return Status(code, "the server is in trouble", kAgain);
    default:
      return Status(code, "no status that HTTP knows", "check what answers at the update host on port 80");
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
  const bool internet = code.size() == 5 && code.starts_with("12");
  return internet ? Error(code, "an error of Windows' internet functions",
                          "look it up in Microsoft's list of WinINet error codes")
                  : Error(code, "an error code of Windows",
                          "look it up: net helpmsg and the number, in a command prompt");
}

}  // namespace logcheck
