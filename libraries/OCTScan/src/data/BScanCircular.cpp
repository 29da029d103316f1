#include "BScanCircular.h"
