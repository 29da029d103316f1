#include "SegInterface.h"
