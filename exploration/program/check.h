#pragma once

#include <stdexcept>

#include "exploration/program/program.h"

namespace exploration {

/// The program is not valid OpenCL C, its behaviour is undefined, or it is in doubt what a device
/// must do. Generated programs never are; shrunken ones may be.
class Invalid : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// Throws Invalid unless `holds`.
inline void Require(bool holds, const char* what) {
  if (!holds) throw Invalid(what);
}

/// Throws Invalid if the program's text would not compile: types and kinds that do not fit, names
/// that are not declared. What it does when it runs is for the model to say.
void Check(const Program& program);

}  // namespace exploration
