#include "SegWatcher.h"
