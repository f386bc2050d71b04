#include "exploration/commands/command.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <charconv>
#include <map>
#include <optional>
#include <string_view>

#include "common/command_line/options.h"
#include "common/text/bad_use.h"
#include "common/text/nearest.h"
#include "common/text/text.h"
#include "exploration/features/features.h"

namespace exploration {
namespace {

const std::map<std::string, Space> spaces = {{"private", Space::privateSpace},
                                             {"local", Space::localSpace},
                                             {"global", Space::globalSpace},
                                             {"constant", Space::constantSpace}};

Name NamedBy(const std::string& text) {
  Name name;
  const char* const end = text.data() + text.size();
  const auto [colon, isSeed] = std::from_chars(text.data(), end, name.seed);
  if (isSeed == std::errc() && colon != end && *colon == ':') {
    const auto [behind, isNumber] = std::from_chars(colon + 1, end, name.number);
    if (isNumber == std::errc() && behind == end && name.number > 0) return name;
  }
  throw text::BadUse(fmt::format("'{}' names no program: a seed and a number from 1 on do, as 1:17",
                                 text::PrintableLine(text, 40)));
}

void RefuseUnknown(const std::string& name) {
  if (FeatureNamed(name) != nullptr) return;
  std::vector<std::string_view> names;
  for (const Feature* feature : Features()) names.push_back(feature->name);
  const std::optional<std::string_view> nearest = text::Nearest(name, names);
  throw text::BadUse(fmt::format("no feature is called '{}'{}", text::PrintableLine(name, 40),
                                 nearest ? fmt::format(": did you mean '{}'?", *nearest)
                                         : " ('explore features' lists them)"));
}

}  // namespace

void AddNames(CLI::App& app, std::vector<Name>& names, std::size_t most) {
  app.add_option_function<std::vector<std::string>>(
         "SEED:N",
         [&names](const std::vector<std::string>& words) {
           for (const std::string& word : words) names.push_back(NamedBy(word));
         },
         most == 1 ? "The program of that number of a seed"
                   : "Programs, by their seeds and numbers")
      ->required()
      ->expected(1, static_cast<int>(most))
      ->type_name("");
}

void AddDrawing(CLI::App& app, Options& options) {
  options.hasDouble = true;
  options.hasHalf = true;
  app.add_option_function<std::string>(
         "--space", [&options](const std::string& space) { options.space = spaces.at(space); },
         "Where all unions lie: private, local, global or constant")
      ->type_name("SPACE")
      ->check([](const std::string& space) {
        return spaces.contains(space) ? std::string()
                                      : fmt::format(
                                            "'{:.40}' is none of private, local, global and "
                                            "constant",
                                            space);
      });
  app.add_option("--only", options.only, "Features that programs may use, and no others")
      ->type_name("FEATURE,...")
      ->delimiter(',')
      ->each(RefuseUnknown);
  app.add_option("--without", options.without, "Features that programs may not use")
      ->type_name("FEATURE,...")
      ->delimiter(',')
      ->each(RefuseUnknown);
}

void AddWork(CLI::App& app, const command_line::Call& call, WorkOptions& options) {
  options.pool.folder = call.workersFolder;
  app.add_option("-j,--jobs", options.pool.workers, "Workers side by side")
      ->type_name("N")
      ->check(command_line::Whole(1, 256))
      ->capture_default_str();
  app.add_option("--timeout", options.seconds, "Seconds that a program may take")
      ->type_name("S")
      ->check(command_line::Seconds(0.001, 1e6))
      ->capture_default_str();
  app.add_option_function<std::string>(
         "--launcher",
         [&options](const std::string& line) {
           options.pool.launcher = command_line::WordsOf("--launcher", line);
         },
         "Words before the worker's command, for instance 'ssh board'")
      ->type_name("CMD");
  app.add_option("--program", options.pool.program, "This program where the launcher finds it")
      ->type_name("PATH")
      ->check(command_line::NotEmpty());
  CLI::Option* const build =
      app.add_option("--build-options", options.buildOptions, "For clBuildProgram")
          ->type_name("TEXT");
  app.add_option("--compiler", options.compiler,
                 "In place of a device: a shell's command that compiles the file that is added to "
                 "it")
      ->type_name("CMD")
      ->check(command_line::NotEmpty())
      ->excludes(build);
}

std::string DrawingWords(const Options& options) {
  std::string words;
  for (const auto& [name, space] : spaces)
    if (options.space == space) words += " --space " + name;
  if (!options.only.empty()) words += fmt::format(" --only {}", fmt::join(options.only, ","));
  if (!options.without.empty())
    words += fmt::format(" --without {}", fmt::join(options.without, ","));
  return words;
}

Candidate Drawn(const Name& name, const Options& options) {
  Program program = Draw(name.seed, name.number, options);
  RunnableProgram runnable = MakeRunnable(program);
  return {std::move(program), std::move(runnable)};
}

std::string MissingOn(const Device& device, const RunnableProgram& program) {
  if (program.needsDouble && !device.hasDouble) return "not run: the device has no double";
  if (program.needsHalf && !device.hasHalf) return "not run: the device has no half";
  return "";
}

std::string NameOf(const Program& program) {
  return fmt::format("{}:{}", program.seed, program.number);
}

}  // namespace exploration
