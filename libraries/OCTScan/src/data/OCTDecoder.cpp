#include "OCTDecoder.h"
