#include <lorvane/lorvane.hpp>

#include <cstdio>

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: %s FILE...\n", argv[0]);
    return 2;
  }
  std::fprintf(stderr, "lorvane-show: not built yet\n");
  return 1;
}
