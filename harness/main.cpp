#include "harness/driver.h"

int main() { return RunSuite(); }
