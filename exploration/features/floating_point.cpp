#include "exploration/features/features.h"

namespace exploration {

const Feature floatsFeature = {
    .name = "floats",
    .says = "members and values of type float",
    .isUsed = [](const Program& program) { return UsesScalar(program, Scalar::floatType); }};

const Feature doublesFeature = {
    .name = "doubles",
    .says = "members and values of type double, where the device has it",
    .isUsed = [](const Program& program) { return UsesScalar(program, Scalar::doubleType); }};

const Feature halvesFeature = {
    .name = "halves",
    .says = "members and values of type half, where the device has it",
    .isUsed = [](const Program& program) { return UsesScalar(program, Scalar::halfType); }};

}  // namespace exploration
