#include "EtdrsGrid.h"
