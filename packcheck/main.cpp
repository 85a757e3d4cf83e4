// packcheck: what clients make of a list of updates, told before it is published.
#include <exception>
#include <filesystem>
#include <iostream>
#include <optional>
#include <string>
#include <vector>

#include "packcheck/input.h"
#include "packcheck/output.h"
#include "packcheck/report.h"
#include "update/record_text.h"
#include "update/section_names.h"
#include "version.h"

namespace {

using Path = std::filesystem::path;

enum Status { clean = 0, warned = 1, failed = 2 };

constexpr char kUsage[] =
    "Usage: packcheck [--json] [--product A.B.C.D] [--record FILE] FILE\n"
    "\n"
    "Says what every client will read in the list of updates FILE (- for standard input), and what it will\n"
    "do: the very code of the utility decides. Names that are not ASCII are shown with \\xNN for a byte.\n"
    "\n"
    "  --json             one JSON object in place of text\n"
    "  --product A.B.C.D  for a client whose product executable has this file version; without it, for all,\n"
    "                     as a table over the versions where the answer changes\n"
    "  --record FILE      the client has this record of installed updates (installedupdates.dat)\n"
    "  --help, --version\n"
    "\n"
    "Exit status: 0 clean, 1 with warnings, 2 wrong use or a file that cannot be read.\n";

struct Options {
  bool json = false;
  std::optional<packcheck::Version> product;
  std::optional<Path> record, list;
};

int Fail(const std::string& why) {
  std::cerr << "packcheck: " << why << "\n";
  return failed;
}

int FailUse(const std::string& why) {
  return Fail(why + "; packcheck --help shows how it is used");
}

/// Four numbers of 16 bits between points, and nothing else.
std::optional<packcheck::Version> ParseVersion(const std::string& text) {
  packcheck::Version version{};
  std::size_t field = 0, digits = 0;
  unsigned value = 0;
  for (const char c : text + ".") {
    if (c == '.') {
      if (digits == 0 || field == version.size()) return std::nullopt;
      version[field++] = static_cast<std::uint16_t>(value);
      value = 0;
      digits = 0;
      continue;
    }
    value = value * 10 + static_cast<unsigned>(c - '0');
    if (c < '0' || c > '9' || value > 0xFFFF) return std::nullopt;
    ++digits;
  }
  if (field != version.size()) return std::nullopt;
  return version;
}

/// Sets one option or the list's name; what is wrong with it, or nothing. `value`: what stands behind it.
std::string Take(const Path& argument, const Path* value, Options& options) {
  if (argument == "--json") {
    options.json = true;
  } else if (argument == "--product" || argument == "--record") {
    if (value == nullptr) return argument.string() + " needs a value behind it";
    if (argument == "--record") {
      options.record = *value;
      return {};
    }
    options.product = ParseVersion(value->string());
    if (!options.product) {
      return "'" + value->string() + "' is no version: four numbers up to 65535, as in 15.0.2.5";
    }
  } else if (argument.string().starts_with("-") && argument != "-") {
    return "unknown option '" + argument.string() + "'";
  } else if (options.list) {
    return "one list at a time, and '" + argument.string() + "' is the second";
  } else {
    options.list = argument;
  }
  return {};
}

int Check(const Path& path, const Options& options) {
  const packcheck::Input list = packcheck::Read(path, kListSizeLimit);
  if (!list.error.empty()) return Fail(list.error);
  packcheck::Input record;
  if (options.record) record = packcheck::Read(*options.record, kRecordSizeLimit);
  if (!record.error.empty()) return Fail(record.error);
  std::optional<std::string_view> record_bytes;
  if (options.record) record_bytes = record.bytes;
  const packcheck::Report report = packcheck::Examine(list.bytes, record_bytes, options.product);
  std::cout << (options.json ? packcheck::AsJson(report) : packcheck::AsText(report)) << std::flush;
  if (!std::cout) return Fail("cannot write the report; check where standard output goes");
  return report.warnings.empty() ? clean : warned;
}

int Run(const std::vector<Path>& arguments) {
  Options options;
  for (std::size_t i = 0; i < arguments.size(); ++i) {
    if (arguments[i] == "--help" || arguments[i] == "--version") {
      std::cout << (arguments[i] == "--help" ? kUsage : "packcheck " TAVREL_VERSION "\n") << std::flush;
      return std::cout ? clean : failed;
    }
    const std::string wrong =
        Take(arguments[i], i + 1 < arguments.size() ? &arguments[i + 1] : nullptr, options);
    if (!wrong.empty()) return FailUse(wrong);
    if (arguments[i] == "--product" || arguments[i] == "--record") ++i;
  }
  if (!options.list) return FailUse("name the list to be checked, or - for standard input");
  if (options.record == "-" && options.list == "-")
    return FailUse("list and record cannot both be standard input");
  return Check(*options.list, options);
}

}  // namespace

#ifdef _WIN32
int wmain(int count, wchar_t** arguments) {
#else
int main(int count, char** arguments) {
#endif
  try {
    return Run({arguments + (count > 0), arguments + count});
  } catch (const std::exception& error) {
    return Fail(std::string("cannot go on (") + error.what() + "); try a plain name and a smaller file");
  }
}
