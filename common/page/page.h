#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

namespace page {

/// A page that needs nothing else: a header, the ways to its sections, and the sections. What is
/// added to its elements comes behind what is there.
class Page {
 public:
  /// `kicker` stands above the title, `program` behind it in the browser's list.
  Page(std::string_view kicker, std::string_view title, std::string_view program);
  Page(const Page&) = delete;
  Page& operator=(const Page&) = delete;

  pugi::xml_node Header() const { return header_; }

  /// A section with its heading, and its line in the page's contents.
  pugi::xml_node AddSection(const char* id, std::string_view title);

  /// Takes the element, to which nothing is added any more, out of the tree and keeps its HTML,
  /// which has a fraction of the size. All that are taken are neighbours, in their order.
  void Finish(pugi::xml_node element);

  /// The page as HTML, from its doctype on. Nothing is added behind this.
  std::string Html();

 private:
  pugi::xml_document document_;
  pugi::xml_node header_;
  pugi::xml_node contents_;
  pugi::xml_node main_;
  pugi::xml_node finishedHere_;  // a comment in the place of what is finished
  std::string finished_;
};

}  // namespace page
