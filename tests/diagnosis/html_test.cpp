// The tree of a page as HTML: whatever the text, it stays text.

#include "common/page/html.h"

#include <gtest/gtest.h>

namespace page {
namespace {

TEST(Html, KeepsTextText) {
  const struct {
    const char* text;
    const char* html;
  } cases[] = {
      {"</p><script>&amp;", "&lt;/p&gt;&lt;script&gt;&amp;amp;"},
      {"]]> --> <!--", "]]&gt; --&gt; &lt;!--"},
      {"\x1B[1m\r\x7F\xC2\x9F", "\\x1B[1m\\x0D\\x7F\\xC2\\x9F"},
      {"\xFF\xC0\x80\xED\xA0\x80", "\\xFF\\xC0\\x80\\xED\\xA0\\x80"},
      {"tab\tline\nend", "tab\tline\nend"},
      {"\u00B5\u2713\U0001F600", "\u00B5\u2713\U0001F600"},
  };
  for (const auto& [text, html] : cases) {
    pugi::xml_document document;
    Add(document, "p", text);
    EXPECT_EQ(HtmlOf(document), std::string("<p>") + html + "</p>\n");
  }
  pugi::xml_document document;
  Set(Add(document, "p"), "title", "\"><b>\n\x01");
  EXPECT_EQ(HtmlOf(document), "<p title=\"&quot;>&lt;b>&#10;\\x01\"></p>\n");
}

TEST(Html, EndsEveryElementButTheVoidOnes) {
  pugi::xml_document document;
  document.append_child(pugi::node_doctype).set_value("html");
  const pugi::xml_node list = Add(document, "ul");
  Add(Add(list, "li"), "br");
  AddClassed(list, "li", "empty");
  const std::size_t size = SizeOf(list);
  const std::string html = "<ul><li><br/></li><li class=\"empty\"></li></ul>";
  EXPECT_EQ(HtmlOf(document), "<!DOCTYPE html>" + html + "\n");
  // The size is taken before the end tags are made sure of.
  EXPECT_NEAR(static_cast<double>(size), static_cast<double>(html.size()), 4);
}

}  // namespace
}  // namespace page
