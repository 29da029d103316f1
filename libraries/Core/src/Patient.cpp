#include "Patient.h"
