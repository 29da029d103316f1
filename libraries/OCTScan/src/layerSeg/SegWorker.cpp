#include "SegWorker.h"
