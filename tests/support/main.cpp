#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest.h>

#include <windows.h>

#include <cstdio>
#include <mutex>
#include <thread>

#include "support/watchdog.h"

namespace {

constexpr unsigned kCaseSeconds = 60;
constexpr unsigned kLookMs = 100;
std::mutex mutex;
const doctest::TestCaseData* timed_case = nullptr;
unsigned looks_left = 0;

const doctest::TestCaseData* Running() {
  const doctest::ContextOptions* options = doctest::getContextOptions();
  return options != nullptr ? options->currentTest : nullptr;
}

// Counts its own looks: Wine's clock stands still once its server process is gone.
void Watch() {
  for (;; Sleep(kLookMs)) {
    const std::lock_guard lock(mutex);
    if (timed_case != Running()) looks_left = kCaseSeconds * 1000 / kLookMs;
    timed_case = Running();
    if (timed_case == nullptr || looks_left-- != 0) continue;
    std::fprintf(stderr, "ended by the watchdog in: %s\n", timed_case->m_name);
    TerminateProcess(GetCurrentProcess(), 4);
  }
}

}  // namespace

void support::AllowSeconds(unsigned seconds) {
  const std::lock_guard lock(mutex);
  timed_case = Running();
  looks_left = seconds * 1000 / kLookMs;
}

int main(int argc, char** argv) {
  doctest::Context context(argc, argv);
  std::thread(Watch).detach();
  return context.run();
}
