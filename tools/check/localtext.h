#pragma once

#include "tools/wire/names.h"

#include <QString>

namespace check {

/// A text in both languages.
struct LocalText
{
    QString zh;
    QString en;

    const QString &in(wire::Language language) const
    {
        return language == wire::Language::Chinese ? zh : en;
    }
    bool isEmpty() const { return zh.isEmpty() && en.isEmpty(); }
    /// Both with %1 and so on replaced.
    template <typename... Words>
    LocalText arg(const Words &...words) const
    {
        return {zh.arg(words...), en.arg(words...)};
    }
};

} // namespace check
