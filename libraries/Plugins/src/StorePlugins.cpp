#include "StorePlugins.h"
