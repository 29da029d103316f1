#include "RegOCTStacks.h"
