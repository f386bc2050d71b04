#pragma once

#include <optional>
#include <span>
#include <string_view>

namespace text {

/// The word that was probably meant: the one that fewest letters make of `written`, which must be
/// few for its length. Capitals are no difference. Nothing if none is near, or `written` is one of
/// them as it stands.
std::optional<std::string_view> Nearest(std::string_view written,
                                        std::span<const std::string_view> words);

}  // namespace text
