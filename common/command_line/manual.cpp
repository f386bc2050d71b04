#include "common/command_line/manual.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <cctype>
#include <iterator>
#include <sstream>
#include <string_view>

namespace command_line {
namespace {

std::vector<std::string> LinesOfText(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> lines;
  for (std::string line; std::getline(stream, line);) lines.push_back(line);
  return lines;
}

// As roff shows it: a backslash and a dash of their own, and no line that is a request.
std::string Escaped(std::string_view text) {
  std::string escaped;
  for (const char c : text) {
    if (escaped.empty() && (c == '.' || c == '\'')) escaped += "\\&";
    if (c == '\\' || c == '-') escaped += '\\';
    escaped += c;
    if (c == '\\') escaped.back() = 'e';
  }
  return escaped;
}

// Paragraphs with an empty line between; lines that are indented stay as they are.
std::string Paragraphs(const std::string& text) {
  std::string roff;
  bool isKept = false;
  for (const std::string& line : LinesOfText(text)) {
    const bool keeps = line.starts_with("  ");
    if (keeps != isKept) roff += keeps ? ".nf\n" : ".fi\n";
    isKept = keeps;
    roff += line.empty() ? ".PP\n" : Escaped(line) + "\n";
  }
  return roff + (isKept ? ".fi\n" : "");
}

std::string OptionsOf(const CLI::App& app) {
  std::string roff;
  for (const CLI::Option* option : app.get_options()) {
    if (option->check_name("--help")) continue;
    const bool hasValue = option->get_expected_max() > 0 && !option->get_positional();
    std::string value = hasValue ? option->get_type_name() : "";
    std::string name = option->get_name(option->get_positional(), true);
    std::ranges::replace(name, ',', ' ');
    fmt::format_to(std::back_inserter(roff), ".TP\n.B {}\n", Escaped(name));
    if (!value.empty()) roff.insert(roff.size() - 1, " " + Escaped(value));
    roff += Escaped(option->get_description()) + "\n";
  }
  return roff;
}

std::string Capitals(std::string text) {
  std::ranges::transform(text, text.begin(), [](unsigned char c) { return std::toupper(c); });
  return text;
}

}  // namespace

std::vector<std::string> LinesOfExamples(const Command& command) {
  return LinesOfText(command.examples);
}

std::string ManualOf(const Program& program, const CLI::App& app,
                     const std::vector<std::string>& said) {
  std::string roff = fmt::format(
      ".TH {} 1 \"\" \"union-conformance-suite @PROJECT_VERSION@\" \"User Commands\"\n"
      ".SH NAME\n{} \\- {}\n"
      ".SH SYNOPSIS\n.B {}\n.RI [ command ]\n.RI [ options ]\n"
      ".SH DESCRIPTION\n{}",
      Capitals(program.binary), program.binary, Escaped(program.purpose), program.binary,
      Paragraphs(app.get_description()));
  roff += ".SH COMMANDS\n";
  std::string examples;
  for (std::size_t i = 0; i < program.commands.size(); ++i) {
    const Command& command = *program.commands[i];
    const CLI::App& own = *app.get_subcommand(command.name);
    fmt::format_to(std::back_inserter(roff), ".SS {}\n{}.\n{}", command.name,
                   Escaped(own.get_description()), OptionsOf(own));
    if (!said[i].empty()) roff += ".PP\n" + Paragraphs(said[i]);
    // Help has the examples at the end of what the command says, this page all in one place.
    for (const std::string& line : LinesOfExamples(command)) examples += Escaped(line) + "\n";
  }
  for (const Section& section : program.sections)
    fmt::format_to(std::back_inserter(roff), ".SH {}\n{}", section.title, Paragraphs(section.text));
  if (!examples.empty()) roff += ".SH EXAMPLES\n.nf\n" + examples + ".fi\n";
  return roff + ".SH SEE ALSO\n.BR union_suite (1)\n";
}

}  // namespace command_line
