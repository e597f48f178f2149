#include "bridge/host_functions.h"

REALresolver gResolver = nullptr;
double rbversion_rbversion = 0.0;
