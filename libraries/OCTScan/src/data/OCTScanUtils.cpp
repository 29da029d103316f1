#include "OCTScanUtils.h"
