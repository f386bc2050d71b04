#pragma once

/// The arrays from new[] that nobody has freed, in the whole process.
int LiveHostArrays();
