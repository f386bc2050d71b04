// What is told of suspects' names.

#include "diagnosis/localization/glossary.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

#include "diagnosis/record/select.h"

namespace diagnosis {
namespace {

// "name: example's second line", one after the other.
std::string Told(const char* suspect) {
  std::string told;
  for (const Term& term : TermsOf(suspect))
    told += term.name + ": " + term.example.substr(term.example.find('\n') + 1) + ";";
  return told;
}

TEST(Glossary, NamesAreFoundAsARunTellsThem) {
  struct {
    const char* suspect;
    const char* told;
  } const cases[] = {
      {"negated", "negated: c.r = -v;"},
      {"b-at-32", "b-at-32: b[tid].b at byte 32;"},
      {"b-at-N", "b-at-N: b[tid].b at byte N;"},
      {"stride-16-of-a", "stride-16-of-a: 16 bytes in its place;"},
      {"stride-16", "stride-16: 16 bytes in its place;"},
      {"element-shifted--1", "element-shifted--1: c[tid] = f(a[tid + -1]);"},
      {"answers-0xFF800000", "answers-0xFF800000: c.r = as_float(0xFF800000);"},
      {"negated+b-at-32", "negated: c.r = -v;b-at-32: b[tid].b at byte 32;"},
      {"union-as-struct", "union-as-struct: struct { int a; float h; };"},
      {"unexplained", "unexplained: c.r = what no rule here gives;"},
      {"b-at-", ""},
      {"b-at-3x", ""},
      {"negated+", "negated: c.r = -v;"},
      {"negated+nothing", ""},
      {"", ""},
  };
  for (const auto& c : cases) EXPECT_EQ(Told(c.suspect), c.told) << c.suspect;
}

TEST(Glossary, EveryTermIsWhole) {
  std::set<std::string> names;
  for (const Term& term : Glossary()) {
    EXPECT_TRUE(names.insert(term.name).second) << term.name;
    EXPECT_EQ(TermsOf(term.name).size(), 1U) << term.name;
    for (const std::string* text : {&term.sentence, &term.cause, &term.example, &term.place}) {
      EXPECT_FALSE(text->empty()) << term.name;
      EXPECT_EQ(text->find("{n"), std::string::npos) << term.name;
    }
    EXPECT_EQ(std::ranges::count(term.example, '\n'), 1) << term.name;
    EXPECT_NO_THROW(Select(term.rows)) << term.name;
    EXPECT_FALSE(term.rows.empty()) << term.name;
  }
  EXPECT_GT(names.size(), 80U);
}

}  // namespace
}  // namespace diagnosis
