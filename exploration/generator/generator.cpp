#include "exploration/generator/generator.h"
