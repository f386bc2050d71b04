#include "layers/kernel_edit.h"

#include <iostream>
#include <map>
#include <optional>
#include <regex>
#include <stdexcept>

namespace {

using Words = std::map<char, std::string>;

std::optional<KernelRow> RowOf(const std::string& text) {
  static const std::regex member(
      R"(union, 32\) InputA \{ *\n +(u?(?:int|short|char))(\d*) a(\[4\])?;)");
  static const std::regex kernel(R"(__kernel void (\w+)\()");
  std::smatch members;
  std::smatch kernels;
  if (!std::regex_search(text, members, member) || !std::regex_search(text, kernels, kernel))
    return std::nullopt;
  return KernelRow{kernels[1], members[1], members[2], members[3].matched};
}

const std::map<std::string, std::string> backwards = {
    {"2", "yx"}, {"3", "zyx"}, {"4", "wzyx"}, {"8", "s76543210"}, {"16", "sfedcba9876543210"}};
const std::map<std::string, std::string> halves = {
    {"2", ""}, {"3", "2"}, {"4", "2"}, {"8", "4"}, {"16", "8"}};
const std::map<std::string, std::string> moved = {
    {"2", "yx"}, {"3", "yzx"}, {"4", "yzwx"}, {"8", "s12345670"}, {"16", "s123456789abcdef0"}};

// What the dollar signs stand for in `text`, whose statement other edits may have changed.
Words WordsOf(const std::string& text, const KernelRow& row) {
  const bool isUnsigned = row.element.front() == 'u';
  const std::string index = row.arrays ? "[i]" : "";
  Words words{
      {'T', row.element},
      {'N', row.width},
      {'U', isUnsigned ? row.element : 'u' + row.element},
      {'S', isUnsigned ? row.element.substr(1) : row.element},
      {'D', row.arrays ? "[4]" : ""},
      {'i', row.arrays ? "i" : "0"},
      {'a', "a[tid].a" + index},
      {'b', "b[tid].b" + index},
      {'c', "c[tid].r" + index},
      {'o', row.kernel == "sum" ? "+" : "*"},
  };
  if (!row.width.empty()) {
    words['H'] = halves.at(row.width);
    words['M'] = backwards.at(row.width);
    words['L'] = moved.at(row.width);
  }
  const std::string converted = "convert_float" + row.width + "(" + words['a'] + ")";
  words['x'] = text.find(converted) == std::string::npos ? words['a'] : converted;
  const std::size_t statement = text.find(words['c'] + " = ");
  if (statement != std::string::npos) {
    const std::size_t value = statement + words['c'].size() + 3;
    words['v'] = text.substr(value, text.find(';', value) - value);
  }
  return words;
}

std::string FilledIn(std::string_view pattern, const Words& words) {
  std::string filled;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == '$') {
      filled += words.at(pattern[++i]);
    } else {
      filled += pattern[i];
    }
  }
  return filled;
}

}  // namespace

std::string Edited(std::string text, const Fault& fault) {
  const std::optional<KernelRow> row = RowOf(text);
  if (!row) return text;
  for (const Edit& edit : fault.edits) {
    if (edit.find.empty() || !edit.where(*row)) continue;
    const Words words = WordsOf(text, *row);
    const std::string find = FilledIn(edit.find, words);
    const std::string with = FilledIn(edit.with, words);
    std::size_t place = text.find(find);
    if (place == std::string::npos)
      throw std::logic_error("nothing to edit for '" + std::string(fault.name) + "'");
    for (; place != std::string::npos; place = text.find(find, place + with.size()))
      text.replace(place, find.size(), with);
  }
  return text;
}

bool ListFaults() {
  for (const Fault& fault : faults) {
    std::cout.width(24);
    std::cout << std::left << fault.name << fault.meaning << '\n';
  }
  return static_cast<bool>(std::cout.flush());
}
