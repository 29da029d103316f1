#include "DataIOManager.h"
