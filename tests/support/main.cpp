#define DOCTEST_CONFIG_IMPLEMENT
#include <doctest.h>

#include <cstdio>

int main(int argc, char** argv) {
  // A test that is ended when its time is over has then printed what failed before.
  std::setvbuf(stdout, nullptr, _IONBF, 0);
  return doctest::Context(argc, argv).run();
}
