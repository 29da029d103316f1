#include "LayerDistribution.h"
