// write_programs FOLDER SEED FIRST END | write_programs FOLDER CORPUS: a batch of programs for the
// host's compiler. All are written into one file, which is compiled much faster than many: each
// name gets its program's number.
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <fstream>
#include <iostream>
#include <regex>
#include <string>
#include <vector>

#include "exploration/generator/generator.h"
#include "exploration/program/corpus.h"

namespace {

using exploration::RunnableProgram;

struct Numbered {
  std::uint64_t number;
  RunnableProgram program;
};

std::vector<Numbered> Drawn(std::uint64_t seed, std::uint64_t first, std::uint64_t end) {
  exploration::Options options;
  options.hasDouble = true;
  options.hasHalf = true;
  options.hasAnonymousMembers = true;
  std::vector<Numbered> programs;
  for (std::uint64_t number = first; number < end; ++number)
    programs.push_back(
        {number, exploration::MakeRunnable(exploration::Draw(seed, number, options))});
  return programs;
}

// In the order of their names.
std::vector<Numbered> Kept(const std::string& corpus) {
  std::vector<Numbered> programs;
  for (exploration::KeptProgram& kept : exploration::KeptIn(corpus)) {
    std::cout << programs.size() << " is " << kept.name << '\n';
    programs.push_back({programs.size(), std::move(kept.program)});
  }
  return programs;
}

void WriteBytes(std::ostream& to, const std::vector<std::uint8_t>& bytes) {
  constexpr char digits[] = "0123456789abcdef";
  for (const std::uint8_t byte : bytes) to << ' ' << digits[byte >> 4] << digits[byte & 15];
  to << '\n';
}

void Write(const std::vector<Numbered>& programs, const std::string& folder) {
  std::ofstream texts(folder + "/batch.cl");
  std::ofstream table(folder + "/table.c");
  std::ofstream cases(folder + "/cases.txt");
  texts << "#pragma OPENCL EXTENSION cl_khr_fp64 : enable\n"
           "#pragma OPENCL EXTENSION cl_khr_fp16 : enable\n";
  cases << programs.size() << '\n';
  std::string list;
  const std::regex names(R"(([^.\w])([USfusglkcwpvxi]\d+|test)\b)");
  for (const auto& [number, program] : programs) {
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
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3 && argc != 5) {
    std::cerr << "usage: write_programs FOLDER SEED FIRST END | write_programs FOLDER CORPUS\n";
    return 2;
  }
  try {
    const auto number = [argv](int i) { return std::strtoull(argv[i], nullptr, 10); };
    Write(argc == 3 ? Kept(argv[2]) : Drawn(number(2), number(3), number(4)), argv[1]);
    return 0;
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
  }
}
