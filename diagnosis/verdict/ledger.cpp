#include "diagnosis/verdict/ledger.h"

#include <fmt/format.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <iterator>

#include "common/text/text.h"

namespace diagnosis {

namespace {

struct Words {
  std::string_view name;
  std::string_view meaning;
};
// In the order of the enumeration.
constexpr Words words[] = {
    {"Pass", "ran to its end without a mismatch"},
    {"Fail", "ran to its end, and found a mismatch"},
    {"BuildError", "could not be built; the log is in the record"},
    {"Error", "ended with another OpenCL call that failed: its name, code and repetition"},
    {"Crash", "took its process down: the signal, or the status with which it ended"},
    {"Timeout", "took longer than --timeout, 60 seconds unless you say otherwise"},
    {"Skip", "is named in the file of --skips"},
    {"Missing", "was never reached: interrupted, no device, no worker to be had"},
    {"ExpectedFail", "did not pass, as the baseline says"},
    {"UnexpectedPass", "passed, though the baseline says otherwise: the baseline can be mended"},
    {"Flake", "ended otherwise when run once more on the same data, or the baseline calls it one"},
};
static_assert(std::size(words) == statuses);

const FailedCall* FailedBuild(const Record& record) {
  const auto failed = std::ranges::find(record.failedCalls, "clBuildProgram", &FailedCall::name);
  return failed == record.failedCalls.end() ? nullptr : &*failed;
}

std::string_view FirstLineOf(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
  return text.substr(0, text.find_first_of("\r\n"));
}

bool IsMismatch(std::string_view line) { return line.find(" ocl:") != std::string_view::npos; }

struct Mismatch {
  std::string_view line;
  int repetition;
};

// The line in which a row says which value it rejected stands in front of the repetition's RUN
// line; an empty one if there is none.
Mismatch MismatchOf(const Record& record) {
  int repetition = 1;
  for (std::string_view out = record.out; !out.empty();) {
    const std::string_view line = out.substr(0, out.find('\n'));
    out.remove_prefix(std::min(line.size() + 1, out.size()));
    if (line.starts_with("RUN ")) ++repetition;
    if (IsMismatch(line)) return {FirstLineOf(line), repetition};
  }
  return {{}, 0};
}

bool FoundNoPlatform(const Record& record) {
  return record.failedCalls.empty() &&
         record.err.find("Failed to find any platforms.") != std::string::npos;
}

// Where in its life a row was.
std::string PlaceOf(const Record& record) {
  if (record.repetitions.empty()) return "before the first repetition";
  const bool over = record.repetitions.back().out.find("RUN ") != std::string::npos;
  return fmt::format("{} repetition {}", over ? "after" : "in", record.repetitions.size());
}

std::string NameOfCall(const FailedCall& call) {
  std::string text = fmt::format("{}({})", call.name, call.code);
  if (call.repetition > 0) text += fmt::format(" in repetition {}", call.repetition);
  return text;
}

std::string NameOfSignal(int signal) {
  const char* name = sigabbrev_np(signal);
  return name != nullptr ? fmt::format("SIG{}", name) : fmt::format("signal {}", signal);
}

std::string DetailOfFail(const Record& record) {
  const Mismatch mismatch = MismatchOf(record);
  if (mismatch.line.empty())
    return fmt::format("the row returned {} without a mismatch line", record.ending.value);
  return fmt::format("{} in repetition {}", text::PrintableLine(mismatch.line),
                     mismatch.repetition);
}

std::string DetailOfBuildError(const Record& record) {
  const FailedCall* build = FailedBuild(record);
  std::string text = NameOfCall(*build);
  const std::string_view log = FirstLineOf(record.buildLog);
  if (!log.empty()) text += ": " + text::PrintableLine(log);
  return text;
}

std::string DetailOfCrash(const Record& record) {
  const Ending& ending = record.ending;
  switch (ending.kind) {
    case Ending::Kind::signalled:
      return NameOfSignal(ending.value) + " " + PlaceOf(record);
    case Ending::Kind::exited:
      return fmt::format("exit status {} {}", ending.value, PlaceOf(record));
    default:
      // Where the row was then is lost too.
      return text::PrintableLine(
          ending.lostFirst.empty()
              ? ending.reason
              : fmt::format("{}; run once more after the first worker was lost: {}", ending.reason,
                            ending.lostFirst));
  }
}

}  // namespace

std::string_view NameOf(Status status) { return words[static_cast<std::size_t>(status)].name; }

std::string_view MeaningOf(Status status) {
  return words[static_cast<std::size_t>(status)].meaning;
}

std::optional<Status> StatusNamed(std::string_view name) {
  const auto* const found = std::ranges::find(words, name, &Words::name);
  if (found == std::end(words)) return std::nullopt;
  return static_cast<Status>(found - std::begin(words));
}

bool FoundMismatch(const Repetition& repetition) { return IsMismatch(repetition.out); }

Status StatusOf(const Record& record) {
  // A row may show several things. The first of these that holds is its status.
  switch (record.ending.kind) {
    case Ending::Kind::skipped:
      return Status::skip;
    case Ending::Kind::notRun:
      return Status::missing;
    case Ending::Kind::timedOut:
      return Status::timeout;
    case Ending::Kind::signalled:
    case Ending::Kind::exited:
    case Ending::Kind::lost:
      return Status::crash;
    case Ending::Kind::returned:
      break;
  }
  const bool passed = record.ending.value == 1;
  if (!passed && !MismatchOf(record).line.empty()) return Status::fail;
  if (FailedBuild(record) != nullptr) return Status::buildError;
  if (!record.failedCalls.empty()) return Status::error;
  if (!passed && FoundNoPlatform(record)) return Status::missing;
  return passed ? Status::pass : Status::fail;
}

std::string DetailOf(const Record& record) {
  switch (StatusOf(record)) {
    case Status::fail:
      return DetailOfFail(record);
    case Status::buildError:
      return DetailOfBuildError(record);
    case Status::error:
      return NameOfCall(record.failedCalls.front());
    case Status::crash:
      return DetailOfCrash(record);
    case Status::timeout:
      return fmt::format("after {:.3g} s {}", record.seconds, PlaceOf(record));
    case Status::skip:
      return text::PrintableLine(record.ending.reason);
    case Status::missing:
      return FoundNoPlatform(record) ? "no OpenCL platform"
                                     : text::PrintableLine(record.ending.reason);
    default:
      return "";
  }
}

}  // namespace diagnosis
