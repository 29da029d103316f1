#include "SegmentationChains.h"
