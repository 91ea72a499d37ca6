// Writes a site of any size, for scripts/bench.
//
// usage: make_site FOLDER TRADES TOPLISTS

#include <cstdlib>
#include <exception>
#include <iostream>

#include "support/site_generator.h"

int main(int argc, char** argv) {
  if (argc != 4) return 2;
  try {
    toplist::test::write_site(argv[1], {.trades = std::strtoul(argv[2], nullptr, 10),
                                        .toplists = std::strtoul(argv[3], nullptr, 10)});
  } catch (const std::exception& error) {
    std::cerr << "make_site: " << error.what() << '\n';
    return 1;
  }
  return 0;
}
