// Codes and messages after "Error : ", and HTTP statuses. Sources of the meanings: Microsoft's lists of
// system error codes and of WinINet error codes; RFC 9110 for the statuses.
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

constexpr Code kErrors[] = {
    // Windows' error codes.
    {"0", "Windows reported no error", kRestart},
    {"2", "the file, key or value does not exist",
     "find the program that removes the file, such as a virus scanner; installing " TAVREL_PRODUCT_LABEL
     " again brings a registry value back"},
    {"3", "the folder does not exist", "make the folder, or correct its path"},
    {"5", "access is denied",
     "let an administrator give the user the rights on the file or registry key; a virus scanner or "
     "Controlled Folder Access can be the cause"},
    {"8", "there is too little memory", kRestart},
    {"14", "there is too little memory", kRestart},
    {"19", "the disk is write-protected", "remove the write protection"},
    {"32", "another program holds the file", kHolder},
    {"33", "another program has locked a part of the file", kHolder},
    {"87", "a parameter is wrong",
     "check UPDATE_LOC in the user's korsa.ini and URLUpdateInfo of the product; if both are right, restart "
     "Windows"},
    {"112", "the disk is full", "make space on the disk"},
    {"122", "a buffer is too small", kAgain},
    {"123", "the name of a file or folder is malformed", kTemp},
    {"206", "the path is too long", kTemp},
    {"223", "the file is larger than the utility reads: 32 MiB for the list, 1 MiB for korsa.ini",
     "tell the publisher if it is the list; replace korsa.ini beside the program if it is that"},
    {"225", "a virus scanner refuses the file", "look into the virus scanner's log"},
    {"234", "the value is longer than 127 characters",
     "install the product into a folder with a shorter path; if the value is URLUpdateInfo, tell the "
     "publisher"},
    {"1018", "the registry key is being deleted", kRestart},
    {"1117", "the disk reports an input or output error", "check the disk"},
    {"1392", "the file or folder is damaged", "check the disk"},
    {"1450", "Windows lacks resources", kRestart},
    {"2250", "there is no network connection",
     "check that the computer is online; IGNORE_PATCH_ERROR does not silence this code"},
    {"10054", "the connection was reset", kAgain},
    {"10060", "the connection timed out", kAgain},

    // WinINet's error codes.
    {"12001", "no more internet handles can be made", kRestart},
    {"12002", "the answer took too long, or the server sent more than ten redirections",
     "check the update server and the line; the utility waits TIMEOUT seconds (korsa.ini) for each part of "
     "the answer, and 5 minutes for all of it"},
    {"12004", "an internal error of Windows' internet functions", kRestart},
    {"12005", "the address is malformed",
     "check UPDATE_LOC in the user's korsa.ini, and that the update server sends no redirection"},
    {"12006", "a redirection leads to an address of an unknown kind", kNoRedirection},
    {"12007", "the name of the host could not be resolved",
     "check the name service (DNS) and UPDATE_LOC in the user's korsa.ini"},
    {"12017", "the operation was cancelled", kAgain},
    {"12026", "an earlier request is still running", kAgain},
    {"12027", "the format of the request is invalid", "check URLUpdateInfo of the product"},
    {"12029", "the connection was refused, or nothing answers", kServerUp},
    {"12030", "the connection was ended from the other side", kAgain},
    {"12031", "the connection was reset", kAgain},
    {"12037", "the certificate of a secure server is out of date", kNoRedirection},
    {"12038", "the certificate of a secure server is for another name", kNoRedirection},
    {"12039", "a redirection leads from HTTP to HTTPS", kNoRedirection},
    {"12040", "a redirection leads from HTTPS to HTTP", kNoRedirection},
    {"12045", "the certificate of a secure server has an unknown issuer", kNoRedirection},
    {"12150", "the answer lacks a header that was asked for", kAgain},
    {"12152", "the answer is not HTTP",
     "check what answers at the update host on port 80; it is no web server"},
    {"12153", "a header of the answer is invalid", kAgain},
    {"12156", "a redirection failed", kNoRedirection},
    {"12157", "a secure connection could not be made", kNoRedirection},
    {"12163", "the connection to the internet was lost", "check the network"},
    {"12164", "the server cannot be reached", kServerUp},
    {"12168", "a redirection needs the user's consent", kNoRedirection},
    {"12175", "a secure connection failed", kNoRedirection},
};

constexpr Code kStatuses[] = {
    {"0", "no status", kAgain},
    {"400", "the server calls the request malformed", kPublisher},
    {"401", "the server wants the client to sign in", kPublisher},
    {"403", "the server refuses the list", kPublisher},
    {"404", "nothing is at the address of the list", kPublisher},
    {"407", "a proxy wants the client to sign in", kProxy},
    {"408", "the server waited too long for the request", kAgain},
    {"429", "the server gets too many requests", kAgain},
    {"500", "an error within the server", kPublisher},
    {"502", "a gateway got no valid answer from the server", kAgain},
    {"503", "the server is overloaded or being serviced", kAgain},
    {"504", "a gateway got no answer from the server in time", kAgain},
    {"511", "the network wants the user to sign in first", kProxy},
};

/// The first digit of a status.
constexpr Code kStatusClasses[] = {
    {"2", "a success without the list", kPublisher},
    {"3", "the list has moved elsewhere", kPublisher},
    {"4", "the server refuses the request", kPublisher},
    {"5", "the server is in trouble", kAgain},
};

}  // namespace

std::span<const Code> Codes(bool http) {
  return http ? std::span<const Code>(kStatuses) : kErrors;
}

Code FindCode(std::string_view code, bool http) {
  for (const Code& known : Codes(http)) {
    if (known.code == code) return known;
  }
  for (const Code& known : kStatusClasses) {
    if (http && code.size() == 3 && code.starts_with(known.code)) return known;
  }
  if (http) return {code, "no status that HTTP knows", "check what answers at the update host on port 80"};
  if (code.size() == 5 && code.starts_with("12")) {
    return {code, "an error of Windows' internet functions",
            "look it up in Microsoft's list of WinINet error codes"};
  }
  return {code, "an error code of Windows", "look it up: net helpmsg and the number, in a command prompt"};
}

}  // namespace logcheck
