#include "Phantom.h"
