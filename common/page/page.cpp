#include "common/page/page.h"

#include <fmt/format.h>

#include <utility>

#include "common/page/html.h"
#include "common/page/parts.h"

namespace page {

namespace {

constexpr const char* placeOfFinished = "finished";

// Where the text grows, that it has grown before takes room too. What is not used is never touched.
constexpr std::size_t roomForPage = std::size_t{16} << 20;

}  // namespace

Page::Page(std::string_view kicker, std::string_view title, std::string_view program) {
  document_.append_child(pugi::node_doctype).set_value("html");
  const pugi::xml_node html = Set(Add(document_, "html"), "lang", "en");

  const pugi::xml_node head = Add(html, "head");
  Set(Add(head, "meta"), "charset", "utf-8");
  Set(Set(Add(head, "meta"), "name", "viewport"), "content", "width=device-width, initial-scale=1");
  Set(Set(Add(head, "meta"), "name", "color-scheme"), "content", "light dark");
  Add(head, "title", fmt::format("{} \u00B7 {}", title, program));
  Add(head, "style", styleSheet);

  const pugi::xml_node body = Add(html, "body");
  Set(AddClassed(body, "a", "skip", "Skip to the results"), "href", "#main");
  header_ = Add(body, "header");
  AddClassed(header_, "p", "kicker", kicker);
  Add(header_, "h1", title);
  contents_ = Add(Set(Add(body, "nav"), "aria-label", "On this page"), "ul");
  main_ = Set(Add(body, "main"), "id", "main");
}

pugi::xml_node Page::AddSection(const char* id, std::string_view title) {
  const std::string heading = fmt::format("{}-heading", id);
  AddLink(Add(contents_, "li"), id, title);
  const pugi::xml_node section = Set(Add(main_, "section"), "id", id);
  Set(section, "aria-labelledby", heading);
  Set(Add(section, "h2", title), "id", heading);
  return section;
}

void Page::Finish(pugi::xml_node element) {
  pugi::xml_node parent = element.parent();
  if (!finishedHere_) {
    finishedHere_ = parent.insert_child_before(pugi::node_comment, element);
    finishedHere_.set_value(placeOfFinished);
    finished_.reserve(roomForPage);
  }
  AppendHtml(finished_, element);
  parent.remove_child(element);
}

std::string Page::Html() {
  std::string rest;
  AppendHtml(rest, document_);
  rest += '\n';
  if (!finishedHere_) return rest;
  // No text of a page can be a comment: what is one is escaped.
  const std::string comment = fmt::format("<!--{}-->", placeOfFinished);
  const std::size_t place = rest.find(comment);
  finished_.append(rest, place + comment.size());
  finished_.insert(0, rest, 0, place);
  return std::move(finished_);
}

}  // namespace page
