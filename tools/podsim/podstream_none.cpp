#include "tools/podsim/podstream.h"

namespace podsim {

std::unique_ptr<PodStream> makeStream(const PodOptions &, const PodSnapshot &)
{
    return nullptr;
}

} // namespace podsim
