// write_programs SEED FIRST END FOLDER: a batch of programs for the host's compiler. All are
// written into one file, which is compiled much faster than many: each name gets its program's
// number.
#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <regex>
#include <string>

#include "exploration/generator/generator.h"

namespace {

void WriteBytes(std::ostream& to, const std::vector<std::uint8_t>& bytes) {
  constexpr char digits[] = "0123456789abcdef";
  for (const std::uint8_t byte : bytes) to << ' ' << digits[byte >> 4] << digits[byte & 15];
  to << '\n';
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) {
    std::cerr << "usage: write_programs SEED FIRST END FOLDER\n";
    return 2;
  }
  const std::uint64_t seed = std::strtoull(argv[1], nullptr, 10);
  const std::uint64_t first = std::strtoull(argv[2], nullptr, 10);
  const std::uint64_t end = std::strtoull(argv[3], nullptr, 10);
  const std::string folder = argv[4];
  std::ofstream texts(folder + "/batch.cl");
  std::ofstream table(folder + "/table.c");
  std::ofstream cases(folder + "/cases.txt");
  texts << "#pragma OPENCL EXTENSION cl_khr_fp64 : enable\n"
           "#pragma OPENCL EXTENSION cl_khr_fp16 : enable\n";
  cases << end - first << '\n';
  std::string list;
  const std::regex names(R"(([^.\w])([USfusglkcwpvxi]\d+|test)\b)");
  for (std::uint64_t number = first; number < end; ++number) {
    exploration::Options options;
    options.hasDouble = true;
    options.hasHalf = true;
    options.hasAnonymousMembers = true;
    const auto program = exploration::MakeRunnable(exploration::Draw(seed, number, options));
    const std::string mark = "_" + std::to_string(number);
    texts << std::regex_replace(program.text, names, "$1$2" + mark) << '\n';
    table << "void test" << mark
          << "(void *, void *, void *, void *, void *, void *, void *, void *);\n";
    list += "test" + mark + ",\n";
    cases << number << ' ' << program.globalSize << ' ' << program.localSize << ' '
          << program.buffers.size() << '\n';
    for (const auto& buffer : program.buffers) {
      cases << buffer.isAnswer << ' ' << buffer.bytes.size() << '\n';
      WriteBytes(cases, buffer.bytes);
      if (!buffer.isAnswer) continue;
      WriteBytes(cases, buffer.expected);
      WriteBytes(cases, buffer.known);
    }
  }
  table << "typedef void Kernel(void *, void *, void *, void *, void *, void *, void *, void *);\n"
           "Kernel *const kernels[] = {\n"
        << list << "};\n";
  return 0;
}
