// write_kernel_texts FOLDER: writes the text of every row, as its runner hands it to OpenCL, into a
// file of the row's name.

#include <fstream>
#include <iostream>

#include "tests/devices.h"

int main(int argc, char** argv) {
  if (argc != 2) {
    std::cerr << "usage: write_kernel_texts FOLDER" << std::endl;
    return 2;
  }
  for (const auto& [text, row] : RowsByText()) {
    const std::string path = std::string(argv[1]) + "/" + row->name + ".cl";
    std::ofstream file(path, std::ios::binary);
    if (!(file << text).flush()) {
      std::cerr << "write_kernel_texts: cannot write " << path << std::endl;
      return 1;
    }
  }
}
