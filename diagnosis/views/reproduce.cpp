#include "diagnosis/views/reproduce.h"

#include <CL/cl.h>
#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <utility>
#include <vector>

#include "common/reproducer/reproducer.h"
#include "diagnosis/judgement/opinion.h"
#include "diagnosis/record/row.h"
#include "diagnosis/record/row_facts.h"
#include "diagnosis/verdict/ledger.h"

namespace diagnosis {
namespace {

/// A repetition and its number, from 1.
struct Chosen {
  Repetition repetition;
  int number;
  bool madeUp;
};

bool HasInputs(const Row& row, const Repetition& repetition) {
  const std::size_t size = row.stride * elementsOfRow;
  return repetition.inputA.size() >= size && (!row.twoInputs || repetition.inputB.size() >= size);
}

/// Small integers in every byte, so that no view of them is special.
Repetition MadeUp(const Row& row) {
  Repetition repetition;
  for (std::size_t i = 0; i < row.stride * elementsOfRow; ++i) {
    repetition.inputA.push_back(static_cast<std::uint8_t>(0x11 + i % 0x60));
    repetition.inputB.push_back(static_cast<std::uint8_t>(0x21 + i % 0x50));
  }
  if (!row.twoInputs) repetition.inputB.clear();
  return repetition;
}

int RejectedRepetition(const Row& row, const Record& record) {
  const auto rejected = std::ranges::find_if(record.repetitions, [&row](const Repetition& one) {
    return FoundMismatch(one) && HasInputs(row, one);
  });
  return rejected == record.repetitions.end()
             ? 0
             : static_cast<int>(rejected - record.repetitions.begin()) + 1;
}

Chosen Choose(const Row& row, const Record& record, const Opinion& opinion) {
  int number = 0;
  const bool cameBack = record.ending.kind == Ending::Kind::returned && record.failedCalls.empty();
  if (cameBack && !opinion.wrong.empty()) {
    number = opinion.wrong.front().repetition;
  } else if (cameBack) {
    number = RejectedRepetition(row, record);
  }
  if (number == 0) {
    const auto last = std::ranges::find_if(
        record.repetitions.rbegin(), record.repetitions.rend(),
        [&row](const Repetition& repetition) { return HasInputs(row, repetition); });
    number = static_cast<int>(record.repetitions.rend() - last);
  }
  if (number == 0) return {MadeUp(row), 1, true};
  return {record.repetitions[static_cast<std::size_t>(number) - 1], number, false};
}

/// A device whose report is not to be had is held to what every full profile has.
std::uint64_t KnownConfigOf(const Device& device) {
  return device.singleFpConfig != 0 ? device.singleFpConfig
                                    : CL_FP_ROUND_TO_NEAREST | CL_FP_INF_NAN;
}

std::uint32_t BitsAt(std::int64_t place) {
  return place < 0 ? 0x80000000U | static_cast<std::uint32_t>(-place)
                   : static_cast<std::uint32_t>(place);
}

/// Intervals of bits, each with what a person reads behind it.
void AddRight(std::vector<reproducer::Right>& right, int element, int lane,
              const RightAnswers& answers) {
  const auto add = [&right, element, lane](std::uint32_t first, std::uint32_t last,
                                           std::string value) {
    right.push_back(
        {element, lane, std::min(first, last), std::max(first, last), std::move(value)});
  };
  for (const RightAnswer& one : answers.Floats()) {
    const std::string value = fmt::format("{}", one.value);
    if (one.first < 0) add(BitsAt(std::min<std::int64_t>(one.last, -1)), BitsAt(one.first), value);
    if (one.first <= 0 && one.last >= 0) {
      const std::uint32_t zero = std::signbit(one.value) ? 0x80000000U : 0;
      add(zero, zero, value);
    }
    if (one.last > 0) add(BitsAt(std::max<std::int64_t>(one.first, 1)), BitsAt(one.last), value);
  }
  if (answers.HaveAnyNan()) {
    add(0x7F800001, 0x7FFFFFFF, "any NaN");
    add(0xFF800001, 0xFFFFFFFF, "any NaN");
  }
}

/// The answers that are right on a device that reports this.
std::vector<reproducer::Right> RightOn(Device device, std::uint64_t config, const Row& row,
                                       const Repetition& repetition,
                                       const std::string& buildOptions) {
  device.singleFpConfig = config;
  const FloatMode mode = ModeOf(device, buildOptions);
  std::vector<reproducer::Right> right;
  for (int element = 0; element < elementsOfRow; ++element) {
    for (int lane = 0; lane < row.lanes; ++lane)
      AddRight(right, element, lane, RightAnswersOf(row, repetition, element, lane, mode));
  }
  return right;
}

/// On which bits of the device's report these answers depend.
std::uint64_t BitsThatMatter(const Device& device, const Row& row, const Repetition& repetition,
                             const std::string& buildOptions,
                             const std::vector<reproducer::Right>& right) {
  std::uint64_t bits = 0;
  for (const cl_device_fp_config bit :
       {cl_device_fp_config{CL_FP_DENORM}, cl_device_fp_config{CL_FP_ROUND_TO_NEAREST}}) {
    // One more bit that decides nothing, so that there is a report.
    const std::uint64_t other = (KnownConfigOf(device) ^ bit) | CL_FP_INF_NAN;
    if (RightOn(device, other, row, repetition, buildOptions) != right) bits |= bit;
  }
  return bits;
}

std::string FloatsOf(const Device& device, std::uint64_t bits) {
  const std::string reported =
      device.singleFpConfig == 0
          ? "The device does not say what its floats can do."
          : fmt::format("CL_DEVICE_SINGLE_FP_CONFIG is 0x{:X}.", device.singleFpConfig);
  if (bits == 0)
    return reported + " The right answers below are the same whatever a device reports.";
  std::vector<std::string_view> words;
  if ((bits & CL_FP_DENORM) != 0)
    words.emplace_back((KnownConfigOf(device) & CL_FP_DENORM) != 0
                           ? "has CL_FP_DENORM, so that nothing may be flushed"
                           : "has no CL_FP_DENORM, so that denormals may be flushed");
  if ((bits & CL_FP_ROUND_TO_NEAREST) != 0)
    words.emplace_back((KnownConfigOf(device) & CL_FP_ROUND_TO_NEAREST) != 0
                           ? "rounds to nearest"
                           : "rounds toward zero");
  return fmt::format(
      "{} The right answers below are for a device that {}; on another the program ends with 2.",
      reported, fmt::join(words, " and "));
}

std::string Seen(const Record& record, const Opinion& opinion, const Chosen& chosen) {
  const std::string detail = DetailOf(record);
  std::string seen =
      fmt::format("{}{}{}. ", NameOf(StatusOf(record)), detail.empty() ? "" : ": ", detail);
  switch (opinion.verdict) {
    case Opinion::Verdict::unseen:
      seen += "No result came back.";
      break;
    case Opinion::Verdict::right:
      seen +=
          fmt::format("All {} lanes that came back are right by OpenCL's rules.", opinion.lanes);
      break;
    case Opinion::Verdict::wrong:
      seen += fmt::format("{} of {} lanes that came back are wrong by OpenCL's rules.",
                          opinion.wrong.size(), opinion.lanes);
      break;
  }
  seen += chosen.madeUp
              ? " The row did not come to its data; the inputs here are made up."
              : fmt::format(" The inputs here are those of repetition {}.", chosen.number);
  return seen;
}

std::vector<reproducer::Remark> HeadOf(const Record& record, const Device& device,
                                       const Suspects& suspects, const std::string& seen,
                                       const std::string& floats, std::string_view file) {
  std::vector<reproducer::Remark> head = {
      {"Row:", record.row},
      {"Device:", device.name + " (" + device.vendor + ", " + device.version + ")"},
      {"Platform:", device.platform},
      {"Driver:", device.driverVersion},
      {"Floats:", floats},
      {"Seen:", seen}};
  const std::vector<NamedSuspect>& named = suspects.Of(record.row);
  for (const NamedSuspect& suspect : named)
    head.push_back(
        {&suspect == &named.front() ? "Suspects:" : "", suspect.name + ": " + suspect.meaning});
  if (named.empty()) head.push_back({"Suspects:", "none"});
  head.push_back(reproducer::HowToCompile(file));
  head.push_back(
      {"Status:",
       "0 if the device is right, 1 if not, 2 if a call fails or the device is of another "
       "kind than the answers are for"});
  return head;
}

}  // namespace

std::string ReproducerOf(const Record& record, const Device& device, const Suspects& suspects,
                         std::string_view file) {
  const std::optional<Row> row = RowNamed(record.row);
  if (!row) throw std::invalid_argument("no row is called '" + record.row + "'");
  const Opinion opinion = OpinionOf(record, device);
  const Chosen chosen = Choose(*row, record, opinion);
  const std::string ownFile = record.row + ".c";

  reproducer::Case made;
  // A row that came to nothing has not shown its text either.
  made.source = record.source.empty() ? KernelTextOf(*row) : record.source;
  made.kernel = record.kernel.empty() ? FactsOf(record.row)->kernel : record.kernel;
  made.buildOptions = record.buildOptions;
  made.inputs.push_back(chosen.repetition.inputA);
  if (row->twoInputs) made.inputs.push_back(chosen.repetition.inputB);
  made.elements = elementsOfRow;
  made.lanes = row->lanes;
  made.stride = row->stride;
  made.globalSize = elementsInBuffer;
  made.localSize = record.localSize;
  made.repetitions = chosen.number;
  made.right = RightOn(device, device.singleFpConfig, *row, chosen.repetition, record.buildOptions);
  made.assumed = device.singleFpConfig;
  made.assumedBits =
      BitsThatMatter(device, *row, chosen.repetition, record.buildOptions, made.right);
  made.head = HeadOf(record, device, suspects, Seen(record, opinion, chosen),
                     FloatsOf(device, made.assumedBits), file.empty() ? ownFile : file);
  return reproducer::ProgramOf(made);
}

}  // namespace diagnosis
