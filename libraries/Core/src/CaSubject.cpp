#include "CaSubject.h"
