#include "DataTreeNode.h"
