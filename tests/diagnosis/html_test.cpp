// The tree of a page as HTML: whatever the text, it stays text.

#include "common/page/html.h"

#include <gtest/gtest.h>

#include <string>

#include "common/page/page.h"

namespace page {
namespace {

std::string HtmlOf(pugi::xml_node tree) {
  std::string text;
  AppendHtml(text, tree);
  return text;
}

TEST(Html, KeepsTextText) {
  const struct {
    const char* text;
    const char* html;
  } cases[] = {
      {"</p><script>&amp;", "&lt;/p&gt;&lt;script&gt;&amp;amp;"},
      {"]]> --> <!--", "]]&gt; --&gt; &lt;!--"},
      {"\x1B[1m\r\x7F\xC2\x9F", "\\x1B[1m\\x0D\\x7F\\xC2\\x9F"},
      {"\xFF\xC0\x80\xED\xA0\x80", "\\xFF\\xC0\\x80\\xED\\xA0\\x80"},
      {"\x9F\x80 \xFC\x80\x80\x80", "\\x9F\\x80 \\xFC\\x80\\x80\\x80"},
      {"tab\tline\nend", "tab\tline\nend"},
      {"\u00B5\u2713\U0001F600", "\u00B5\u2713\U0001F600"},
  };
  for (const auto& [text, html] : cases) {
    pugi::xml_document document;
    Add(document, "p", text);
    EXPECT_EQ(HtmlOf(document), std::string("<p>") + html + "</p>");
  }
  pugi::xml_document document;
  Set(Add(document, "p"), "title", "\"><b>\n\x01");
  EXPECT_EQ(HtmlOf(document), "<p title=\"&quot;>&lt;b>&#10;\\x01\"></p>");
}

TEST(Html, EndsEveryElementButTheVoidOnes) {
  pugi::xml_document document;
  document.append_child(pugi::node_doctype).set_value("html");
  const pugi::xml_node list = Add(document, "ul");
  Add(Add(list, "li"), "br");
  AddClassed(list, "li", "empty");
  const std::size_t size = SizeOf(list);
  const std::string html = "<ul><li><br/></li><li class=\"empty\"></li></ul>";
  EXPECT_EQ(HtmlOf(document), "<!DOCTYPE html>" + html);
  // The size is taken before the end tags are made sure of.
  EXPECT_NEAR(static_cast<double>(size), static_cast<double>(html.size()), 4);
}

TEST(Page, KeepsWhatIsFinishedInItsPlace) {
  Page pages[] = {Page("kicker", "title", "program"), Page("kicker", "title", "program")};
  for (Page& page : pages) {
    page.AddSection("first", "<!--finished-->");
    const pugi::xml_node section = page.AddSection("second", "Second");
    Add(section, "p", "before");
    for (const char* text : {"one", "", "<!--finished-->"}) {
      const pugi::xml_node article = Add(section, "article");
      Add(article, "p", text);
      if (&page == pages) page.Finish(article);
    }
    Add(section, "p", "behind");
    page.AddSection("third", "Third");
  }
  const std::string html = pages[0].Html();
  EXPECT_EQ(html, pages[1].Html());
  EXPECT_TRUE(html.ends_with("</html>\n"));
  // Its bytes are read as what they are, on small screens too.
  EXPECT_NE(html.find("<head><meta charset=\"utf-8\"/><meta name=\"viewport\" "),
            std::string::npos);
}

}  // namespace
}  // namespace page
