#pragma once

#include <QVector>

namespace wire {

/// Things that wait to be taken one after another, in the order in which they came.
template <typename T>
class RecordQueue
{
public:
    void put(const T &thing) { m_things.append(thing); }

    bool take(T &thing)
    {
        if (m_taken == m_things.size()) {
            m_things.clear();
            m_taken = 0;
            return false;
        }
        thing = m_things.at(m_taken++);
        return true;
    }

private:
    QVector<T> m_things;
    int m_taken = 0;
};

} // namespace wire
