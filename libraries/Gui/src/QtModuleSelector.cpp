#include "QtModuleSelector.h"

#include "moc_QtModuleSelector.cpp"
