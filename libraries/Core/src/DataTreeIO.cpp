#include "DataTreeIO.h"
