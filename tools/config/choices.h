#pragma once

#include "foundation/savedblock.h"

#include <type_traits>
#include <utility>

/// A setting that can be chosen: its name, and the words for true and for false.
struct Choice
{
    const char *name;
    bool SavedBlock::*member;
    const char *whenTrue;
    const char *whenFalse;
};

inline constexpr Choice kChoices[] = {
    {"language", &SavedBlock::languageChinese, "zh", "en"},
    {"engine", &SavedBlock::ffmpegEngine, "ffmpeg", "libvlc"},
};

/// Where its byte stands in the file: after the settings before it, which have a fixed size as far
/// as the first string.
constexpr int byteOf(const Choice &choice)
{
    int offset = 0;
    bool isPassed = false;
    forEachField(kSettingFields, [&](const auto &field) {
        using Value = std::decay_t<decltype(std::declval<SavedBlock>().*field.member)>;
        if constexpr (std::is_same_v<Value, bool>)
            isPassed = isPassed || field.member == choice.member;
        if (!isPassed)
            offset += int(sizeof(Value));
    });
    return offset;
}
static_assert(byteOf(kChoices[0]) == 19 && byteOf(kChoices[1]) == 20);

/// The choice's word for a value.
constexpr const char *wordFor(const Choice &choice, bool value)
{
    return value ? choice.whenTrue : choice.whenFalse;
}
