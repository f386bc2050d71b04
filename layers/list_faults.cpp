// Lists the faults of the broken compiler.

#include "layers/kernel_edit.h"

int main() { return ListFaults() ? 0 : 1; }
