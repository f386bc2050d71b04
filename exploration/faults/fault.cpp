#include "exploration/faults/fault.h"

#include <fmt/format.h>

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <optional>
#include <string_view>

namespace exploration {
namespace {

// What says nothing where there is anything else to say.
bool IsCommon(std::string_view feature) { return feature == "members"; }

// What something happens to, rather than what happens.
bool IsCarrier(std::string_view feature) {
  for (const std::string_view one : {"members", "arrays", "constant-indices", "floats", "doubles",
                                     "halves", "vectors", "three-components", "work-items"})
    if (feature == one) return true;
  return IsMemory(feature);
}

bool IsMemoryOrCommon(std::string_view feature) { return IsMemory(feature) || IsCommon(feature); }

using Features = std::vector<std::string>;

Features Without(Features features, bool (*which)(std::string_view)) {
  std::erase_if(features, which);
  return features;
}

/// Whether the one's features, of which there must be one, are among the other's.
bool AreAmong(const Features& some, const Features& all) {
  return !some.empty() && std::ranges::all_of(some, [&all](const std::string& feature) {
    return std::ranges::find(all, feature) != all.end();
  });
}

/// Whether these are the features of one fault, but for those that say nothing. Where both have
/// others, that is.
std::optional<bool> AreLike(const Fault& one, const Fault& other,
                            bool (*saysNothing)(std::string_view)) {
  const Features ofOne = Without(one.features, saysNothing);
  const Features ofOther = Without(other.features, saysNothing);
  if (ofOne.empty() || ofOther.empty()) return std::nullopt;
  return AreAmong(ofOne, ofOther) || AreAmong(ofOther, ofOne);
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
  const Symptom& symptom = one.symptom;
  const bool isLike = symptom.kind == other.symptom.kind && symptom.isTold == other.symptom.isTold;
  if (!isLike) return false;
  if (symptom.isTold) return symptom.how == other.symptom.how;
  if (symptom.kind != Outcome::Kind::wrongAnswer && symptom.how != other.symptom.how) return false;
  // What says most comes first.
  for (const auto saysNothing : {IsCarrier, IsMemoryOrCommon, IsCommon})
    if (const std::optional<bool> like = AreLike(one, other, saysNothing)) return *like;
  return one.features == other.features;
}

std::vector<std::string> InBoth(const std::vector<std::string>& some,
                                const std::vector<std::string>& others) {
  std::vector<std::string> both;
  for (const std::string& feature : some)
    if (std::ranges::find(others, feature) != others.end()) both.push_back(feature);
  return both;
}

std::vector<std::string> TellingFeatures(const std::vector<std::string>& features) {
  return Without(features, IsCarrier);
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
  if (words.empty())
    words.push_back(features.empty() || !IsCommon(features.front()) ? "plain variables"
                                                                    : "members");
  words.insert(words.end(), memories.begin(), memories.end());
  return fmt::format("{}: {}", title, fmt::join(words, ", "));
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
  // How an answer is wrong depends on the values.
  const bool isWrong = symptom.kind == Outcome::Kind::wrongAnswer;
  const std::string all =
      fmt::format("{}\n{}", isWrong ? "" : symptom.how, fmt::join(features, "\n"));
  return fmt::format("{}-{:04x}", name, Hash(all) & 0xFFFFU);
}

}  // namespace exploration
