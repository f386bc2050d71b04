#include "common/outputs/junit.h"

#include <fmt/format.h>

#include <algorithm>
#include <pugixml.hpp>
#include <sstream>
#include <string_view>

#include "common/text/text.h"

namespace outputs {

namespace {

using Properties = std::vector<std::pair<std::string, std::string>>;

// What a case wrote may be of any size.
constexpr std::size_t mostBytes = 65536;

std::string Cut(std::string_view output) {
  std::string text = text::Printable(output.substr(0, mostBytes));
  if (output.size() > mostBytes)
    text += fmt::format("\n... and {} bytes more\n", output.size() - mostBytes);
  return text;
}

void AppendOutput(pugi::xml_node node, const char* name, std::string_view output) {
  if (!output.empty()) node.append_child(name).text().set(Cut(output).c_str());
}

// The element that says of a case that it did not simply pass.
const char* ElementOf(const Case& one) {
  if (one.kind == Kind::passed && one.asExpected) return nullptr;
  if (one.asExpected) return "skipped";
  const bool isFailure =
      one.kind == Kind::passed || one.kind == Kind::failed || one.kind == Kind::noted;
  return isFailure ? "failure" : "error";
}

void Set(pugi::xml_node node, const char* name, const std::string& value) {
  node.append_attribute(name).set_value(value.c_str());
}

void AppendProperties(pugi::xml_node node, const Properties& properties) {
  if (properties.empty()) return;
  pugi::xml_node list = node.append_child("properties");
  for (const auto& [name, value] : properties) {
    pugi::xml_node property = list.append_child("property");
    Set(property, "name", text::Printable(name));
    Set(property, "value", text::PrintableLine(value, 2000));
  }
}

void AppendCase(pugi::xml_node suite, const Case& one, const std::string& classPrefix) {
  pugi::xml_node test = suite.append_child("testcase");
  Set(test, "name", one.name);
  Set(test, "classname", classPrefix + "." + one.group);
  Set(test, "time", fmt::format("{:.3f}", one.seconds));
  AppendProperties(test, one.properties);
  if (const char* element = ElementOf(one)) {
    pugi::xml_node cause = test.append_child(element);
    Set(cause, "type", one.status);
    Set(cause, "message", text::PrintableLine(one.line, 1000));
    // Servers show the body; a status is better than nothing there.
    const std::string& line = one.line.empty() ? one.status : one.line;
    cause.text().set(Cut(one.cause.empty() ? line : one.cause).c_str());
  }
  AppendOutput(test, "system-out", one.remark.empty() ? one.out : one.remark + "\n" + one.out);
  AppendOutput(test, "system-err", one.err);
}

struct Counts {
  std::size_t tests = 0;
  std::size_t failures = 0;
  std::size_t errors = 0;
  std::size_t skipped = 0;
  double seconds = 0;

  void Add(const Case& one) {
    ++tests;
    seconds += one.seconds;
    const char* element = ElementOf(one);
    const std::string_view name = element == nullptr ? "" : element;
    if (name == "failure") ++failures;
    if (name == "error") ++errors;
    if (name == "skipped") ++skipped;
  }
};

void SetCounts(pugi::xml_node node, const Counts& counts) {
  Set(node, "tests", std::to_string(counts.tests));
  Set(node, "failures", std::to_string(counts.failures));
  Set(node, "errors", std::to_string(counts.errors));
  Set(node, "skipped", std::to_string(counts.skipped));
  Set(node, "time", fmt::format("{:.3f}", counts.seconds));
}

}  // namespace

std::string JUnitOf(const SuiteInfo& info, const std::vector<Case>& cases) {
  pugi::xml_document document;
  pugi::xml_node declaration = document.append_child(pugi::node_declaration);
  Set(declaration, "version", "1.0");
  Set(declaration, "encoding", "UTF-8");
  pugi::xml_node root = document.append_child("testsuites");
  Set(root, "name", info.name);
  Counts all;
  std::vector<std::string_view> groups;
  for (const Case& one : cases) {
    all.Add(one);
    if (std::ranges::find(groups, one.group) == groups.end()) groups.push_back(one.group);
  }
  SetCounts(root, all);
  for (const std::string_view group : groups) {
    pugi::xml_node suite = root.append_child("testsuite");
    Set(suite, "name", std::string(group));
    Counts counts;
    for (const Case& one : cases)
      if (one.group == group) counts.Add(one);
    SetCounts(suite, counts);
    Set(suite, "timestamp", info.start.substr(0, info.start.find('Z')));
    AppendProperties(suite, info.properties);
    for (const Case& one : cases)
      if (one.group == group) AppendCase(suite, one, info.classPrefix);
  }
  std::ostringstream text;
  document.save(text, " ", pugi::format_default, pugi::encoding_utf8);
  return std::move(text).str();
}

}  // namespace outputs
