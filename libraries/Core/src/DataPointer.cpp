#include "DataPointer.h"
