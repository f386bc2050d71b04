/* Oclgrind 21.10: clCreateKernel fails ("Undefined external function:
   llvm.experimental.noalias.scope.decl"). */
struct S1 {
  int a;
  int b;
};

union __attribute__((aligned(32))) U2 {
  int b[2];
};

struct S4 {
  struct S1 a[2];
  union U2 b;
};

void f2(__local struct S4 *p1)
{
}

struct S4 f3(struct S4 v2, long x51, long x57)
{
  struct S4 w3 = {{{1}, {1, v2.a[x51].b}}};
  w3.a[x57].a = 1;
  return w3;
}

__kernel void test(__global const long *in, __global long *out)
{
  __local struct S4 l1[1];
  struct S4 w1 = {{{1}}};
  f2(&l1[0]);
  w1 = f3(w1, in[0], in[1]);
  l1[0] = w1;
  w1.b.b[in[2]] = 1;
}

/* Features: members, arrays, run-time-indices, nested-structs, nested-unions, aligned, whole-structs, initializers, parameters, results, pointer-parameters, private-memory, local-memory
Work-items: 1 in groups of 1
in before:
  00*16
  01 00 00 00 00 00 00 00
out before:
  A5 A5 A5 A5 A5 A5 A5 A5
out after:
  A5 A5 A5 A5 A5 A5 A5 A5
*/
