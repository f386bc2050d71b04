#include <iostream>
#include <string_view>

#include "diagnosis/worker.h"

int main(int argc, char** argv) {
  if (argc == 2 && std::string_view(argv[1]) == "worker") return diagnosis::WorkerMain();
  std::cerr << "usage: union_triage worker\n";
  return 2;
}
