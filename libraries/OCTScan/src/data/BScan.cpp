#include "BScan.h"
