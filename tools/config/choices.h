#pragma once

#include "foundation/savedblock.h"

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

/// The choice's present word.
constexpr const char *chosenWord(const Choice &choice, const SavedBlock &block)
{
    return block.*choice.member ? choice.whenTrue : choice.whenFalse;
}
