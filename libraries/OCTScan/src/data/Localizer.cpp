#include "Localizer.h"
