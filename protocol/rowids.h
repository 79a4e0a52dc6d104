#pragma once

#include <cstddef>
#include <string_view>

// Proofs at compile time about the codes and ids of a table's rows. An id is a row's stable name
// for other programs: lower-case letters, digits and underscores, a letter first.

constexpr bool isId(std::string_view id)
{
    if (id.empty() || id.front() < 'a' || id.front() > 'z')
        return false;
    for (const char c : id) {
        if (c != '_' && (c < '0' || c > '9') && (c < 'a' || c > 'z'))
            return false;
    }
    return true;
}

template <typename Row>
constexpr const char *idOf(const Row &row)
{
    return row.id;
}

/// True when each of the first `count` rows has an id that no other has.
template <typename Rows>
constexpr bool idsAreDistinct(const Rows &rows, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (!isId(idOf(rows[i])))
            return false;
        for (std::size_t j = 0; j < i; ++j) {
            if (std::string_view(idOf(rows[i])) == idOf(rows[j]))
                return false;
        }
    }
    return true;
}

template <typename Rows>
constexpr bool idsAreDistinct(const Rows &rows)
{
    return idsAreDistinct(rows, rows.size());
}

/// True when each row's code is greater than that of the row before, so that no two are equal.
template <typename Rows>
constexpr bool codesAscend(const Rows &rows)
{
    for (std::size_t i = 1; i < rows.size(); ++i) {
        if (rows[i - 1].code >= rows[i].code)
            return false;
    }
    return true;
}
