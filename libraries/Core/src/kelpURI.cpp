#include "kelpURI.h"
