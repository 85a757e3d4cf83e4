#include "console/command_line.h"

#ifdef _WIN32
#include <windows.h>
#endif

#include <algorithm>
#include <iostream>

#include "console/text.h"
#include "version.h"

namespace console {

std::optional<int> Parse(CLI::App& app, const std::vector<std::string>& arguments) {
  app.set_version_flag("--version", app.get_name() + " " TAVREL_VERSION, "Show the version and exit");
  app.set_help_flag("-h,--help", "Show this help and exit");
  app.allow_windows_style_options(false);
  try {
    // parse() takes the arguments from the end of the list.
    app.parse(std::vector<std::string>(arguments.rbegin(), arguments.rend()));
    return std::nullopt;
  } catch (const CLI::CallForHelp&) {
    return Print(app, app.help()) ? kClean : kFailed;
  } catch (const CLI::CallForVersion& version) {
    return Print(app, std::string(version.what()) + "\n") ? kClean : kFailed;
  } catch (const CLI::ParseError& error) {
    return Fail(
        app, Printable(std::string_view(error.what())) + "; " + app.get_name() + " --help shows the usage");
  }
}

bool Write(std::ostream& stream, const std::string& text) {
#ifdef _WIN32
  // A console shows bytes in the user's code page.
  const HANDLE console = GetStdHandle(&stream == &std::cout ? STD_OUTPUT_HANDLE : STD_ERROR_HANDLE);
  if (DWORD mode = 0; GetConsoleMode(console, &mode)) {
    const std::wstring wide = DecodeText(text);
    constexpr std::size_t kBlock = 8192;  // the longest call that the documentation promises: 64 KiB
    for (std::size_t done = 0; done < wide.size(); done += kBlock) {
      const auto count = static_cast<DWORD>(std::min(kBlock, wide.size() - done));
      if (!WriteConsoleW(console, wide.data() + done, count, &mode, nullptr)) return false;
    }
    return true;
  }
#endif
  return static_cast<bool>(stream << text << std::flush);
}

int Fail(const CLI::App& app, const std::string& why) {
  Write(std::cerr, app.get_name() + ": " + why + "\n");
  return kFailed;
}

bool Print(const CLI::App& app, const std::string& text) {
  if (Write(std::cout, text)) return true;
  Fail(app, "cannot write to standard output");
  return false;
}

std::filesystem::path PathOf(const std::string& argument) {
#ifdef _WIN32
  return std::u8string(argument.begin(), argument.end());
#else
  return argument;
#endif
}

}  // namespace console
