#include "OCTScan.h"
