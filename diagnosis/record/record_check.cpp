#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <optional>
#include <string_view>

#include "diagnosis/record/record.h"
#include "diagnosis/record/row.h"

namespace diagnosis {

namespace {

/// Empty if the bytes are none, or as many as there must be.
std::string FaultInSize(std::string_view name, const Bytes& bytes, std::size_t size) {
  if (bytes.empty() || bytes.size() == size) return "";
  return fmt::format("{} has {} bytes in place of {}", name, bytes.size(), size);
}

std::string FaultInBytes(const Record& record) {
  const std::optional<Row> row = RowNamed(record.row);
  // Of a row that nobody knows, nobody looks at the bytes.
  if (!row) return "";
  const std::size_t elements = row->stride * elementsOfRow;
  const std::size_t behind = row->stride * elementsInBuffer - elements;
  const std::size_t elementsB = row->twoInputs ? elements : 0;
  const std::size_t behindB = row->twoInputs ? behind : 0;
  for (std::size_t i = 0; i < record.repetitions.size(); ++i) {
    const Repetition& repetition = record.repetitions[i];
    for (const std::string& fault : {FaultInSize("inputA", repetition.inputA, elements),
                                     FaultInSize("inputB", repetition.inputB, elementsB),
                                     FaultInSize("result", repetition.result, elements)}) {
      if (!fault.empty()) return fmt::format("repetitions[{}].{}", i, fault);
    }
  }
  for (std::string fault : {FaultInSize("behindA", record.behindA, behind),
                            FaultInSize("behindB", record.behindB, behindB)}) {
    if (!fault.empty()) return fault;
  }
  return "";
}

}  // namespace

bool IsSameOutcome(const Record& one, const Record& other) {
  const auto isSameCall = [](const FailedCall& call, const FailedCall& of) {
    return call.name == of.name && call.code == of.code && call.repetition == of.repetition;
  };
  const std::optional<Row> row = RowNamed(one.row);
  // What else is in a union nobody wrote.
  const auto isSameAnswer = [&row](const Repetition& repetition, const Repetition& of) {
    const Bytes& answer = repetition.result;
    if (!row || answer.size() != of.result.size()) return answer == of.result;
    const std::size_t size = static_cast<std::size_t>(row->lanes) * sizeof(float);
    for (std::size_t at = 0; at + size <= answer.size(); at += row->stride)
      if (std::memcmp(&answer[at], &of.result[at], size) != 0) return false;
    return true;
  };
  return one.ending.kind == other.ending.kind && one.ending.value == other.ending.value &&
         one.out == other.out &&
         std::ranges::equal(one.failedCalls, other.failedCalls, isSameCall) &&
         std::ranges::equal(one.repetitions, other.repetitions, isSameAnswer);
}

std::string FaultIn(const Record& record) {
  for (const Record& shared : record.inShared) {
    if (record.inShared.size() > 1 || shared.row != record.row)
      return "inShared holds more than a run of the row";
    if (std::string fault = FaultIn(shared); !fault.empty()) return "inShared[0]." + fault;
  }
  if (std::string fault = FaultInBytes(record); !fault.empty()) return fault;
  const Experiment& experiment = record.experiment;
  if (experiment.repetition < 1 || experiment.element < 0 || experiment.lane < 0 ||
      experiment.passes < 1)
    return "experiment is of no lane, or no pass";
  for (std::size_t i = 0; i < record.failedCalls.size(); ++i) {
    const int repetition = record.failedCalls[i].repetition;
    if (repetition < 0 || static_cast<std::size_t>(repetition) > record.repetitions.size())
      return fmt::format("failedCalls[{}].repetition is none of those that there are", i);
  }
  if (record.launches < 0) return "launches is negative";
  const auto isTime = [](double seconds) { return std::isfinite(seconds) && seconds >= 0; };
  if (!isTime(record.seconds)) return "seconds is no length of time";
  if (!isTime(record.buildSeconds)) return "buildSeconds is no length of time";
  return "";
}

}  // namespace diagnosis
