/* Clang 19.1.7 for NVPTX at -O0: a crash, "error in backend: Copy one register into another with a different
   width". */
void f1(uchar2 x1)
{
}

__kernel void test(__global const long *in, __global long *out)
{
  f1((uchar2)((uchar)1, (uchar)1));
}

/* Features: vectors, parameters
Work-items: 1 in groups of 1
in before:
  00 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  A5 A5 A5 A5 A5 A5 A5 A5
*/
