#include "CostFunction.h"
