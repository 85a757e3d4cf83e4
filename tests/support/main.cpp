#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest.h>

#include <cstdio>

int main(int argc, char** argv) {
  // Unbuffered, so that a test that is ended by its time-out has already printed its failures.
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  return doctest::Context(argc, argv).run();
}
