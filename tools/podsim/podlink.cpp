#include "tools/podsim/podlink.h"
