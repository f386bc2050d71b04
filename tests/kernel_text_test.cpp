// The lengths of the kernel texts, counted apart from the template. Their bytes are held to
// digests.

#include <gtest/gtest.h>

#include <map>
#include <string>

#include "tests/devices.h"

namespace {

TEST(KernelText, HasTheLengthThatWasCounted) {
  const std::map<std::string, std::map<std::string, std::size_t>> ofInt = {
      {"add", {{"arrays", 4728}, {"scalar", 4713}, {"vector16", 4742}, {"vector", 4735}}},
      {"copy", {{"arrays", 4698}, {"scalar", 4639}, {"vector16", 4699}, {"vector", 4692}}},
      {"floor", {{"arrays", 4707}, {"scalar", 4616}, {"vector16", 4708}, {"vector", 4701}}},
      {"multiply", {{"arrays", 4733}, {"scalar", 4718}, {"vector16", 4747}, {"vector", 4740}}},
      {"power", {{"arrays", 4721}, {"scalar", 4647}, {"vector16", 4735}, {"vector", 4726}}},
  };
  // The element type's name stands in three places.
  constexpr std::size_t longerNames[] = {0, 3, 6, 9, 3, 6};
  constexpr std::size_t extraMembers = 522;  // in scalars of uint
  for (const auto& [text, row] : RowsByText()) {
    const auto& ofOperation = ofInt.at(row->operation);
    const auto shape = ofOperation.find(row->shape);
    std::size_t length = (shape == ofOperation.end() ? ofOperation.find("vector") : shape)->second;
    length += longerNames[row->variant - 1];
    if (row->shape == "scalar" && row->variant == 2) length += extraMembers;
    EXPECT_EQ(text.size(), length) << row->name;
  }
}

}  // namespace
