#pragma once

#include <functional>
#include <map>
#include <string>

#include "tests/rows.h"
#include "tests/scripted_opencl.h"

enum class Denormals { kept, flushed };

/// A device that computes what the row's kernel says, in the host's rounding mode. It reads the
/// buffers as bytes.
Device DeviceFor(const Row& row, Denormals denormals = Denormals::flushed);

/// The same, and then `wrong` may spoil the results: it is called for each of the first ten
/// elements and each lane of the result with the number of the launch, from 1.
Device DeviceFor(const Row& row,
                 const std::function<float(int launch, int element, int lane, float right)>& wrong);

/// A device that knows every row by its text.
Device DeviceForAll(Denormals denormals = Denormals::flushed);

/// The rows by their kernel texts, taken from the programs that their runners create. Resets the
/// machine when first called.
const std::map<std::string, const Row*>& RowsByText();

/// The row's mismatch line without its end. `x`, the base, and `element` show in power rows alone.
std::string MismatchLine(const Row& row, float x, int element, float c, float d);
