#include "exploration/features/features.h"
