#include "QpboGraph.h"
