#include "SegmentationMask.h"
