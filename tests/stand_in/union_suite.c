#include <stdio.h>
#include <stdlib.h>

static const char* variable(const char* name) {
  const char* value = getenv(name);
  return value != NULL ? value : "-";
}

int main(void) {
  printf("stand-in: %s %s, %s, %s, %s\n", variable("OCL_ICD_VENDORS"),
         variable("OCL_ICD_FILENAMES"), variable("OPENCL_LAYERS"), variable("OCLGRIND_QUICK"),
         variable("SIMULATED_GPU_KEEP_DENORMALS"));
  return 0;
}
