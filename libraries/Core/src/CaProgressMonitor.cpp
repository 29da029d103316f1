#include "CaProgressMonitor.h"
