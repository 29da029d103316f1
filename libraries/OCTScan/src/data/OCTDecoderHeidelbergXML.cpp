#include "OCTDecoderHeidelbergXML.h"
