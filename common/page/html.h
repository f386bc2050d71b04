#pragma once

#include <pugixml.hpp>
#include <string>
#include <string_view>

// A page is a tree. Text goes in through these alone, so nothing that a driver printed can become
// markup, whatever it is.

namespace page {

/// The style sheet: page.css.
extern const char* const styleSheet;

/// An element at the end of `parent`, with what it says.
pugi::xml_node Add(pugi::xml_node parent, const char* name, std::string_view text = {});

/// The same with a class, or several with blanks between.
pugi::xml_node AddClassed(pugi::xml_node parent, const char* name, std::string_view classes,
                          std::string_view text = {});

/// More text at the end of what the element says.
void AddText(pugi::xml_node element, std::string_view text);

/// An attribute; the element, for more of them.
pugi::xml_node Set(pugi::xml_node element, const char* name, std::string_view value);

/// How many bytes the element takes on the page.
std::size_t SizeOf(pugi::xml_node element);

/// Adds the tree as HTML to the text: a document's from its doctype on, without a line's end.
void AppendHtml(std::string& text, pugi::xml_node tree);

}  // namespace page
