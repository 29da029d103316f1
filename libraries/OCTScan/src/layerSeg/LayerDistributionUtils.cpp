#include "LayerDistributionUtils.h"
