#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <optional>
#include <utility>

#include "diagnosis/record/row.h"
#include "diagnosis/views/explain.h"
#include "diagnosis/views/report_parts.h"

namespace diagnosis {

namespace {

constexpr std::size_t mostOtherLanes = 40;

// A store's colour: the member's, lighter and darker by turns so that neighbours differ.
std::string StyleOfStore(std::string_view store) {
  if (store.empty()) return "store none";
  const bool isElement = store.front() == 'a' || store.front() == 'k';
  int index = 0;
  for (const char c : store) {
    if (std::isdigit(static_cast<unsigned char>(c)) != 0) index = index * 10 + (c - '0');
  }
  return fmt::format("store {}-{}", isElement ? "element" : "float", index % 4);
}

// The bytes of a union, those of one store side by side in a box with the store's name, and those
// that the kernel reads marked.
void AddBytes(pugi::xml_node parent, std::string_view name, const std::vector<StoredByte>& bytes,
              std::size_t readFrom, std::size_t readBytes) {
  const pugi::xml_node figure = AddClassed(parent, "figure", "bytes");
  Add(figure, "figcaption",
      fmt::format("Union {}, {}; the kernel reads bytes {} to {}, underlined", name,
                  Counted(bytes.size(), "byte"), readFrom, readFrom + readBytes - 1));
  const pugi::xml_node list = Add(figure, "ol");
  for (std::size_t i = 0; i < bytes.size();) {
    const std::string& store = bytes[i].store;
    const pugi::xml_node item = Set(Add(list, "li"), "class", StyleOfStore(store));
    const pugi::xml_node cells = AddClassed(item, "span", "cells");
    const std::size_t first = i;
    for (; i < bytes.size() && bytes[i].store == store; ++i) {
      const bool read = i >= readFrom && i < readFrom + readBytes;
      AddText(cells, i == first ? "" : " ");
      Add(cells, read ? "u" : "span", fmt::format("{:02X}", bytes[i].value));
    }
    AddClassed(item, "span", "by", store.empty() ? "no store" : store);
    AddClassed(item, "span", "at",
               first + 1 == i ? fmt::format("{}", first) : fmt::format("{}\u2013{}", first, i - 1));
  }
}

void AddStores(pugi::xml_node parent, std::string_view name,
               const std::vector<std::string>& stores) {
  if (stores.empty()) return;
  const pugi::xml_node line = AddClassed(parent, "p", "stores");
  Add(line, "span", fmt::format("Stores into {}, in their order: ", name));
  for (std::size_t i = 0; i < stores.size(); ++i) {
    if (i > 0) AddText(line, ", ");
    Add(line, "code", stores[i]);
  }
}

void AddValues(pugi::xml_node parent, const std::vector<NamedValue>& values) {
  const pugi::xml_node table =
      AddClassed(page::AddScrolled(parent, "Values of the lane"), "table", "values");
  AddClassed(table, "caption", "hidden",
             "What was read, what is right and what the device answered");
  const pugi::xml_node head = Add(Add(table, "thead"), "tr");
  for (const char* title : {"", "Bits", "Value", "Hexadecimal", ""}) {
    const pugi::xml_node cell = Set(Add(head, "th", title), "scope", "col");
    if (*title == '\0')
      AddClassed(cell, "span", "hidden", head.first_child() == cell ? "What" : "Kind");
  }
  const pugi::xml_node body = Add(table, "tbody");
  for (const NamedValue& value : values) {
    const pugi::xml_node line = Add(body, "tr");
    Set(Add(line, "th", value.what), "scope", "row");
    for (const std::string& text : {value.bits, value.value, value.hex}) {
      const pugi::xml_node cell = Add(line, "td");
      if (!text.empty()) Add(cell, "code", text);
    }
    Add(line, "td", value.kind);
  }
}

void AddLane(pugi::xml_node article, const Row& row, const ExplainedLane& lane) {
  Add(article, "h4",
      fmt::format("The {}: repetition {}, element {}, lane {}", lane.title, lane.lane.repetition,
                  lane.lane.element, lane.lane.lane));
  const auto index = static_cast<std::size_t>(lane.lane.lane);
  AddStores(article, "a", lane.storesA);
  if (!lane.bytesA.empty()) AddBytes(article, "a", lane.bytesA, index * row.width, row.width);
  AddStores(article, "b", lane.storesB);
  if (!lane.bytesB.empty()) AddBytes(article, "b", lane.bytesB, index * 4, 4);
  AddValues(article, lane.values);
  if (!lane.reference.empty()) {
    Add(article, "p", "How the reference came about:");
    const pugi::xml_node steps = AddClassed(article, "ol", "steps");
    for (const std::string& step : lane.reference) Add(steps, "li", step);
  }
  const pugi::xml_node rules = AddClassed(article, "dl", "facts");
  for (const auto& [name, rule] : {std::pair("The suite\u2019s rule", &lane.suiteRule),
                                   std::pair("OpenCL\u2019s rule", &lane.openClRule)}) {
    if (rule->empty()) continue;
    Add(rules, "dt", name);
    Add(rules, "dd", *rule);
  }
}

void AddOtherLanes(pugi::xml_node article, const std::vector<std::string>& others,
                   std::string_view what) {
  if (others.empty()) return;
  const pugi::xml_node folded =
      page::AddFolded(article, Counted(others.size(), fmt::format("more {}", what)));
  const pugi::xml_node list =
      AddClassed(page::AddScrolled(folded, "The other lanes"), "ul", "plain");
  const std::size_t shown = std::min(others.size(), mostOtherLanes);
  for (std::size_t i = 0; i < shown; ++i) Add(Add(list, "li"), "code", others[i]);
  if (shown < others.size()) {
    AddClassed(
        folded, "p", "note",
        fmt::format("{} more left out here; triage explain lists them.", others.size() - shown));
  }
}

}  // namespace

void AddExplanation(pugi::xml_node article, const Record& record, const Device& device,
                    const Suspects& suspects) {
  const Explanation explanation = Explain(record, device, suspects);
  // Without a wrong lane it is the ones that the suite rejects though they are right.
  const std::string_view what = explanation.opinion.wrong.empty() ? "rejected lane" : "wrong lane";
  const std::optional<Row> row = RowNamed(record.row);
  if (row && !explanation.first.empty()) AddLane(article, *row, explanation.first.front());
  AddOtherLanes(article, explanation.others, what);
}

}  // namespace diagnosis
