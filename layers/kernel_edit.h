#pragma once

#include <span>
#include <string>
#include <string_view>

/// What a kernel's text tells of its row.
struct KernelRow {
  std::string kernel;   // its name: "sum", "copy", "_floor", "multiply", "power"
  std::string element;  // the element member's type without a width: "int", ..., "uchar"
  std::string width;    // of the vectors: "2", "3", "4", "8", "16"; empty in arrays and scalars
  bool arrays;
};

/// A search and replacement on a kernel text, in the rows that `where` takes; it must find its text
/// there. Both sides may name, after a dollar sign:
///   T N     the element type and the vectors' width, so that $T$N is the element member's type
///   U S     the element type without and with a sign
///   H       the width of a vector's lower half
///   M L     a vector's lanes back to front, and each one's neighbour, the last one's being lane 0
///   a b c   the lvalues of the statement: the integer view of A, the float view of B, the result
///   x       the integer view as it is converted (in a sum or product of scalars, by itself)
///   v       the whole right side
///   o       the operator between the two inputs
///   D i     "[4]" and "i" in arrays; nothing and "0" elsewhere
struct Edit {
  std::string_view find;
  std::string_view with;
  bool (*where)(const KernelRow&) = [](const KernelRow&) { return true; };
};

/// A compiler that does one thing wrong.
struct Fault {
  std::string_view name;
  std::string_view meaning;
  Edit edits[5];  // in their order; the rest is empty
};

/// `text` as the faulty compiler takes it. A text that is no row's stays as it is. Throws
/// std::logic_error if an edit does not find what it replaces.
std::string Edited(std::string text, const Fault& fault);

/// The faults that the layer knows.
extern const std::span<const Fault> faults;

/// Writes them to standard output, one a line: the name, and behind it what it stands for. Whether
/// all of it was written.
bool ListFaults();
