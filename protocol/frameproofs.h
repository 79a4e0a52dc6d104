#pragma once

#include "protocol/fields.h"
#include "protocol/rowids.h"

#include <type_traits>

// Proofs at compile time about the rows of a frame.

/// True when the rows of a frame follow one another without gap or overlap up to the variable
/// area at offset 69, which the CRC ends.
template <typename Record, std::size_t N>
constexpr bool tilesFrame(const std::array<protocol::FieldRow<Record>, N> &rows)
{
    int offset = 0;
    for (std::size_t i = 0; i + 2 < N; ++i) {
        if (rows[i].field.offset != offset || rows[i].field.size <= 0)
            return false;
        offset += rows[i].field.size;
    }
    const protocol::Field &area = rows[N - 2].field;
    return offset == kFixedSize && area.offset == kFixedSize && area.size == 0 &&
           (area.kind == FieldKind::Command || area.kind == FieldKind::Feedback) &&
           rows[N - 1].field.kind == FieldKind::Crc;
}

/// True when a field of its kind can have its size.
constexpr bool kindFitsSize(const protocol::Field &field)
{
    switch (field.kind) {
    case FieldKind::Constant:
        return field.size > 0 && field.size <= int(field.constant.size());
    case FieldKind::Reserved:
    case FieldKind::Hex:
        return field.size > 0;
    case FieldKind::Byte:
    case FieldKind::SignedByte:
    case FieldKind::Flags:
    case FieldKind::Mode:
        return field.size == 1;
    case FieldKind::Length:
    case FieldKind::I16:
    case FieldKind::U16:
    case FieldKind::Crc:
        return field.size == 2;
    case FieldKind::I32:
    case FieldKind::U32:
        return field.size == 4;
    case FieldKind::Command:
    case FieldKind::Feedback:
        return field.size == 0;
    }
    return false;
}

/// True when the record's member is as wide as the field, and signed where its number is.
template <typename Record, typename T>
constexpr bool memberFits(const protocol::Field &field, T Record::*)
{
    const bool isSigned = field.kind == FieldKind::I16 || field.kind == FieldKind::I32;
    return int(sizeof(T)) == field.size && std::is_signed_v<T> == isSigned;
}

template <typename Record>
constexpr bool memberFits(const protocol::Field &field, protocol::BytePair<Record>)
{
    return field.size == 2;
}

constexpr bool memberFits(const protocol::Field &field, std::monostate)
{
    return field.kind == FieldKind::Flags || field.size == 0 || field.kind == FieldKind::Crc;
}

template <typename Record, std::size_t N>
constexpr bool kindsFitSizes(const std::array<protocol::FieldRow<Record>, N> &rows)
{
    for (const auto &row : rows) {
        if (!kindFitsSize(row.field))
            return false;
    }
    return true;
}

template <typename Record, std::size_t N>
constexpr bool membersFit(const std::array<protocol::FieldRow<Record>, N> &rows)
{
    for (const auto &row : rows) {
        const auto fits = [&row](auto member) { return memberFits(row.field, member); };
        if (!std::visit(fits, row.member))
            return false;
    }
    return true;
}
