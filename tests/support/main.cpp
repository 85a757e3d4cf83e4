#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest.h>

#include <windows.h>

#include <cstdio>
#include <mutex>
#include <thread>

#include "support/watchdog.h"

namespace {

constexpr unsigned kCaseSeconds = 60;
std::mutex mutex;
const doctest::TestCaseData* timed_case = nullptr;
ULONGLONG deadline = ~0ull;

const doctest::TestCaseData* Running() {
  const doctest::ContextOptions* options = doctest::getContextOptions();
  return options != nullptr ? options->currentTest : nullptr;
}

void Watch() {
  for (;; Sleep(100)) {
    const std::lock_guard lock(mutex);
    if (timed_case != Running()) deadline = GetTickCount64() + kCaseSeconds * 1000;
    timed_case = Running();
    if (GetTickCount64() < deadline) continue;
    std::fprintf(stderr, "ended by the watchdog in: %s\n",
                 Running() != nullptr ? Running()->m_name : "(no case)");
    TerminateProcess(GetCurrentProcess(), 4);
  }
}

}  // namespace

void support::AllowSeconds(unsigned seconds) {
  const std::lock_guard lock(mutex);
  timed_case = Running();
  deadline = GetTickCount64() + seconds * 1000ull;
}

int main(int argc, char** argv) {
  doctest::Context context(argc, argv);
  std::thread(Watch).detach();
  return context.run();
}
