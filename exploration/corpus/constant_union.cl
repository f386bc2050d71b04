/* Mesa 22.3.6, Rusticl on llvmpipe: the assignment of a union in __constant ends the process with
   SIGSEGV, in clCreateKernel. */
union U1 {
  uchar a;
  int c;
};

__constant union U1 c1 = {(uchar)1};

__kernel void test(__global const long *in, __global long *out)
{
  union U1 u1;
  u1 = c1;
}

/* Features: whole-unions, private-memory, constant-data
Work-items: 1 in groups of 1
in before:
  00 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  A5 A5 A5 A5 A5 A5 A5 A5
*/
