#include "SliceStackGraphQPBO.h"
