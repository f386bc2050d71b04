/* Oclgrind 21.10: elements of __constant data without an initializer of their own are not zero
   where the array is indexed at run time. */
struct S1 {
  int a;
  long2 b[2];
  int c;
};

union U1 {
  int2 a;
  struct S1 d;
};

__constant union U1 c1[3] = {{(int2)(1, 1)}};

__kernel void test(__global const long *in, __global long *out)
{
  in += 1 * get_global_id(0);
  out += 2 * get_global_id(0);
  vstore2(convert_long2(c1[in[0]].a), 0, out + 0);
}

/* Features: members, arrays, run-time-indices, nested-structs, vectors, work-items, constant-data
Work-items: 3 in groups of 3
in before:
  00*16
  02 00 00 00 00 00 00 00
out before:
  A5*48
out after:
  01 00 00 00 00 00 00 00 01 00 00 00 00 00 00 00
  01 00 00 00 00 00 00 00 01 00*23
*/
