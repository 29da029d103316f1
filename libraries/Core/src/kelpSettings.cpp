#include "kelpSettings.h"
