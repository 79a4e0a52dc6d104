#pragma once

#include "protocol/rowids.h"

#include <QString>
#include <QtGlobal>

#include <array>

/// A work mode as the pod reports it. Its code is that of the command that enters it.
struct ModeRow
{
    quint8 code = 0;
    const char *id = "";
    const char *name = "";
};

inline constexpr std::array<ModeRow, 8> kModes = {{
    {0x10, "angle_control", "角度控制模式"},
    {0x11, "lock", "指向锁定模式"},
    {0x12, "follow", "指向跟随模式"},
    {0x13, "look_down", "俯拍模式"},
    {0x14, "euler_control", "欧拉角控制模式"},
    {0x16, "stare", "凝视模式"},
    {0x17, "track", "跟踪模式"},
    {0x1C, "fpv", "FPV模式"},
}};
static_assert(codesAscend(kModes), "the work modes aren't in the order of their codes");
static_assert(idsAreDistinct(kModes), "a work mode lacks an id, or shares one");

/// Name of a pod work mode in the current language, empty for a code that is no mode.
QString modeName(quint8 code);
