#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "diagnosis/judgement/arithmetic.h"
#include "diagnosis/localization/fault.h"
#include "diagnosis/localization/row_data.h"

namespace diagnosis {

/// What a lane may hold.
class Prediction {
 public:
  /// Nothing is known of it.
  Prediction() = default;
  explicit Prediction(const RightAnswers& floats) : known_(true), floats_(floats) {}

  bool IsKnown() const { return known_; }
  void AddBits(std::uint32_t bits) { bits_.push_back(bits); }
  void ForgetFloats() { floats_ = RightAnswers(); }
  void Reverse() { reversed_ = true; }

  /// One of the answers that are allowed; nothing if none is known.
  std::optional<std::uint32_t> Sample() const;
  bool Allows(std::uint32_t bits) const;
  /// Whether byte `n` of a lane may be this one.
  bool AllowsByte(std::size_t n, std::uint8_t byte) const;

 private:
  bool known_ = false;
  bool reversed_ = false;
  RightAnswers floats_;
  std::vector<std::uint32_t> bits_;
};

/// What a device of that fault gives in a lane of an element.
Prediction Predict(const Fault& fault, const RowData& data, std::size_t repetition, int element,
                   int lane);

}  // namespace diagnosis
