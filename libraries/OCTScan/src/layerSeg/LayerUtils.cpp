#include "LayerUtils.h"
