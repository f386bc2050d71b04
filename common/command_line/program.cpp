#include "common/command_line/program.h"

#include <fcntl.h>
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <filesystem>
#include <sstream>
#include <stdexcept>
#include <vector>

#include "common/command_line/arguments.h"
#include "common/command_line/manual.h"
#include "common/text/bad_use.h"
#include "common/text/complaint.h"
#include "common/text/text.h"

namespace command_line {
namespace {

// What the command in front of the program says under that name; null if it says nothing.
const char* Said(const Program& program, std::string_view what) {
  std::string name = program.name;
  std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::toupper(c); });
  return std::getenv(fmt::format("{}_{}", name, what).c_str());
}

std::vector<std::string> LinesOf(const char* text) {
  std::vector<std::string> lines;
  std::istringstream in(text != nullptr ? text : "");
  for (std::string line; std::getline(in, line);) lines.push_back(line);
  return lines;
}

// A command in front of this one wants to know of bad use before it looks for a device: the command
// does nothing then. What the words are read into is kept by its callback alone.
struct OnlyCheck : CLI::App {
  static void Hold(CLI::App& app) {
    const auto kept = app.*(&OnlyCheck::final_callback_);
    app.callback([kept] {});
  }
};

void AddPart(std::string& footer, const std::string& part) {
  if (part.empty()) return;
  if (!footer.empty()) footer += "\n\n";
  footer += part;
}

// "EXIT STATUS" as "Exit status:", with its text indented.
std::string SectionsOfHelp(const Program& program) {
  std::string parts;
  for (const Section& section : program.sections) {
    if (!section.isInHelp) continue;
    std::string title = section.title;
    std::transform(title.begin() + 1, title.end(), title.begin() + 1,
                   [](unsigned char c) { return std::tolower(c); });
    AddPart(parts, title + ":\n" + section.text.substr(0, section.text.find_last_not_of('\n') + 1));
  }
  return parts;
}

// Behind what the command says itself.
void AddFooter(CLI::App& app, const Program& program, const Command& command) {
  std::string footer = app.get_footer();
  if (std::string_view(command.name) == program.usualCommand)
    AddPart(footer, SectionsOfHelp(program));
  if (const auto examples = LinesOfExamples(command); !examples.empty())
    AddPart(footer, fmt::format("Examples:\n  {}", fmt::join(examples, "\n  ")));
  app.footer(footer);
}

// Of the program: an example of each command.
void AddFooter(CLI::App& app, const Program& program) {
  std::vector<std::string> examples;
  for (const Command* command : program.commands) {
    const std::vector<std::string> lines = LinesOfExamples(*command);
    examples.insert(examples.end(), lines.begin(), lines.begin() + (lines.empty() ? 0 : 1));
  }
  std::string footer = fmt::format("'{} help COMMAND' tells what a command takes.", program.name);
  AddPart(footer, SectionsOfHelp(program));
  AddPart(footer, fmt::format("Examples:\n  {}", fmt::join(examples, "\n  ")));
  app.footer(footer);
}

// What the command in front takes beside the options that are in the help already, a line each.
std::string BesideHelp(const char* more, const std::string& help) {
  std::string text;
  for (const std::string& line : LinesOf(more)) {
    const std::string option = line.substr(0, line.find(' ', line.find("--")));
    if (!option.starts_with("  --") || help.find("\n" + option + " ") == std::string::npos)
      text += line + "\n";
  }
  return text;
}

void Run(const Program& program, std::vector<std::string> arguments, Call& call) {
  CLI::App app(program.description, program.name);
  const std::string version = fmt::format("{} {}", program.binary, program.version);
  app.set_version_flag("--version", version);
  app.require_subcommand(1);
  app.get_formatter()->column_width(28);
  std::vector<std::string> said;  // by the commands themselves, behind their options
  for (const Command* command : program.commands) {
    CLI::App& added = *app.add_subcommand(command->name, command->description);
    command->addTo(added, call);
    said.push_back(added.get_footer());
    AddFooter(added, program, *command);
    if (Said(program, "ONLY_CHECK") != nullptr) OnlyCheck::Hold(added);
  }
  // At last: commands would take over what it says.
  AddFooter(app, program);
  if (arguments.size() == 1 && arguments.front() == "manual")
    return Print(ManualOf(program, app, said));

  arguments = Arranged(program, app, std::move(arguments));
  // The library takes them from the back.
  std::ranges::reverse(arguments);
  try {
    app.parse(std::move(arguments));
  } catch (const CLI::CallForHelp&) {
    const std::string help = app.help();
    Print(help + BesideHelp(Said(program, "HELP"), help));
  } catch (const CLI::CallForVersion&) {
    Print(version + "\n");
  } catch (const CLI::Success&) {
    // An option has done what was asked for.
  } catch (const CLI::ParseError& error) {
    throw text::BadUse(RefusalOf(app, error.what()));
  } catch (const text::BadUse& refusal) {
    throw text::BadUse(RefusalOf(app, refusal.what()));
  }
}

int Ended(const Program& program, int status, const std::exception& reason) {
  text::Complain(program.name, reason.what());
  return status;
}

// Puts something in the place of standard streams that the caller has closed, where the next file
// that is opened would come to stand, and be written over. It is an error to write on a standard
// output that is not there.
void OpenStandardStreams() {
  constexpr int modes[] = {O_RDONLY, O_RDONLY, O_WRONLY};
  for (int descriptor = 0; descriptor < 3; ++descriptor) {
    if (fcntl(descriptor, F_GETFD) < 0)
      static_cast<void>(open("/dev/null", modes[descriptor]));  // takes the lowest number
  }
}

int Answer(const Program& program, int argc, char** argv) {
  OpenStandardStreams();
  const std::vector<std::string> arguments(argv + 1, argv + argc);
  for (const WorkerWord& worker : program.workers)
    if (argc == 2 && arguments.front() == worker.word) return worker.main();
  // A file that may not grow, and a pipe that nobody reads, are errors of writing, and no reason to
  // be killed.
  std::signal(SIGXFSZ, SIG_IGN);
  std::signal(SIGPIPE, SIG_IGN);
  try {
    Call call;
    // The command in front stands in the project's root, from where the layers are named, and so
    // must the workers.
    if (const char* folder = Said(program, "CALLED_FROM")) {
      call.workersFolder = std::filesystem::current_path();
      std::filesystem::current_path(folder);
    }
    const char* line = Said(program, "CALLED_AS");
    call.line =
        line != nullptr ? line : text::ShellWords(std::vector<std::string>(argv, argv + argc));
    call.invocation = LinesOf(Said(program, "INVOCATION"));
    if (call.invocation.empty()) call.invocation = {argv[0]};
    Run(program, arguments, call);
    return call.status;
  } catch (const text::BadUse& refusal) {
    return Ended(program, 2, refusal);
  } catch (const text::NothingToRunOn& refusal) {
    return Ended(program, 3, refusal);
  } catch (const text::CannotWrite& error) {
    return Ended(program, 4, error);
  } catch (const std::exception& error) {
    return Ended(program, 1, error);
  }
}

}  // namespace

int Main(const Program& program, int argc, char** argv) noexcept {
  try {
    return Answer(program, argc, argv);
  } catch (...) {
    // There was no memory left for a line on what went wrong.
    return 1;
  }
}

void Print(std::string_view text) {
  if (std::fwrite(text.data(), 1, text.size(), stdout) != text.size() || std::fflush(stdout) != 0)
    throw text::CannotWrite("cannot write on standard output: " +
                            std::string(std::strerror(errno)));
}

}  // namespace command_line
