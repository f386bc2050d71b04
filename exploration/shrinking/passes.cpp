#include "exploration/shrinking/passes.h"

#include "exploration/shrinking/steps.h"

namespace exploration {
namespace {

constexpr Pass passes[] = {
#define PASS(name, step) {name, step},
#include "exploration/shrinking/list.h"
#undef PASS
};

}  // namespace

std::span<const Pass> Passes() { return passes; }

}  // namespace exploration
