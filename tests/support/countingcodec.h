#pragma once

#include "video/VideoCodec.h"

#include <atomic>

/// Counts its openings.
class CountingCodec : public VideoCodec
{
public:
    using VideoCodec::VideoCodec;
    std::atomic<int> openings{0};

protected:
    void run() override
    {
        ++openings;
        VideoCodec::run();
    }
};
