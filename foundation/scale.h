#pragma once

#include "foundation/QGlobal.h"

/// A base size times the interface scale, truncated.
inline int scaled(double base)
{
    return int(base * QGlobal::instance()->scaleFactor);
}
