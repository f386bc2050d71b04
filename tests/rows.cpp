#include "tests/rows.h"

#include <array>
#include <cstring>
#include <map>
#include <set>
#include <stdexcept>

#include "harness/rows.h"

namespace {

Row Describe(const std::string& name, int (*run)()) {
  Row row{};
  row.name = name;
  row.run = run;
  const std::size_t behindOperation = name.find("_union_");
  const std::size_t shape = behindOperation + std::strlen("_union_");
  row.operation = name.substr(0, behindOperation);
  row.shape = name.substr(shape, name.rfind('_') - shape);
  row.variant = name.back() - '0';
  if (row.shape == "arrays") {
    row.lanes = 4;
  } else if (row.shape == "scalar") {
    row.lanes = 1;
  } else {
    row.lanes = std::stoi(row.shape.substr(std::strlen("vector")));
  }
  row.stride = row.lanes == 16 ? 64 : 32;
  row.width = std::size_t{4} >> ((row.variant - 1) / 2);
  row.isSigned = row.variant % 2 == 1;
  row.twoInputs = row.operation == "add" || row.operation == "multiply";
  return row;
}

}  // namespace

const std::vector<Row>& Rows() {
  static const std::vector<Row> described = [] {
    std::vector<Row> all;
    for (const NamedRunner& row : rows) all.push_back(Describe(std::string(row.name), row.run));
    return all;
  }();
  return described;
}

const Row& RowNamed(const std::string& name) {
  for (const Row& row : Rows()) {
    if (row.name == name) return row;
  }
  throw std::invalid_argument("no row " + name);
}

int RunLines(const Row& row) { return row.name == "power_union_vector3_4" ? 9 : 10; }

int Runs(const Row& row) {
  static const std::set<std::string> once = {"copy_union_scalar_1", "copy_union_scalar_3",
                                             "copy_union_scalar_4", "copy_union_scalar_5",
                                             "copy_union_scalar_6"};
  return once.contains(row.name) ? 1 : RunLines(row);
}

int DrawsPerRun(const Row& row) {
  if (row.operation == "power" && row.shape == "scalar") return 80;
  return 10 * row.lanes * (row.twoInputs ? 4 : 2);
}

std::string Announcement(const Row& row) {
  const bool twoDots = row.operation == "multiply" && row.shape == "arrays";
  return "Running test " + row.name + (twoDots ? ".." : "...");
}

std::uint32_t Tolerance(const Row& row) {
  static const std::map<std::string, std::array<std::uint32_t, 6>> power = {
      {"arrays", {128, 128, 128, 128, 256, 128}},   {"scalar", {128, 128, 256, 128, 128, 128}},
      {"vector2", {128, 128, 256, 512, 256, 256}},  {"vector3", {128, 128, 128, 512, 128, 128}},
      {"vector4", {128, 128, 256, 256, 256, 128}},  {"vector8", {128, 128, 256, 256, 128, 128}},
      {"vector16", {128, 128, 256, 256, 256, 128}},
  };
  if (row.operation == "power")
    return power.at(row.shape)[static_cast<std::size_t>(row.variant - 1)];
  return row.twoInputs ? 2 : 0;
}

float IntegerLane(const Row& row, std::span<const std::byte> element, int lane) {
  std::int64_t value = 0;
  std::memcpy(&value, &element[static_cast<std::size_t>(lane) * row.width], row.width);
  const std::int64_t range = std::int64_t{1} << (8 * row.width);
  return static_cast<float>(row.isSigned && value >= range / 2 ? value - range : value);
}

float FloatLane(std::span<const std::byte> element, int lane) {
  float value = 0;
  std::memcpy(&value, &element[static_cast<std::size_t>(lane) * sizeof value], sizeof value);
  return value;
}
