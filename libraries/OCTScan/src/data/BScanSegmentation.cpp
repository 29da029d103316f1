#include "BScanSegmentation.h"
