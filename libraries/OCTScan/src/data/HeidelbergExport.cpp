#include "HeidelbergExport.h"
