// What was meant where a word is misspelt.

#include "common/text/nearest.h"

#include <gtest/gtest.h>

#include <string_view>
#include <vector>

namespace text {
namespace {

TEST(Nearest, IsAWordThatIsMisspeltAndNoOther) {
  const std::vector<std::string_view> words = {"list", "lint", "explain", "report", "reproduce"};
  const struct {
    const char* written;
    const char* meant;  // empty for none
  } cases[] = {
      {"lst", "list"},         // left out
      {"liist", "list"},       // twice
      {"lixt", "list"},        // another
      {"lsit", "list"},        // exchanged
      {"LIST", "list"},        // in capitals
      {"expalni", "explain"},  // two exchanges
      {"reporduces", "reproduce"},
      {"list", ""},  // it is one
      {"lsxt", ""},  // half an exchange
      {"xplani", "explain"},
      {"xplan", "explain"},
      {"repro", "report"},
      {"r", ""},
      {"", ""},
  };
  for (const auto& c : cases)
    EXPECT_EQ(Nearest(c.written, words).value_or(""), c.meant) << c.written;
}

}  // namespace
}  // namespace text
