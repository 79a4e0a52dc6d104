#pragma once

#include "tools/wire/names.h"
#include "tools/wire/textbuffer.h"

// JSON written piece by piece, its keys in the order in which a reader wants them.

namespace wire {

/// Members of a JSON object, the comma between them looked after.
class Members
{
public:
    explicit Members(TextBuffer &out) : m_out(out) { m_out.put('{'); }
    ~Members() { m_out.put('}'); }
    Members(const Members &) = delete;
    Members &operator=(const Members &) = delete;

    Members &key(const char *name)
    {
        if (!m_isFirst)
            m_out.put(',');
        m_isFirst = false;
        m_out.putQuoted(name);
        m_out.put(':');
        return *this;
    }

    Members &add(const char *name, const QByteArray &text)
    {
        key(name);
        m_out.putQuoted(text);
        return *this;
    }

    Members &add(const char *name, qint64 number)
    {
        key(name);
        m_out.putNumber(number);
        return *this;
    }

    /// The bench's names of a Chinese key.
    Members &addNames(const char *text)
    {
        return add("zh", nameOf(text, Language::Chinese).toUtf8())
            .add("en", nameOf(text, Language::English).toUtf8());
    }

private:
    TextBuffer &m_out;
    bool m_isFirst = true;
};

/// A list with a line a row, each written by `put`.
template <typename Rows, typename Put>
void putList(const Rows &rows, TextBuffer &out, Put put)
{
    const char *before = "\n";
    out.put('[');
    for (const auto &row : rows) {
        out.put(before);
        put(row);
        before = ",\n";
    }
    out.put("\n]");
}

} // namespace wire
