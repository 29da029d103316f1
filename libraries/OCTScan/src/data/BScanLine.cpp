#include "BScanLine.h"
