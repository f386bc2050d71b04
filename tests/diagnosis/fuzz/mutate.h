#pragma once

#include <random>
#include <string>

namespace diagnosis {

/// A line of JSON, damaged as a disk, a mail program or somebody who means it harm would: in its
/// bytes, in its structure, or in what its base64 holds, of the same length or of another.
std::string Mutated(const std::string& line, std::mt19937_64& random);

}  // namespace diagnosis
