// Lists the faults of the broken compiler, one a line: the name, and behind it what it stands for.

#include <iostream>

#include "layers/kernel_edit.h"

int main() {
  for (const Fault& fault : faults) {
    std::cout.width(24);
    std::cout << std::left << fault.name << fault.meaning << '\n';
  }
  return std::cout.flush() ? 0 : 1;
}
