#include "exploration/execution/outcome.h"

#include <fmt/format.h>
#include <sys/wait.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <utility>

#include "exploration/execution/events.h"

namespace exploration {
namespace {

using Kind = Outcome::Kind;

// OpenCL 1.2's error codes from -1 on down; the empty ones are no codes.
constexpr std::string_view firstCodes[] = {"CL_DEVICE_NOT_FOUND",
                                           "CL_DEVICE_NOT_AVAILABLE",
                                           "CL_COMPILER_NOT_AVAILABLE",
                                           "CL_MEM_OBJECT_ALLOCATION_FAILURE",
                                           "CL_OUT_OF_RESOURCES",
                                           "CL_OUT_OF_HOST_MEMORY",
                                           "CL_PROFILING_INFO_NOT_AVAILABLE",
                                           "CL_MEM_COPY_OVERLAP",
                                           "CL_IMAGE_FORMAT_MISMATCH",
                                           "CL_IMAGE_FORMAT_NOT_SUPPORTED",
                                           "CL_BUILD_PROGRAM_FAILURE",
                                           "CL_MAP_FAILURE",
                                           "CL_MISALIGNED_SUB_BUFFER_OFFSET",
                                           "CL_EXEC_STATUS_ERROR_FOR_EVENTS_IN_WAIT_LIST",
                                           "CL_COMPILE_PROGRAM_FAILURE",
                                           "CL_LINKER_NOT_AVAILABLE",
                                           "CL_LINK_PROGRAM_FAILURE"};
constexpr std::string_view laterCodes[] = {  // from -30 on
    "CL_INVALID_VALUE",           "CL_INVALID_DEVICE_TYPE",
    "CL_INVALID_PLATFORM",        "CL_INVALID_DEVICE",
    "CL_INVALID_CONTEXT",         "CL_INVALID_QUEUE_PROPERTIES",
    "CL_INVALID_COMMAND_QUEUE",   "CL_INVALID_HOST_PTR",
    "CL_INVALID_MEM_OBJECT",      "CL_INVALID_IMAGE_FORMAT_DESCRIPTOR",
    "CL_INVALID_IMAGE_SIZE",      "CL_INVALID_SAMPLER",
    "CL_INVALID_BINARY",          "CL_INVALID_BUILD_OPTIONS",
    "CL_INVALID_PROGRAM",         "CL_INVALID_PROGRAM_EXECUTABLE",
    "CL_INVALID_KERNEL_NAME",     "CL_INVALID_KERNEL_DEFINITION",
    "CL_INVALID_KERNEL",          "CL_INVALID_ARG_INDEX",
    "CL_INVALID_ARG_VALUE",       "CL_INVALID_ARG_SIZE",
    "CL_INVALID_KERNEL_ARGS",     "CL_INVALID_WORK_DIMENSION",
    "CL_INVALID_WORK_GROUP_SIZE", "CL_INVALID_WORK_ITEM_SIZE",
    "CL_INVALID_GLOBAL_OFFSET",   "CL_INVALID_EVENT_WAIT_LIST",
    "CL_INVALID_EVENT",           "CL_INVALID_OPERATION"};

std::string CodeName(int code) {
  const auto from = [code](const auto& names, int first) -> std::string_view {
    const int index = first - code;
    return index >= 0 && index < static_cast<int>(std::size(names)) ? names[index] : "";
  };
  const std::string_view name = code <= -30 ? from(laterCodes, -30) : from(firstCodes, -1);
  return name.empty() ? fmt::format("code {}", code) : fmt::format("{} ({})", name, code);
}

std::string SignalName(int signal) {
  const char* const name = sigabbrev_np(signal);
  return name != nullptr ? fmt::format("SIG{}", name) : fmt::format("signal {}", signal);
}

// What compilers print that have caught their own crash.
bool TellsOfCrash(std::string_view text) {
  for (const std::string_view words :
       {"PLEASE submit a bug report", "internal compiler error", "Stack dump:", "LLVM ERROR",
        "Assertion `", "fatal error: error in backend"})
    if (text.find(words) != std::string_view::npos) return true;
  return false;
}

bool IsRight(const RunnableBuffer& buffer, std::string_view bytes, std::string_view other) {
  for (std::size_t i = 0; i < buffer.known.size(); ++i)
    if (((bytes[i] ^ other[i]) & static_cast<char>(buffer.known[i])) != 0) return false;
  return true;
}

void JudgeCompiler(int status, Outcome& outcome) {
  const int exitStatus = WIFEXITED(status) ? WEXITSTATUS(status) : 0;
  if (WIFSIGNALED(status)) {
    outcome.kind = Kind::crashed;
    outcome.code = WTERMSIG(status);
  } else if (exitStatus != 0) {
    // A shell, or a compiler's driver, has seen the signal; most add it to 128.
    const bool isCrash = exitStatus >= 128 || TellsOfCrash(outcome.text);
    outcome.kind = isCrash ? Kind::crashed : Kind::refused;
    outcome.code = isCrash ? -exitStatus : exitStatus;
  } else {
    outcome.kind = Kind::right;
  }
}

void JudgeAnswers(const RunnableProgram& program, const std::vector<std::string_view>& answers,
                  Outcome& outcome) {
  std::vector<const RunnableBuffer*> buffers;
  for (const RunnableBuffer& buffer : program.buffers)
    if (buffer.isAnswer) buffers.push_back(&buffer);
  std::string printed = std::exchange(outcome.text, "");
  outcome.text = "what the worker has told is damaged";
  if (answers.size() != 2 * buffers.size()) return;
  for (std::size_t i = 0; i < answers.size(); ++i)
    if (answers[i].size() != buffers[i % buffers.size()]->bytes.size()) return;
  outcome.text = std::move(printed);
  outcome.kind = Kind::right;
  for (std::size_t i = 0; i < buffers.size(); ++i) {
    const RunnableBuffer& buffer = *buffers[i];
    const std::string_view first = answers[i];
    const std::string_view second = answers[buffers.size() + i];
    const std::string_view expected(reinterpret_cast<const char*>(buffer.expected.data()),
                                    buffer.expected.size());
    if (!IsRight(buffer, first, second)) outcome.kind = Kind::unsteady;
    if (outcome.kind == Kind::right && !IsRight(buffer, first, expected))
      outcome.kind = Kind::wrongAnswer;
  }
}

// The worker's end, where that was not the task's.
void JudgeEnd(const workers::Answer& answer, Outcome& outcome) {
  switch (answer.ending) {
    case workers::Ending::returned:
      break;
    case workers::Ending::exited:
      outcome.kind = Kind::crashed;
      outcome.code = -answer.value;
      break;
    case workers::Ending::signalled:
      outcome.kind = Kind::crashed;
      outcome.code = answer.value;
      break;
    case workers::Ending::timedOut:
      outcome.kind = Kind::hung;
      break;
    case workers::Ending::notRun:
    case workers::Ending::lost:
      outcome.kind = Kind::notRun;
      outcome.text = answer.reason;
      break;
  }
}

}  // namespace

std::string_view NameOf(Outcome::Kind kind) {
  constexpr std::string_view names[] = {"right",         "wrong answer", "unsteady answer",
                                        "build refused", "call failed",  "crash",
                                        "hang",          "not run"};
  return names[static_cast<std::size_t>(kind)];
}

std::string Told(const Outcome& outcome) {
  const std::string in = outcome.call.empty() ? "" : " in " + outcome.call;
  switch (outcome.kind) {
    case Kind::refused:
    case Kind::callFailed:
      return outcome.call == "the compiler"
                 ? fmt::format("the compiler refuses it with status {}", outcome.code)
                 : fmt::format("{} fails with {}", outcome.call, CodeName(outcome.code));
    case Kind::crashed:
      return outcome.code > 0 ? fmt::format("a crash ({}){}", SignalName(outcome.code), in)
                              : fmt::format("the process ends with status {}{}", -outcome.code, in);
    case Kind::hung:
      return "a hang" + in;
    case Kind::unsteady:
      return "two runs of one build answer differently";
    default:
      return std::string(NameOf(outcome.kind));
  }
}

Outcome Judged(const Task& task, const workers::Answer& answer) {
  Outcome outcome;
  outcome.seconds = answer.seconds;
  outcome.text = answer.printed;
  std::vector<std::string_view> answers;
  bool isDone = false;
  for (const Event& event : EventsIn(answer.bytes)) {
    switch (event.kind) {
      case Event::Kind::call:
        if (outcome.kind == Kind::notRun) outcome.call = event.bytes;
        break;
      case Event::Kind::failed:
        outcome.kind = outcome.call == "clBuildProgram" ? Kind::refused : Kind::callFailed;
        outcome.code = event.Number();
        break;
      case Event::Kind::log:
        outcome.text = event.bytes;
        break;
      case Event::Kind::answer:
        answers.push_back(event.bytes);
        break;
      case Event::Kind::status:
        JudgeCompiler(event.Number(), outcome);
        break;
      case Event::Kind::cannot:
        outcome.text = event.bytes;
        return outcome;
      case Event::Kind::done:
        isDone = true;
        break;
    }
  }
  const std::size_t buffers = static_cast<std::size_t>(
      std::count_if(task.program.buffers.begin(), task.program.buffers.end(),
                    [](const RunnableBuffer& buffer) { return buffer.isAnswer; }));
  for (std::size_t i = 0; i < std::min(buffers, answers.size()); ++i)
    outcome.answers.emplace_back(answers[i].begin(), answers[i].end());
  if (!isDone) JudgeEnd(answer, outcome);
  if (isDone && outcome.kind == Kind::notRun) JudgeAnswers(task.program, answers, outcome);
  if (outcome.kind == Kind::right || outcome.kind == Kind::wrongAnswer ||
      outcome.kind == Kind::unsteady)
    outcome.call.clear();
  return outcome;
}

std::vector<Difference> DifferencesOf(const RunnableProgram& program, const Outcome& outcome,
                                      bool customary) {
  std::vector<Difference> differences;
  std::size_t index = 0;
  for (const RunnableBuffer& buffer : program.buffers) {
    if (!buffer.isAnswer || index >= outcome.answers.size()) continue;
    const std::vector<std::uint8_t>& actual = outcome.answers[index];
    const std::vector<std::uint8_t>& mask = customary ? buffer.customary : buffer.known;
    for (std::size_t i = 0; i < std::min(actual.size(), mask.size()); ++i)
      if (((actual[i] ^ buffer.expected[i]) & mask[i]) != 0)
        differences.push_back({index, i, buffer.expected[i], actual[i]});
    ++index;
  }
  return differences;
}

}  // namespace exploration
