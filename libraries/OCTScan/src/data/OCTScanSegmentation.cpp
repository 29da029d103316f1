#include "OCTScanSegmentation.h"
