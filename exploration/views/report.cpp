#include "exploration/views/report.h"

#include <fmt/format.h>

#include <algorithm>

#include "common/text/text.h"
#include "exploration/program/program_file.h"
#include "exploration/views/rules.h"

namespace exploration {
namespace {

// A fence that the text does not end.
std::string Fenced(const std::string& language, const std::string& text) {
  std::string fence = "```";
  while (text.find(fence) != std::string::npos) fence += '`';
  return fmt::format("{0}{1}\n{2}{3}{0}\n", fence, language, text,
                     text.ends_with('\n') ? "" : "\n");
}

std::string What(const FaultRecord& fault) {
  std::string text;
  for (const AnswerRecord& answer : fault.answers) {
    const SideBySide bytes = BytesOf(answer);
    text += fmt::format(
        "The bytes of `{}` afterwards, where `??` may be anything. Right is:\n\n{}\nThe answer "
        "is:\n\n{}\n",
        answer.buffer, Fenced("", bytes.right), Fenced("", bytes.actual));
  }
  if (text.empty()) text = fmt::format("What happens: {}.\n\n", fault.told);
  if (!fault.log.empty()) text += "What the driver printed:\n\n" + Fenced("", fault.log) + "\n";
  return text;
}

}  // namespace

std::string DeviceLine(const Device& device) {
  if (device.IsCompiler()) return text::PrintableLine(device.name, 1000);
  return text::PrintableLine(fmt::format("{} on {}, driver version {}, {}", device.name,
                                         device.platform, device.driverVersion, device.cVersion));
}

SideBySide BytesOf(const AnswerRecord& answer) {
  return {HexOf(answer.expected, answer.known), HexOf(answer.actual, {})};
}

std::string ReportOf(const FaultRecord& fault, const RunRecord& run, const std::string& drawing) {
  std::string report = fmt::format("# {}\n\n", text::PrintableLine(fault.title, 300));
  const bool isCompiler = run.device.IsCompiler();
  report += fmt::format("{}: {}\n\n", isCompiler ? "Compiler" : "Device", DeviceLine(run.device));
  const auto options = run.options.find("build options");
  if (options != run.options.end() && !options->second.empty())
    report += fmt::format("Build options: `{}`\n\n", text::PrintableLine(options->second));
  report += isCompiler ? "This kernel shows it, when that command is given its file, "
                         "`program.cl`.\n\n"
                       : "This kernel shows it; `reproducer.c` is a whole program with it, which "
                         "needs the OpenCL headers and loader alone.\n\n";
  report += Fenced("c", fault.text) + "\n";
  report += "## What\n\n" + What(fault);

  report += "## Why the program is valid\n\n";
  if (fault.answers.empty()) {
    report += "It compiles by OpenCL C's rules, and no execution of it is undefined.\n\n";
  } else {
    report += "Every byte that is compared is one that these rules determine:\n\n";
  }
  for (const Rule& rule : RulesFor(fault.features))
    report += fmt::format("- {} ({})\n", rule.says, rule.source);

  report += "\n## Where it goes away\n\n";
  if (fault.settings.empty()) report += "Nothing else was tried.\n";
  for (const Setting& setting : fault.settings)
    report += fmt::format("- {}: {}\n", setting.name, text::PrintableLine(setting.result));

  report += fmt::format(
      "\n## How it was found\n\nunion_explore {} found it in {} of {} of a seed; "
      "`explore show {}{}` shows the first.{}\n",
      run.version, text::Counted(fault.findings.size(), "program"), run.Programs(),
      fault.findings.front(), drawing,
      fault.isComplete ? " No step makes the program here smaller."
                       : " The program here might be made smaller still.");
  return report;
}

}  // namespace exploration
