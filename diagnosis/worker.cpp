#include "diagnosis/worker.h"

int diagnosis::WorkerMain() { return 2; }
