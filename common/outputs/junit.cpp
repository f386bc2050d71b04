#include "common/outputs/junit.h"

#include <fmt/format.h>

#include <pugixml.hpp>
#include <sstream>
#include <string_view>

#include "common/text/text.h"

namespace diagnosis {

namespace {

// What a row wrote may be of any size. records.jsonl has all of it.
constexpr std::size_t mostBytes = 65536;

void AppendOutput(pugi::xml_node node, const char* name, std::string_view output) {
  if (output.empty()) return;
  std::string text = text::Printable(output.substr(0, mostBytes));
  if (output.size() > mostBytes)
    text += fmt::format("\n... and {} bytes more, which are in records.jsonl\n",
                        output.size() - mostBytes);
  node.append_child(name).text().set(text.c_str());
}

// The element that says of a case that it did not simply pass.
const char* ElementOf(const AccountedRow& row) {
  if (row.status == Status::pass) return nullptr;
  if (row.asExpected) return "skipped";
  const bool isFailure = row.status == Status::fail || row.status == Status::unexpectedPass ||
                         row.status == Status::flake;
  return isFailure ? "failure" : "error";
}

struct Counts {
  int tests = 0;
  int failures = 0;
  int errors = 0;
  int skipped = 0;
  double seconds = 0;
};

void Set(pugi::xml_node node, const char* name, const std::string& value) {
  pugi::xml_attribute attribute = node.attribute(name);
  if (!attribute) attribute = node.append_attribute(name);
  attribute.set_value(value.c_str());
}

void SetCounts(pugi::xml_node node, const Counts& counts) {
  Set(node, "tests", std::to_string(counts.tests));
  Set(node, "failures", std::to_string(counts.failures));
  Set(node, "errors", std::to_string(counts.errors));
  Set(node, "skipped", std::to_string(counts.skipped));
  Set(node, "time", fmt::format("{:.3f}", counts.seconds));
}

}  // namespace

struct JUnit::Tree {
  pugi::xml_document document;
  pugi::xml_node root;
};

JUnit::JUnit() : tree_(std::make_unique<Tree>()) {
  pugi::xml_node declaration = tree_->document.append_child(pugi::node_declaration);
  declaration.append_attribute("version") = "1.0";
  declaration.append_attribute("encoding") = "UTF-8";
  tree_->root = tree_->document.append_child("testsuites");
  tree_->root.append_attribute("name") = "union conformance suite";
}

JUnit::~JUnit() = default;

void JUnit::Put(const Record& record, const AccountedRow& row) {
  const std::string operation = row.name.substr(0, row.name.find('_'));
  pugi::xml_node suite = tree_->root.find_child_by_attribute("name", operation.c_str());
  if (!suite) {
    suite = tree_->root.append_child("testsuite");
    suite.append_attribute("name") = operation.c_str();
  }
  pugi::xml_node test = suite.find_child_by_attribute("name", row.name.c_str());
  if (!test) test = suite.append_child("testcase");
  test.remove_children();
  Set(test, "name", row.name);
  Set(test, "classname", "union_suite." + operation);
  Set(test, "time", fmt::format("{:.3f}", row.seconds));
  if (const char* element = ElementOf(row)) {
    pugi::xml_node cause = test.append_child(element);
    cause.append_attribute("type") = std::string(NameOf(row.status)).c_str();
    cause.append_attribute("message") = row.detail.c_str();
    if (row.status == Status::buildError)
      cause.text().set(
          text::Printable(std::string_view(record.buildLog).substr(0, mostBytes)).c_str());
  }
  AppendOutput(test, "system-out", record.out);
  AppendOutput(
      test, "system-err",
      record.driver.empty() ? record.err : record.err + "What the driver wrote:\n" + record.driver);
}

std::string JUnit::Text(const RunInfo& info) {
  Counts all;
  for (pugi::xml_node suite : tree_->root.children()) {
    Counts counts;
    for (const pugi::xml_node test : suite.children()) {
      ++counts.tests;
      if (!test.child("failure").empty()) ++counts.failures;
      if (!test.child("error").empty()) ++counts.errors;
      if (!test.child("skipped").empty()) ++counts.skipped;
      counts.seconds += test.attribute("time").as_double();
    }
    SetCounts(suite, counts);
    Set(suite, "timestamp", info.start.substr(0, info.start.find('Z')));
    Set(suite, "hostname", text::Printable(info.host));
    all.tests += counts.tests;
    all.failures += counts.failures;
    all.errors += counts.errors;
    all.skipped += counts.skipped;
    all.seconds += counts.seconds;
  }
  SetCounts(tree_->root, all);
  std::ostringstream text;
  tree_->document.save(text, " ", pugi::format_default, pugi::encoding_utf8);
  return std::move(text).str();
}

}  // namespace diagnosis
