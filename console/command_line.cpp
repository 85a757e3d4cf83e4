#include "console/command_line.h"

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

int Fail(const CLI::App& app, const std::string& why) {
  std::cerr << app.get_name() << ": " << why << "\n";
  return kFailed;
}

bool Print(const CLI::App& app, const std::string& text) {
  std::cout << text << std::flush;
  if (std::cout) return true;
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
