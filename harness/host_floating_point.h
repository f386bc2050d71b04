#pragma once

// The references are what the source says, NaNs, infinities and denormals too.
#if defined(__FAST_MATH__) || __FINITE_MATH_ONLY__
#error "compile without -ffast-math, -ffinite-math-only and -Ofast"
#endif

// What the driver asks of SetHostRounding: a mode code and a data type.
inline constexpr int towardZero = 4;
inline constexpr int floatType = 6;

/// Sets the host's rounding mode and returns the one that was in force, as a mode code from 1 to 4.
/// `mode`, from 0 to 4 and not validated: 0 the default of the data type, 1 to nearest, 2 upward,
/// 3 downward, 4 toward zero. The default is to nearest for a `dataType` of 6 or 7, else toward
/// zero. Aborts, with the new mode set, if the mode it found is none of the four.
int SetHostRounding(int mode, int dataType);

/// Stands for the switch that makes a host flush denormals as its device does. It changes nothing
/// and returns 0: the host flushes in software, through FlushDenormal, so that its floating-point
/// control register is the same whatever the device can do.
int ForceFlushToZero();

/// Positive zero for a magnitude below FLT_MIN; else `x`, a NaN or an infinity unchanged. A device
/// without denormals keeps a negative one's sign, which no check compares.
float FlushDenormal(float x);

/// The operand as it is, for the rows whose float operand cannot be denormal.
inline float Unflushed(float x) { return x; }
