#include "tools/podsim/podchannel.h"
