#include "PatientExchange.h"
