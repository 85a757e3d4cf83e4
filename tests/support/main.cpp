#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest.h>

#include <windows.h>

#include <cstdio>
#include <thread>

namespace {

/// A case that takes longer ends the program with exit code 4 and the case's name. The longest one, the
/// sweep, takes less than half of it alone on the machine.
constexpr unsigned kCaseSeconds = 200;
constexpr unsigned kLookMs = 100;

// Counts its own looks: Wine's clock stands still once its server process is gone.
void Watch() {
  const doctest::TestCaseData* timed = nullptr;
  for (unsigned looks = 0; looks < kCaseSeconds * 1000 / kLookMs; ++looks, Sleep(kLookMs)) {
    const doctest::ContextOptions* options = doctest::getContextOptions();
    const doctest::TestCaseData* running = options == nullptr ? nullptr : options->currentTest;
    if (running != timed || running == nullptr) looks = 0;
    timed = running;
  }
  std::fprintf(stderr, "ended by the watchdog in: %s\n", timed->m_name);
  TerminateProcess(GetCurrentProcess(), 4);
}

}  // namespace

int main(int argc, char** argv) {
  doctest::Context context(argc, argv);
  std::thread(Watch).detach();
  return context.run();
}
