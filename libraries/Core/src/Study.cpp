#include "Study.h"
