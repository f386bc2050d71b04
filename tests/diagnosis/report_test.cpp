// The page of a run as a tree: what it says, and how large it may grow. How it looks and works is
// for a browser to test.

#include "diagnosis/views/report.h"

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <limits>
#include <map>
#include <pugixml.hpp>
#include <string>
#include <vector>

#include "diagnosis/record/row_facts.h"

namespace diagnosis {
namespace {

pugi::xml_document Parsed(const std::string& page) {
  pugi::xml_document document;
  const pugi::xml_parse_result result = document.load_buffer(
      page.data(), page.size(), pugi::parse_default | pugi::parse_doctype | pugi::parse_ws_pcdata);
  EXPECT_TRUE(result) << result.description() << " at " << result.offset;
  return document;
}

// All that an element says.
std::string TextIn(const pugi::xml_node& element) {
  std::string text;
  for (const pugi::xpath_node& node : element.select_nodes(".//text()"))
    text += node.node().value();
  return text;
}

// A row as it went, its answers all `answer`.
Record RowOf(const RowFacts& facts, bool passed, float answer) {
  Record record;
  const Row& row = facts.row;
  record.row = row.name;
  record.source = KernelTextOf(row);
  record.ending = {Ending::Kind::returned, passed ? 1 : 0, ""};
  record.out = passed ? "RUN 1: PASSED\n" : "  c:1 ocl:2\nRUN 1: FAILED!\n";
  record.seconds = 0.5;
  Repetition repetition;
  repetition.inputA.assign(row.stride * elementsOfRow, 0);
  if (row.twoInputs) repetition.inputB = repetition.inputA;
  for (std::size_t i = 0; i < row.stride * elementsOfRow / sizeof answer; ++i) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(&answer);
    repetition.result.insert(repetition.result.end(), bytes, bytes + sizeof answer);
  }
  repetition.launched = true;
  record.repetitions.assign(static_cast<std::size_t>(facts.repetitions), repetition);
  return record;
}

TEST(Report, SaysWhatARunComesTo) {
  // The copy of nothing but zeros: 0 is right, 1 is not.
  const RowFacts& copy = FactsOfRows()[42];
  Record crashed;
  crashed.row = copy.row.name;
  crashed.ending = {Ending::Kind::signalled, 11, ""};
  const struct {
    std::vector<Record> records;
    const char* end;
    const char* verdict;
    std::map<std::string, std::string> expected = {};
  } cases[] = {
      {{RowOf(copy, false, 0)},
       "now",
       "The row ended as expected. By OpenCL\u2019s rules 1 that failed is right, where the suite "
       "asks more than OpenCL does.",
       {{copy.row.name, "Fail"}}},
      {{RowOf(copy, true, 0)},
       "now",
       "The row did not end as expected: it passed. By OpenCL\u2019s rules, too, every lane that "
       "came back is right.",
       {{copy.row.name, "Fail"}}},
      {{RowOf(copy, true, 0)},
       "now",
       "The row passed. By OpenCL\u2019s rules, too, every lane that came back is right."},
      {{RowOf(copy, false, 1), RowOf(copy, true, 1), RowOf(copy, true, 1), RowOf(copy, false, 0)},
       "now",
       "2 of 4 rows did not pass. By OpenCL\u2019s rules 1 that failed is wrong, a fault of "
       "the "
       "device; 2 that passed are wrong, a fault that the suite\u2019s rule hides; 1 that failed "
       "is "
       "right, where the suite asks more than OpenCL does."},
      {{crashed},
       "",
       "The row did not pass. The run was cut off. Nothing came back that could be held "
       "against OpenCL\u2019s rules."},
  };
  for (const auto& one : cases) {
    diagnosis::Run run;
    run.info.end = one.end;
    run.info.expected = one.expected;
    run.records = one.records;
    const pugi::xml_document page = Parsed(ReportOf({{"out", run}}));
    EXPECT_EQ(TextIn(page.select_node("//p[@class='verdict']").node()), one.verdict);
  }
}

TEST(Report, ShowsEachRowThatIsNotPassedAndRight) {
  diagnosis::Run run;
  for (const RowFacts& row : FactsOfRows()) {
    const bool isPower = row.row.name.starts_with("power");
    // Zeros to the power of nothing are 1, in some lanes; the other operations make zeros of them.
    if (!isPower)
      run.records.push_back(RowOf(row, true, row.row.name.starts_with("floor") ? 3.F : 0.F));
  }
  const pugi::xml_document page = Parsed(ReportOf({{"out", run}}));
  const auto articles = page.select_nodes("//section[@id='rows']/article");
  EXPECT_EQ(articles.size(), 42U);
  for (const pugi::xpath_node& article : articles) {
    EXPECT_TRUE(std::string_view(article.node().attribute("id").value()).starts_with("row-floor"));
    EXPECT_EQ(article.node().attribute("class").value(), std::string_view("passed-wrong"));
  }
  EXPECT_EQ(page.select_nodes("//section[@id='matrix']//td[@class='passed-right']").size(), 126U);
  EXPECT_EQ(page.select_nodes("//section[@id='matrix']//td[@class='blank']").size(), 0U);
  EXPECT_EQ(page.select_nodes("//section[@id='distances']//td[@class='outside']").size(), 42U);
}

TEST(Report, ShadesADistanceByWhatIsAllowed) {
  const std::uint64_t tolerance = FactsOf("power_union_arrays_1")->tolerance;
  const float nan = std::numeric_limits<float>::quiet_NaN();
  const std::vector<WrongLane> none;
  const std::vector<WrongLane> three(3, {1, 0, 0, 2, 1, 17});
  const struct {
    const char* row;
    std::uint64_t ulps;
    std::vector<WrongLane> wrong;
    const char* shade;
    const char* says;
  } cases[] = {
      {"power_union_arrays_1", 0, none, "exact", "0"},
      {"power_union_arrays_1", 8, none, "near", "8"},
      {"power_union_arrays_1", 9, none, "far", "9"},
      {"power_union_arrays_1", 16, none, "far", "16"},
      {"power_union_arrays_1", 17, three, "beyond", "!17"},
      {"power_union_arrays_1", tolerance, three, "beyond", "!128"},
      {"power_union_arrays_1", tolerance + 1, three, "outside", "\u2717129"},
      {"add_union_arrays_1", 2, three, "beyond", "!2"},
      {"add_union_arrays_1", 3, three, "outside", "\u27173"},
      {"copy_union_arrays_1", 1, three, "outside", "\u27171"},
      {"copy_union_arrays_1", 123456, three, "outside", "\u27171.2e5"},
      {"copy_union_arrays_1", 0, {{1, 0, 0, -2, 1, {}}}, "outside", "\u2717sign"},
      {"copy_union_arrays_1", 0, {{1, 0, 0, nan, 1, {}}}, "outside", "\u2717NaN"},
      {"copy_union_arrays_1", 0, {{1, 0, 0, 1, nan, {}}}, "outside", "\u2717NaN"},
  };
  for (const auto& c : cases) {
    diagnosis::Run run;
    run.records = {RowOf(*FactsOf(c.row), true, 0)};
    Analysis analysis = AnalysisOf(run, {});
    Opinion& opinion = analysis.rows[0].opinion;
    opinion.greatestUlps = c.ulps;
    opinion.wrong = c.wrong;
    const pugi::xml_document page = Parsed(ReportOf(analysis));
    const std::string cell = "//*[@title='" + std::string(c.row) + "']";
    const pugi::xml_node distance =
        page.select_node(("//section[@id='distances']" + cell).c_str()).node();
    EXPECT_EQ(TextIn(distance), c.says) << c.ulps;
    EXPECT_EQ(distance.parent().attribute("class").value(), std::string_view(c.shade)) << c.ulps;
    const pugi::xml_node lanes =
        page.select_node(("//section[@id='matrix']" + cell + "/*[@class='lanes']").c_str()).node();
    EXPECT_EQ(TextIn(lanes), c.wrong.empty() ? "" : std::to_string(c.wrong.size()));
  }
}

TEST(Report, SaysWhatItCanOfARowThatItDoesNotKnow) {
  diagnosis::Run run;
  run.records = {Record(), RowOf(FactsOfRows()[42], true, 1)};
  run.records[0].row = "subtract_union_scalar_1";
  run.records[0].ending = {Ending::Kind::signalled, 11, ""};
  const pugi::xml_document page = Parsed(ReportOf({{"out", run}}));
  const auto reproducers = [&page](const std::string& row) {
    return page.select_nodes(("//article[@id='row-" + row + "']//pre").c_str()).size();
  };
  EXPECT_NE(TextIn(page.select_node("//article[@id='row-subtract_union_scalar_1']").node())
                .find("SIGSEGV"),
            std::string::npos);
  EXPECT_EQ(reproducers(run.records[0].row), 0U);
  EXPECT_GT(reproducers(FactsOfRows()[42].row.name), 0U);
}

// What the first node says that the path names.
std::string At(const pugi::xml_document& page, const std::string& path) {
  return TextIn(page.select_node(path.c_str()).node());
}

TEST(Report, ShowsHowALaneCameAbout) {
  const RowFacts& facts = *FactsOf("copy_union_vector8_3");
  Record one = RowOf(facts, false, 0);
  // Of shorts; one answer is wrong.
  const float two = 2;
  std::memcpy(&one.repetitions[1].result[2 * facts.row.stride + 5 * sizeof two], &two, sizeof two);
  one.source = "first   \n\n  second \nthird";
  Record all = RowOf(*FactsOf("copy_union_vector4_1"), false, 2);
  diagnosis::Run run;
  run.info.options = {{"jobs", "2"}, {"launcher", ""}, {"seed", "1"}};
  run.records = {one, all};
  const pugi::xml_document page = Parsed(ReportOf({{"out", run}}));

  const std::string article = "//article[@id='row-copy_union_vector8_3']";
  EXPECT_EQ(At(page, article + "//h3"), one.row);
  EXPECT_STREQ(page.select_node((article + "//h3").c_str()).node().attribute("id").value(),
               page.select_node(article.c_str()).node().attribute("aria-labelledby").value());
  EXPECT_EQ(At(page, article + "//h4"), "The first wrong lane: repetition 2, element 2, lane 5");
  EXPECT_EQ(At(page, article + "//figcaption"),
            "Union a, 32 bytes; the kernel reads bytes 10 to 11, underlined");
  EXPECT_EQ(page.select_nodes((article + "//figure//u").c_str()).size(), 2U);
  // Each store in its colour, and what reads the page aloud has a word for each column.
  for (const auto& store : page.select_nodes((article + "//li[span[@class='by']]").c_str())) {
    const std::string by = store.node().find_child_by_attribute("class", "by").child_value();
    if (by == "no store") continue;
    const int index = std::stoi(by.substr(2)) % 4;
    EXPECT_EQ(store.node().attribute("class").value(),
              (by[0] == 'a' ? "store element-" : "store float-") + std::to_string(index));
  }
  for (const auto& cell : page.select_nodes((article + "//thead//th").c_str()))
    EXPECT_NE(TextIn(cell.node()), "");
  EXPECT_EQ(page.select_nodes((article + "//thead//th/span").c_str()).size(), 2U);
  EXPECT_EQ(At(page, article + "//details[summary='Kernel text']//pre"),
            "first\n\n  second\nthird\n");

  const std::string other = "//article[@id='row-copy_union_vector4_1']";
  const std::size_t lanes = all.repetitions.size() * 40;
  EXPECT_EQ(page.select_nodes((other + "//ul[@class='plain']/li").c_str()).size(), 40U);
  EXPECT_EQ(At(page, other + "//details/p[@class='note']"),
            std::to_string(lanes - 41) + " more left out here; triage explain lists them.");
  EXPECT_EQ(At(page, "//ul[@class='legend']//strong"), "2 failed and wrong");
  EXPECT_NE(At(page, "//dl[@class='facts']").find("jobs 2, seed 1"), std::string::npos);
}

TEST(Report, LaysRunsSideBySide) {
  const RowFacts& facts = *FactsOf("copy_union_vector4_1");
  NamedRun before{"before", {}};
  before.run.records = {RowOf(facts, true, 0)};
  NamedRun after{"after", {}};
  after.run.records = {RowOf(facts, false, 1)};
  const pugi::xml_document worse = Parsed(ReportOf({before, after}));
  const std::string table = "//section[@id='all']//table";
  EXPECT_EQ(At(worse, table + "/thead"), "Row1. before2. after");
  EXPECT_STREQ(worse.select_node(table.c_str()).node().attribute("style").value(),
               "min-width: 36rem");
  EXPECT_EQ(At(worse, "//section[@id='worse']//tbody/tr/th"), facts.row.name);
  const std::string sameEnd = "//details[summary='1 row that came to the same']";
  EXPECT_EQ(worse.select_nodes(sameEnd.c_str()).size(), 0U);
  NamedRun seeded = before;
  seeded.run.records[0].seed = 2;
  for (Repetition& repetition : seeded.run.records[0].repetitions) {
    repetition.inputA.assign(repetition.inputA.size(), 0);
    repetition.inputA[0] = 1;
    const float right = 1;
    std::memcpy(repetition.result.data(), &right, sizeof right);
  }
  const pugi::xml_document same = Parsed(ReportOf({before, seeded}));
  EXPECT_EQ(same.select_nodes(sameEnd.c_str()).size(), 1U);
}

TEST(Report, SaysHowARowIsRunAlone) {
  Record plain = RowOf(FactsOfRows()[42], true, 1);
  Record special = plain;
  special.seed = 7;
  special.buildOptions = "-D X='a b' -w";
  special.localSize = 8;
  const struct {
    std::vector<std::string> invocation;
    std::map<std::string, std::string> options;
    Record record;
    const char* command;
  } cases[] = {
      {{}, {}, plain, "./triage copy_union_arrays_1"},
      {{"/usr/bin/union_triage"},
       {{"launcher", ""}, {"program", ""}, {"seed", "1"}},
       plain,
       "/usr/bin/union_triage copy_union_arrays_1"},
      {{"./triage", "--broken=negated", "--device", "a b"},
       {},
       plain,
       "./triage --broken=negated --device 'a b' copy_union_arrays_1"},
      {{"./triage"},
       {{"launcher", "ssh 'the board'"}, {"program", "/opt/union_triage"}},
       special,
       R"(./triage copy_union_arrays_1 --seed 7 --build-options '-D X='\''a b'\'' -w' )"
       R"(--local-size 8 --launcher 'ssh '\''the board'\''' --program /opt/union_triage)"},
  };
  for (const auto& c : cases) {
    diagnosis::Run run;
    run.info.invocation = c.invocation;
    run.info.options = c.options;
    run.records = {c.record};
    const pugi::xml_document page = Parsed(ReportOf({{"out", run}}));
    EXPECT_EQ(TextIn(page.select_node("//p[starts-with(., 'Alone: ')]").node()),
              std::string("Alone: ") + c.command);
  }
}

std::size_t inTrees = 0;
std::size_t mostInTrees = 0;

void* TakeForTrees(std::size_t size) {
  void* const taken = std::malloc(size);
  inTrees += malloc_usable_size(taken);
  mostInTrees = std::max(mostInTrees, inTrees);
  return taken;
}

void GiveBack(void* taken) {
  inTrees -= malloc_usable_size(taken);
  std::free(taken);
}

TEST(Report, KeepsItsBoundWhateverFailsAndWhateverADriverWrites) {
  diagnosis::Run run;
  run.info.command.assign(1 << 20, '<');
  for (std::string* text : {&run.info.device.name, &run.info.device.vendor, &run.info.host})
    text->assign(1 << 20, '&');
  for (const RowFacts& row : FactsOfRows()) {
    Record record = RowOf(row, false, 12345.F);
    record.buildLog.assign(100'000, '&');
    record.err.assign(100'000, '\x1B');
    record.driver.assign(100'000, '<');
    record.out += std::string(100'000, '"');
    run.records.push_back(record);
  }
  pugi::set_memory_management_functions(TakeForTrees, GiveBack);
  const std::string one = ReportOf({{"out", run}});
  pugi::set_memory_management_functions(std::malloc, std::free);
  EXPECT_LE(one.size(), mostBytesOfPage);
  // The trees of all rows at once take more than the page.
  EXPECT_GT(mostInTrees, 0U);
  EXPECT_LT(mostInTrees, mostBytesOfPage / 4);
  EXPECT_EQ(Parsed(one).select_nodes("//section[@id='rows']/article").size(), FactsOfRows().size());
  const std::string two = ReportOf({{std::string(1 << 20, '&'), run}, {"again", run}});
  EXPECT_LE(two.size(), mostBytesOfPage);
  Parsed(two);
}

}  // namespace
}  // namespace diagnosis
