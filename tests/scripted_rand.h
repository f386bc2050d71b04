#pragma once

#include <vector>

// A rand of the tests' own, which stands before the C library's: it gives the numbers of a script,
// and behind its end those that the C library's unseeded rand gives.

/// No script, and the C library's numbers from their start.
void ResetRand();

/// Gives these numbers next, `times` times over.
void ScriptRand(const std::vector<int>& numbers, int times = 1);

/// The draws since ResetRand.
int Draws();
