#include "CaError.h"
