#include "kelpColorTransferFunction.h"
