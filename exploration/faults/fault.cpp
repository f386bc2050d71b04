#include "exploration/faults/fault.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <string_view>

namespace exploration {
namespace {

// What says nothing where there is anything else to say.
bool IsCommon(std::string_view feature) { return feature == "members"; }

/// Whether the one's features, of which there must be one that says something, are among the
/// other's.
bool AreAmong(const std::vector<std::string>& some, const std::vector<std::string>& all) {
  bool isAny = false;
  for (const std::string& feature : some) {
    if (IsCommon(feature)) continue;
    isAny = true;
    if (std::find(all.begin(), all.end(), feature) == all.end()) return false;
  }
  return isAny;
}

/// FNV-1a.
std::uint32_t Hash(std::string_view text) {
  std::uint32_t hash = 2166136261U;
  for (const char letter : text) hash = (hash ^ static_cast<std::uint8_t>(letter)) * 16777619U;
  return hash;
}

std::string Slug(std::string_view text) {
  std::string slug;
  for (const char letter : text) {
    const auto plain = static_cast<unsigned char>(letter);
    if (std::isalnum(plain) != 0) slug += static_cast<char>(std::tolower(plain));
    if (std::isalnum(plain) == 0 && !slug.empty() && slug.back() != '-') slug += '-';
  }
  while (slug.ends_with('-')) slug.pop_back();
  return slug;
}

}  // namespace

bool IsSame(const Fault& one, const Fault& other) {
  if (!(one.symptom == other.symptom)) return false;
  return one.symptom.isTold || one.features == other.features ||
         AreAmong(one.features, other.features) || AreAmong(other.features, one.features);
}

bool IsMemory(std::string_view feature) {
  return feature.ends_with("-memory") || feature == "constant-data";
}

std::string TitleOf(const Symptom& symptom, const std::vector<std::string>& features) {
  const bool isWrong = symptom.kind == Outcome::Kind::wrongAnswer;
  std::string title(NameOf(symptom.kind));
  if (!isWrong && !symptom.isTold && !symptom.how.empty()) {
    title = symptom.how;
  } else if (!symptom.how.empty() && symptom.how != "other") {
    title = fmt::format("{} ({})", title, symptom.how);
  }
  std::vector<std::string> words;
  std::vector<std::string> memories;
  for (const std::string& feature : features) {
    std::string word = feature;
    std::replace(word.begin(), word.end(), '-', ' ');
    if (IsMemory(feature)) {
      memories.push_back(word);
    } else if (!IsCommon(feature)) {
      words.push_back(word);
    }
  }
  if (words.empty() && !features.empty() && IsCommon(features.front())) words.push_back("members");
  words.insert(words.end(), memories.begin(), memories.end());
  return words.empty() ? title : fmt::format("{}: {}", title, fmt::join(words, ", "));
}

std::string NameOf(const Symptom& symptom, const std::vector<std::string>& features) {
  std::string name = Slug(NameOf(symptom.kind));
  if (symptom.isTold)
    return fmt::format("{}-{}-{:04x}", name, Slug(symptom.how).substr(0, 40),
                       Hash(symptom.how) & 0xFFFFU);
  int most = 3;
  for (const std::string& feature : features)
    if (!IsCommon(feature) && !IsMemory(feature) && most-- > 0)
      name = fmt::format("{}-{}", name, Slug(feature));
  const std::string all = fmt::format("{}\n{}", symptom.how, fmt::join(features, "\n"));
  return fmt::format("{}-{:04x}", name, Hash(all) & 0xFFFFU);
}

}  // namespace exploration
