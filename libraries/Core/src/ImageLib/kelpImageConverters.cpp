#include "kelpImageConverters.h"
