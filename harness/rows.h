#pragma once

// The runners of all rows, in the order of the test matrix. Each returns 1 if its test counts as
// passed and 0 if not, takes no arguments, and keeps nothing between calls but its place in the
// stream of std::rand.

int RunTest_add_union_arrays_1();
