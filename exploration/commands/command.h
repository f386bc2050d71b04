#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/command_line/program.h"
#include "exploration/commands/campaign.h"
#include "exploration/generator/generator.h"

namespace exploration {

/// COMMANDS(DO) does DO(name) for each, in the order in which help tells of them. A command is the
/// file of its name in this folder.
#define COMMANDS(DO) \
  DO(check)          \
  DO(features)       \
  DO(merge)          \
  DO(reduce)         \
  DO(replay)         \
  DO(run)            \
  DO(show)

#define DECLARE(name) extern const command_line::Command name;
namespace commands {
COMMANDS(DECLARE)
}
#undef DECLARE

/// A program's name: "1:17".
struct Name {
  std::uint64_t seed = 1;
  std::uint64_t number = 1;
};

/// `SEED:N...`, at least one of them and at most so many.
void AddNames(CLI::App& app, std::vector<Name>& names, std::size_t most);

/// --space, --only and --without. What they leave is that of a device that has everything: a
/// program's number is the same for all devices, and those that a device hasn't got what for are
/// left out.
void AddDrawing(CLI::App& app, Options& options);

/// -j, --timeout, --launcher, --program and --build-options.
void AddWork(CLI::App& app, const command_line::Call& call, WorkOptions& options);

/// The options' beginning that gives the same programs again: " --only swizzles".
std::string DrawingWords(const Options& options);

/// The program of that name, which is valid.
Candidate Drawn(const Name& name, const Options& options);

/// "not run: the device has no double" if it lacks what the program needs; else empty.
std::string MissingOn(const Device& device, const RunnableProgram& program);

/// "1:17".
std::string NameOf(const Program& program);

}  // namespace exploration
