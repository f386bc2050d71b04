#pragma once

/// Asks the first GPU device of the first platform what its floats can do, and sets the host's
/// rounding mode to match, for the rest of the process. Returns false, with nothing done, if there
/// is no such device.
bool MatchHostToDevice();

/// The whole program: matches the host to the device, runs the schedule and writes the summary on
/// standard output. Returns 0, at once and without a word if there is no GPU device.
int RunSuite();
