#include "ProcessData.h"
