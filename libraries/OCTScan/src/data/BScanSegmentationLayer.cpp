#include "BScanSegmentationLayer.h"
