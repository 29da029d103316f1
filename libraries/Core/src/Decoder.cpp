#include "Decoder.h"
