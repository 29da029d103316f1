#include "LayerName.h"
