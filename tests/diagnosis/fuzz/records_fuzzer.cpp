// A target for libFuzzer: the first line of an input is a run.json, the others are records.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

#include "tests/diagnosis/fuzz/mutate.h"
#include "tests/diagnosis/fuzz/try_views.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);
extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t mostSize, unsigned seed);

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(data, data + size);
  const std::size_t end = std::min(text.find('\n'), text.size());
  diagnosis::TryViews(std::string_view(text).substr(0, end),
                      text.substr(std::min(end + 1, text.size())));
  return 0;
}

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t mostSize, unsigned seed) {
  std::mt19937_64 random(seed);
  std::vector<std::string> lines(1);
  for (std::size_t i = 0; i < size; ++i) {
    if (data[i] == '\n') {
      lines.emplace_back();
    } else {
      lines.back() += static_cast<char>(data[i]);
    }
  }
  std::string& line = lines[random() % lines.size()];
  line = diagnosis::Mutated(line, random);
  std::string text;
  for (const std::string& one : lines) text += one + "\n";
  text.resize(std::min(text.size() - 1, mostSize));
  std::ranges::copy(text, data);
  return text.size();
}
