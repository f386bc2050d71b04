#include "tests/diagnosis/made_up_device.h"

#include <CL/cl.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <random>

namespace diagnosis {
namespace {

constexpr int items = 256;

void Store(Bytes& bytes, std::size_t at, std::uint32_t value, std::size_t width) {
  for (std::size_t n = 0; n < width && at + n < bytes.size(); ++n)
    bytes[at + n] = static_cast<std::uint8_t>(value >> (8 * n));
}

}  // namespace

std::uint64_t NumberAt(const std::uint8_t* bytes, std::size_t width) {
  std::uint64_t number = 0;
  for (std::size_t n = width; n-- > 0;) number = number << 8 | bytes[n];
  return number;
}

float FloatAtBytes(const std::uint8_t* bytes) {
  return std::bit_cast<float>(static_cast<std::uint32_t>(NumberAt(bytes, 4)));
}

MadeUpDevice::MadeUpDevice(const std::string& rowName) : row(RowNamed(rowName).value()) {
  reported.singleFpConfig = CL_FP_ROUND_TO_NEAREST | CL_FP_INF_NAN | CL_FP_DENORM;
  const auto place = [this](std::size_t item, std::size_t lane, std::size_t width) {
    return row.stride * item + width * lane;
  };
  placeOfA = [this, place](int item, int lane) {
    return place(static_cast<std::size_t>(item), static_cast<std::size_t>(lane), row.width);
  };
  placeOfB = [place](int item, int lane) {
    return place(static_cast<std::size_t>(item), static_cast<std::size_t>(lane), 4);
  };
  placeOfResult = [place](int item, int lane) {
    return static_cast<std::ptrdiff_t>(
        place(static_cast<std::size_t>(item), static_cast<std::size_t>(lane), 4));
  };
  integer = [this](const std::uint8_t* bytes) -> std::int64_t {
    const auto number = NumberAt(bytes, row.width);
    switch (row.elementType) {
      case ElementType::int_:
        return static_cast<std::int32_t>(number);
      case ElementType::short_:
        return static_cast<std::int16_t>(number);
      case ElementType::char_:
        return static_cast<std::int8_t>(number);
      default:
        return static_cast<std::int64_t>(number);
    }
  };
  real = FloatAtBytes;
  convert = [](std::int64_t value) { return static_cast<float>(value); };
  operandA = [this](const Bytes& a, std::size_t at) { return convert(integer(&a.at(at))); };
  operandB = [this](const Bytes& b, std::size_t at) { return real(&b.at(at)); };
  compute = [this](float a, float b, int exponent) {
    switch (row.operation) {
      case Operation::add:
        return a + b;
      case Operation::multiply:
        return a * b;
      case Operation::power:
        return static_cast<float>(std::pow(static_cast<double>(a), exponent));
      default:
        return a;
    }
  };
  bitsOf = [](float answer) { return std::bit_cast<std::uint32_t>(answer); };
}

float MadeUpDevice::Answer(const Bytes& a, const Bytes& b, int item, int lane) const {
  const float operand = row.twoInputs ? operandB(b, placeOfB(item, lane)) : 0.0F;
  const int exponent = row.shape == Shape::arrays ? lane : item;
  return compute(operandA(a, placeOfA(item, lane)), operand, exponent);
}

Record MadeUpDevice::Run(int repetitions, const Experiment& experiment) const {
  std::mt19937 random(1);
  const auto draw = [&random] { return static_cast<std::uint32_t>(random()) >> 1; };
  const auto size = row.stride * items;
  const auto ten = static_cast<std::ptrdiff_t>(row.stride * elementsOfRow);
  Bytes a(size);
  Bytes b(row.twoInputs ? size : 0);
  Bytes result(size, fresh);
  // What lies behind the elements and between their members is anything.
  for (Bytes* bytes : {&a, &b}) {
    for (auto& byte : *bytes) byte = static_cast<std::uint8_t>(draw());
  }
  const auto behind = [ten](const Bytes& bytes) {
    return bytes.empty() ? Bytes() : Bytes(bytes.begin() + ten, bytes.end());
  };
  const auto fill = [](Bytes& bytes, std::ptrdiff_t from, const Bytes& with) {
    for (auto at = static_cast<std::size_t>(from); at < bytes.size() && !with.empty(); ++at)
      bytes[at] = with[(at - static_cast<std::size_t>(from)) % with.size()];
  };
  fill(a, ten, experiment.behind);
  fill(b, ten, experiment.behind);
  Record record;
  record.row = row.name;
  record.experiment = experiment;
  for (int repetition = 0; repetition < repetitions; ++repetition) {
    for (std::size_t element = 0; element < elementsOfRow; ++element) {
      for (std::size_t lane = 0; lane < static_cast<std::size_t>(row.lanes); ++lane) {
        for (Bytes* bytes : {&a, &b}) {
          if (bytes->empty()) continue;
          Store(*bytes, row.stride * element + row.width * lane, draw(), row.width);
          Store(*bytes, row.stride * element + 4 * lane,
                std::bit_cast<std::uint32_t>(static_cast<float>(draw())), 4);
        }
      }
    }
    std::ranges::copy(experiment.inputA, a.begin());
    std::ranges::copy(experiment.inputB, b.begin());
    fill(result, 0, experiment.result);
    for (int item = 0; item < items; ++item) {
      for (int lane = 0; lane < row.lanes; ++lane) {
        const std::ptrdiff_t at = placeOfResult(item, lane);
        // A device that reads beyond its buffers is not tried so far.
        const bool reads = placeOfA(item, lane) + 4 <= size &&
                           (!row.twoInputs || placeOfB(item, lane) + 4 <= size);
        if (at < 0 || !reads) continue;
        Store(result, static_cast<std::size_t>(at), bitsOf(Answer(a, b, item, lane)), 4);
      }
    }
    const auto front = [ten](const Bytes& bytes) {
      return bytes.empty() ? Bytes() : Bytes(bytes.begin(), bytes.begin() + ten);
    };
    record.repetitions.push_back({front(a), front(b), true, front(result), ""});
  }
  record.behindA = behind(a);
  record.behindB = behind(b);
  record.ending = {Ending::Kind::returned, 0, ""};
  return record;
}

}  // namespace diagnosis
