#include "OCTScanLoadingUtils.h"
