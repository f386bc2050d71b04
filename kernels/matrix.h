#pragma once

/// The three dimensions of the test matrix. Every combination is a row.
enum class Operation { add, copy, floor, multiply, power };
enum class Shape { arrays, scalar, vector2, vector3, vector4, vector8, vector16 };
enum class ElementType { int_, uint_, short_, ushort_, char_, uchar_ };
