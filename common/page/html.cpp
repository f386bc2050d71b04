#include "common/page/html.h"

#include <algorithm>

#include "common/text/text.h"

namespace page {

namespace {

// Elements that never have an end tag.
constexpr std::string_view voidElements[] = {"br", "col", "hr", "meta"};

// What HTML asks for, a start tag that ends at once is no end to: give every other element a text.
struct EndTags : pugi::xml_tree_walker {
  bool for_each(pugi::xml_node& node) override {
    if (node.type() == pugi::node_element && !node.first_child() &&
        std::ranges::find(voidElements, std::string_view(node.name())) == std::end(voidElements))
      node.append_child(pugi::node_pcdata);
    return true;
  }
};

struct Count : pugi::xml_writer {
  std::size_t bytes = 0;
  void write(const void*, std::size_t size) override { bytes += size; }
};

struct Text : pugi::xml_writer {
  std::string& text;
  explicit Text(std::string& to) : text(to) {}
  void write(const void* data, std::size_t size) override {
    text.append(static_cast<const char*>(data), size);
  }
};

constexpr unsigned int format = pugi::format_raw | pugi::format_no_declaration;

}  // namespace

pugi::xml_node Add(pugi::xml_node parent, const char* name, std::string_view text) {
  const pugi::xml_node element = parent.append_child(name);
  AddText(element, text);
  return element;
}

pugi::xml_node AddClassed(pugi::xml_node parent, const char* name, std::string_view classes,
                          std::string_view text) {
  return Set(Add(parent, name, text), "class", classes);
}

void AddText(pugi::xml_node element, std::string_view text) {
  if (text.empty()) return;
  element.append_child(pugi::node_pcdata).set_value(text::Printable(text).c_str());
}

pugi::xml_node Set(pugi::xml_node element, const char* name, std::string_view value) {
  element.append_attribute(name).set_value(text::Printable(value).c_str());
  return element;
}

std::size_t SizeOf(pugi::xml_node element) {
  Count count;
  element.print(count, "", format, pugi::encoding_utf8);
  return count.bytes;
}

void AppendHtml(std::string& text, pugi::xml_node tree) {
  EndTags endTags;
  tree.traverse(endTags);
  Text writer(text);
  tree.print(writer, "", format, pugi::encoding_utf8);
}

}  // namespace page
