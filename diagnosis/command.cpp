#include "diagnosis/command.h"

#include <wordexp.h>

#include <CLI/CLI.hpp>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace diagnosis {

namespace {

// The words of a launcher, by the shell's rules of quoting.
std::vector<std::string> WordsOf(const std::string& line) {
  wordexp_t expansion{};
  if (wordexp(line.c_str(), &expansion, WRDE_NOCMD) != 0)
    throw CLI::ValidationError("--launcher", "cannot be split into words: " + line);
  std::vector<std::string> words(expansion.we_wordv, expansion.we_wordv + expansion.we_wordc);
  wordfree(&expansion);
  if (words.empty()) throw CLI::ValidationError("--launcher", "names no command");
  return words;
}

}  // namespace

void AddRows(CLI::App& app, std::vector<std::string>& patterns) {
  app.add_option("ROW", patterns,
                 "Names of rows, or globs such as 'multiply_*' and '*_vector3_?'; all if none is "
                 "given");
}

void AddPoolOptions(CLI::App& app, PoolOptions& options) {
  app.add_option("-j,--jobs", options.workers, "Workers side by side")
      ->check(CLI::Range(1, 256))
      ->capture_default_str();
  app.add_option("--timeout", options.timeoutSeconds, "Seconds that a row may take")
      ->check(CLI::Range(0.001, 1e6))
      ->capture_default_str();
  app.add_flag("--isolate", options.isolate, "A fresh worker for every row");
  app.add_option_function<std::string>(
         "--launcher", [&options](const std::string& line) { options.launcher = WordsOf(line); },
         "Put before the worker's command, for instance 'ssh board'; the program must be there "
         "under the same path")
      ->type_name("CMD");
  app.add_option("--seed", options.seed,
                 "Other data: that of the stream after srand(SEED); 1 is the suite's own")
      ->type_name("SEED")
      ->capture_default_str();
}

void Print(const std::string& text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw std::runtime_error("cannot write on standard output: " +
                             std::string(std::strerror(errno)));
}

std::string ShellWords(const std::vector<std::string>& words) {
  constexpr std::string_view plain =
      "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_-+=/.,:@%";
  std::string line;
  for (const std::string& word : words) {
    if (!line.empty()) line += ' ';
    if (!word.empty() && word.find_first_not_of(plain) == std::string::npos) {
      line += word;
      continue;
    }
    line += '\'';
    for (const char c : word) line += c == '\'' ? std::string("'\\''") : std::string(1, c);
    line += '\'';
  }
  return line;
}

}  // namespace diagnosis
