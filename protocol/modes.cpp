#include "protocol/modes.h"

#include "foundation/QGlobal.h"

#include <algorithm>

QString modeName(quint8 code)
{
    const auto mode = std::find_if(kModes.begin(), kModes.end(),
                                   [code](const ModeRow &row) { return row.code == code; });
    return mode == kModes.end() ? QString() : translated(mode->name);
}
