#include "diagnosis/localization/experiment.h"

namespace diagnosis {
namespace {

// Zeros are what lies there otherwise, and much else can be zero.
std::vector<Experiment> On(const RowData& /*data*/, std::span<const Fault> /*rivals*/) {
  std::vector<Experiment> ways(1);
  ways[0].behind = {0x5B, 0xC7, 0x36, 0x49, 0x6D, 0xB2, 0xE8};
  return ways;
}

}  // namespace

const ExperimentKind experiments::filled_behind = {
    "filled-behind", "The inputs hold a pattern behind their last element.", On};

}  // namespace diagnosis
