#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>

namespace {

// Ends a run that hangs, and says where.
void Watch() {
  std::this_thread::sleep_for(std::chrono::seconds(60));
  const auto* options = doctest::getContextOptions();
  const char* where = options && options->currentTest ? options->currentTest->m_name : "outside a test";
  std::fprintf(stderr, "Still running after 60 s: %s\n", where);
  std::fflush(stderr);
  std::_Exit(124);
}

}  // namespace

int main(int count, char** arguments) {
  std::thread(Watch).detach();
  return doctest::Context(count, arguments).run();
}
