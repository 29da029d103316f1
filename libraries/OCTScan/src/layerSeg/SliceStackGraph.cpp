#include "SliceStackGraph.h"
