// The file for CI servers: every status with its cause, and XML whatever a driver wrote. (The
// script that runs the program has it read by xmllint.)

#include "common/outputs/junit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <pugixml.hpp>
#include <string>

#include "common/text/text.h"
#include "diagnosis/views/cases.h"
#include "made_up_records.h"

namespace diagnosis {
namespace {

pugi::xml_document Parsed(const std::string& text) {
  pugi::xml_document document;
  const pugi::xml_parse_result result =
      document.load_buffer(text.data(), text.size(), pugi::parse_full, pugi::encoding_utf8);
  EXPECT_TRUE(result) << result.description() << " at " << result.offset;
  return document;
}

TEST(JUnit, KeepsTheCauseOfWhatDidNotPass) {
  struct {
    const char* row;
    Status status;
    const char* element;  // of the case; empty for none
    const char* message;
  } const cases[] = {
      {"add_union_scalar_1", Status::pass, "", ""},
      {"add_union_scalar_2", Status::fail, "failure", "c:1 ocl:2 in repetition 1"},
      {"add_union_scalar_3", Status::buildError, "error",
       "clBuildProgram(-11): 1:1: error: unions are not our thing"},
      {"add_union_scalar_4", Status::error, "error", "clEnqueueReadBuffer(-36) in repetition 3"},
      {"add_union_scalar_5", Status::crash, "error", "SIGSEGV before the first repetition"},
      {"add_union_scalar_6", Status::timeout, "error", "after 0 s before the first repetition"},
      {"copy_union_scalar_1", Status::skip, "skipped", "skipped by list:1"},
      {"copy_union_scalar_2", Status::missing, "error", "interrupted"},
      {"copy_union_scalar_3", Status::expectedFail, "skipped", "c:1 ocl:2 in repetition 1"},
      {"copy_union_scalar_4", Status::unexpectedPass, "failure", "expected Fail"},
      {"copy_union_scalar_5", Status::flake, "skipped",
       "1 of 2 wrong, two different answers: c:1 ocl:2 in repetition 1"},
  };
  const Baseline baseline = {{"copy_union_scalar_3", Status::fail},
                             {"copy_union_scalar_4", Status::fail}};
  std::vector<outputs::Case> rows;
  for (const auto& c : cases) {
    const bool isFail = c.status == Status::expectedFail;
    const bool isPass = c.status == Status::unexpectedPass || c.status == Status::flake;
    Record record = MadeUp(c.row, isFail ? Status::fail : (isPass ? Status::pass : c.status));
    if (c.status == Status::flake) record.again = {MadeUp(c.row, Status::fail)};
    rows.push_back(FullCaseOf(ResultOf(record, {}, {baseline})));
  }
  rows[0].remark = "passed, yet wrong";
  rows[0].seconds = 1.25;
  rows[1].seconds = 2.5;
  rows[9].seconds = 3;
  outputs::SuiteInfo info;
  info.start = "2001-02-03T04:05:06Z";
  info.properties = {{"incomplete", "10 of 11 rows"}};
  const pugi::xml_document document = Parsed(outputs::JUnitOf(info, rows));
  const pugi::xml_node root = document.child("testsuites");
  EXPECT_EQ(root.attribute("tests").as_int(), 11);
  EXPECT_EQ(root.attribute("failures").as_int(), 2);
  EXPECT_EQ(root.attribute("errors").as_int(), 5);
  EXPECT_EQ(root.attribute("skipped").as_int(), 3);
  const pugi::xml_node add = root.find_child_by_attribute("name", "add");
  EXPECT_EQ(add.attribute("tests").as_int(), 6);
  EXPECT_STREQ(add.attribute("time").value(), "3.750");
  EXPECT_STREQ(root.attribute("time").value(), "6.750");
  EXPECT_STREQ(add.attribute("timestamp").value(), "2001-02-03T04:05:06");
  EXPECT_STREQ(add.child("properties").child("property").attribute("value").value(),
               "10 of 11 rows");
  EXPECT_TRUE(std::string(add.child("testcase").child_value("system-out"))
                  .starts_with("passed, yet wrong\nRunning test"));
  for (const auto& c : cases) {
    const pugi::xml_node test = root.find_node([&c](const pugi::xml_node& node) {
      return std::string(node.name()) == "testcase" &&
             std::string(node.attribute("name").value()) == c.row;
    });
    ASSERT_TRUE(test) << c.row;
    int causes = 0;
    for (const char* element : {"failure", "error", "skipped"}) {
      const pugi::xml_node cause = test.child(element);
      if (!cause) continue;
      ++causes;
      EXPECT_STREQ(element, c.element) << c.row;
      EXPECT_EQ(cause.attribute("type").value(), NameOf(c.status));
      EXPECT_STREQ(cause.attribute("message").value(), c.message);
      EXPECT_TRUE(std::string(cause.child_value()).starts_with(c.message));
      EXPECT_STRNE(cause.child_value(), "") << c.row;
    }
    EXPECT_EQ(causes, c.status == Status::pass ? 0 : 1) << c.row;
  }
  EXPECT_TRUE(
      std::string(add.find_child_by_attribute("name", "add_union_scalar_3").child_value("error"))
          .ends_with("\n1:1: error: unions are not our thing\n"));
}

TEST(JUnit, IsXmlWhateverTheDriverWrote) {
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  // Markup, a character that XML does not have, one that UTF-8 does not, and a cut one.
  const std::string hostile =
      "<testcase name='x'/>]]>&amp;&#0; \xEF\xBF\xBF \xED\xA0\x80 \xC0\xAF " + bytes + "\xE2\x82";
  Record record = MadeUp("add_union_scalar_1", Status::buildError);
  record.buildLog = hostile;
  record.out = hostile;
  record.err = std::string(1000000, '\x01');
  record.driver = hostile;
  outputs::SuiteInfo info;
  info.properties = {{hostile, hostile}};
  const std::string text = outputs::JUnitOf(info, {FullCaseOf(ResultOf(record, {}, {}))});
  EXPECT_TRUE(text::IsUtf8(text));
  EXPECT_TRUE(std::ranges::none_of(
      text, [](char c) { return static_cast<unsigned char>(c) < 0x20 && c != '\n' && c != '\t'; }));
  EXPECT_EQ(text.find("\xEF\xBF\xBF"), std::string::npos);
  EXPECT_LT(text.size(), 500000U);

  const pugi::xml_document document = Parsed(text);
  const pugi::xml_node suite = document.child("testsuites").child("testsuite");
  EXPECT_EQ(std::distance(suite.begin(), suite.end()), 2);
  const std::string out = suite.child("testcase").child_value("system-out");
  EXPECT_TRUE(out.starts_with("<testcase name='x'/>]]>&amp;&#0; \\xEF\\xBF\\xBF \\xED\\xA0\\x80 "))
      << out;
  EXPECT_TRUE(out.ends_with("\\xE2\\x82")) << out;
}

TEST(Text, ALineStaysOneLineAndIsCutBetweenCharacters) {
  EXPECT_EQ(text::PrintableLine("a\nb\x1B[31m"), "a\\x0Ab\\x1B[31m");
  EXPECT_EQ(text::PrintableLine("\xC3\xA9\xC3\xA9", 4), "\xC3\xA9\xC3\xA9");
  EXPECT_EQ(text::PrintableLine("\xC3\xA9\xC3\xA9\xC3\xA9", 4), "\xC3\xA9\xC3\xA9...");
  EXPECT_EQ(text::PrintableLine("x\xC3\xA9\xC3\xA9", 4), "x\xC3\xA9...");
  EXPECT_EQ(text::PrintableLine("", 4), "");
}

}  // namespace
}  // namespace diagnosis
