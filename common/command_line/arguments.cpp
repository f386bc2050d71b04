#include "common/command_line/arguments.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <optional>
#include <string_view>

#include "common/text/bad_use.h"
#include "common/text/nearest.h"
#include "common/text/text.h"

namespace command_line {
namespace {

const CLI::App* Chosen(const CLI::App& app) {
  const std::vector<const CLI::App*> parsed =
      app.get_subcommands([](const CLI::App* command) { return command->parsed(); });
  return parsed.empty() ? nullptr : parsed.front();
}

std::string Advice(std::string_view written, const std::vector<std::string_view>& words) {
  const std::optional<std::string_view> nearest = text::Nearest(written, words);
  return nearest ? fmt::format(": did you mean '{}'?", *nearest) : std::string();
}

// A row is as good a first word as a command, unless it is all but one.
void RefuseMisspelt(const Program& program, const std::string& word) {
  const auto isLetter = [](char c) { return c >= 'a' && c <= 'z'; };
  if (word.empty() || !std::ranges::all_of(word, isLetter)) return;
  std::vector<std::string_view> names;
  for (const Command* command : program.commands) names.emplace_back(command->name);
  const std::string advice = Advice(word, names);
  if (!advice.empty()) throw text::BadUse(fmt::format("no command is called '{}'{}", word, advice));
}

std::string RefusalOfOption(const CLI::App& command, const std::string& written) {
  const std::string name = written.substr(0, written.find('='));
  std::vector<std::string> known;
  for (const CLI::Option* option : command.get_options()) {
    for (const std::string& longName : option->get_lnames()) known.push_back("--" + longName);
  }
  const std::string advice = Advice(name, {known.begin(), known.end()});
  return fmt::format(
      "'{}' has no option {}{}", command.get_name(), text::PrintableLine(name),
      advice.empty() ? fmt::format(" ('{} --help' lists them)", command.get_name()) : advice);
}

}  // namespace

std::vector<std::string> Arranged(const Program& program, const CLI::App& app,
                                  std::vector<std::string> words) {
  const auto isCommand = [&program](const std::string& word) {
    return word == "-h" || word == "--help" || word == "--version" ||
           std::ranges::any_of(program.commands,
                               [&word](const Command* command) { return word == command->name; });
  };
  if (!words.empty() && words.front() == "help") {
    words.erase(words.begin());
    words.emplace_back("--help");
  }
  if (words.empty() || !isCommand(words.front())) {
    if (!words.empty()) RefuseMisspelt(program, words.front());
    words.insert(words.begin(), program.usualCommand);
  }
  const CLI::App* command =
      words.front().starts_with('-') ? nullptr : app.get_subcommand(words.front());

  std::vector<std::string> arranged;
  bool areOptions = true;
  for (const std::string& word : words) {
    areOptions = areOptions && word != "--";
    const std::size_t equals = word.find('=');
    if (!areOptions || !word.starts_with("--") || equals == std::string::npos) {
      arranged.push_back(word);
      continue;
    }
    const std::string name = word.substr(0, equals);
    const CLI::Option* option = command != nullptr ? command->get_option_no_throw(name) : nullptr;
    if (option != nullptr && option->get_expected_max() == 0)
      throw text::BadUse(name + " takes no value");
    if (option != nullptr && equals + 1 == word.size()) {
      // The library would take the next word for the value.
      arranged.push_back(name);
      arranged.emplace_back();
    } else {
      arranged.push_back(word);
    }
  }
  return arranged;
}

std::string RefusalOf(const CLI::App& app, const std::string& reason) {
  const CLI::App* command = Chosen(app);
  if (command == nullptr) return reason;
  // What is no option makes a row of its value, which is not what is wrong.
  for (const std::string& word : command->remaining()) {
    if (word.size() > 1 && word.starts_with('-')) return RefusalOfOption(*command, word);
  }
  for (const CLI::Option* option : command->get_options()) {
    const std::string name = option->get_name();
    if (option->get_positional() || option->get_expected_max() != 1) continue;
    if (option->count() > 1) return name + " stands more than once";
    if (option->count() == 0 && reason.starts_with(name + ": 1 required"))
      return fmt::format("{} needs a value: {}", name, option->get_type_name());
  }
  return reason;
}

}  // namespace command_line
