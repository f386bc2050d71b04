// fuzz_records SEED COUNT FOLDER...: COUNT runs of a few records out of those in the folders, each
// damaged in another way, through every view. Says by which seed, with a count of 1, a failure
// comes again. fuzz_records --corpus DIR FOLDER...: the records as inputs for records_fuzzer.

#include <fmt/format.h>
#include <unistd.h>

#include <csignal>
#include <cstdint>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <vector>

#include "tests/diagnosis/fuzz/mutate.h"
#include "tests/diagnosis/fuzz/try_views.h"

namespace {

using Json = nlohmann::ordered_json;

struct Folder {
  Json info;
  std::vector<std::string> lines;
};

Folder Read(const std::string& path) {
  Folder folder;
  std::ifstream info(path + "/run.json");
  folder.info = Json::parse(std::string(std::istreambuf_iterator<char>(info), {}));
  std::ifstream records(path + "/records.jsonl");
  for (std::string line; std::getline(records, line);) folder.lines.push_back(line);
  return folder;
}

/// The run's own file, for these rows alone.
std::string InfoFor(const Folder& folder, const std::vector<std::string>& lines) {
  Json info = folder.info;
  info["selected"] = Json::array();
  for (const std::string& line : lines) info["selected"].push_back(Json::parse(line)["row"]);
  return info.dump();
}

char failure[64];  // told if the process is ended

extern "C" void Tell(int) {
  if (write(STDERR_FILENO, failure, std::char_traits<char>::length(failure)) < 0) _exit(2);
  _exit(1);
}

void TryOne(const std::vector<Folder>& folders, std::uint64_t seed) {
  std::mt19937_64 random(seed);
  const Folder& folder = folders[random() % folders.size()];
  std::vector<std::string> lines;
  for (std::size_t count = random() % 2 + 1; count > 0; --count)
    lines.push_back(folder.lines[random() % folder.lines.size()]);
  std::string info = InfoFor(folder, lines);
  if (random() % 5 == 0) info = diagnosis::Mutated(info, random);
  std::string records;
  for (const std::string& line : lines) records += diagnosis::Mutated(line, random) + "\n";
  diagnosis::TryViews(info, records);
}

int WriteCorpus(const std::string& corpus, const std::vector<Folder>& folders) {
  std::filesystem::create_directories(corpus);
  int number = 0;
  for (const Folder& folder : folders) {
    for (const std::string& line : folder.lines)
      std::ofstream(fmt::format("{}/{}", corpus, number++)) << InfoFor(folder, {line}) << '\n'
                                                            << line << '\n';
  }
  return 0;
}

int Main(const std::vector<std::string>& words) {
  if (words.size() < 3) {
    fmt::print(stderr, "usage: fuzz_records SEED COUNT FOLDER... | --corpus DIR FOLDER...\n");
    return 2;
  }
  std::vector<Folder> folders;
  for (std::size_t i = 2; i < words.size(); ++i) folders.push_back(Read(words[i]));
  if (words[0] == "--corpus") return WriteCorpus(words[1], folders);
  const std::uint64_t first = std::stoull(words[0]);
  const std::uint64_t count = std::stoull(words[1]);
  for (const int signal : {SIGSEGV, SIGABRT, SIGBUS, SIGFPE, SIGILL}) std::signal(signal, Tell);
  for (std::uint64_t seed = first; seed < first + count; ++seed) {
    *fmt::format_to_n(failure, sizeof failure - 1, "fuzz_records: seed {}\n", seed).out = '\0';
    try {
      TryOne(folders, seed);
    } catch (const std::exception& error) {
      fmt::print(stderr, "fuzz_records: seed {}: {}\n", seed, error.what());
      return 1;
    }
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    return Main(std::vector<std::string>(argv + 1, argv + argc));
  } catch (const std::exception& error) {
    fmt::print(stderr, "fuzz_records: {}\n", error.what());
    return 2;
  }
}
