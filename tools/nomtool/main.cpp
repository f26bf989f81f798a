// nomtool, the command-line program of nomutil. The work is done behind commandline.h, so that the
// tests run the same code with text streams.
#include "commandline.h"

#include <exception>
#include <iostream>

int main(int argc, char** argv) {
  try {
    return nomtool::run({argv + (argc > 0 ? 1 : 0), argv + argc}, std::cout, std::cerr);
  } catch (const std::exception& error) {
    std::cerr << "nomtool: " << error.what() << '\n';
    return nomtool::kExitUsage;
  }
}
