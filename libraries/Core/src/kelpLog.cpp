#include "kelpLog.h"
