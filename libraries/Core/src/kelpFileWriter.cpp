#include "kelpFileWriter.h"
