#pragma once

/// The whole program: asks the first GPU device of the first platform what its floats can do, sets
/// the host's rounding mode to match, runs the schedule and writes the summary on standard output.
/// Returns 0, at once and without a word if there is no such device.
int RunSuite();
