#include "SliceStackProperties.h"
