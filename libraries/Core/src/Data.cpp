#include "Data.h"
