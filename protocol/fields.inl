// Bodies of the templates of fields.h.

#include "protocol/codec.h"

#include <QtEndian>

#include <algorithm>
#include <type_traits>

namespace fields_detail {

template <typename T>
void load(const char *from, T &value)
{
    value = qFromLittleEndian<T>(from);
}

template <std::size_t Size>
void load(const char *from, std::array<quint8, Size> &value)
{
    std::copy_n(from, Size, value.begin());
}

template <typename T>
void store(const T &value, char *to)
{
    qToLittleEndian(value, to);
}

template <std::size_t Size>
void store(const std::array<quint8, Size> &value, char *to)
{
    std::copy_n(value.begin(), Size, to);
}

} // namespace fields_detail

template <typename Record>
void computeCrc(const QByteArray &frame, Record &record)
{
    const int end = record.length - kCrcSize;
    const quint16 crc = crc16Of(frame.left(std::max(0, end)));
    record.crcHigh = quint8(crc >> 8);
    record.crcLow = quint8(crc);
    record.crcValid = crcStandsAt(frame, end);
}

template <typename Record, std::size_t N>
void readMembers(const std::array<protocol::FieldRow<Record>, N> &rows, const QByteArray &frame,
                 Record &record)
{
    std::array<char, kFixedSize> fixed = {};
    std::copy_n(frame.constData(), std::min(frame.size(), kFixedSize), fixed.begin());
    for (const auto &row : rows) {
        const char *at = fixed.data() + std::min(row.field.offset, kFixedSize - 1);
        std::visit(
            [&](auto member) {
                using M = decltype(member);
                if constexpr (std::is_same_v<M, protocol::BytePair<Record>>) {
                    record.*member.first = quint8(at[0]);
                    record.*member.second = quint8(at[1]);
                } else if constexpr (!std::is_same_v<M, std::monostate>) {
                    fields_detail::load(at, record.*member);
                }
            },
            row.member);
    }
}

template <typename Record, std::size_t N>
void writeMembers(const std::array<protocol::FieldRow<Record>, N> &rows, const Record &record,
                  QByteArray &frame)
{
    std::array<char, kFixedSize> fixed = {};
    for (const auto &row : rows) {
        char *at = fixed.data() + std::min(row.field.offset, kFixedSize - 1);
        std::visit(
            [&](auto member) {
                using M = decltype(member);
                if constexpr (std::is_same_v<M, protocol::BytePair<Record>>) {
                    at[0] = char(record.*member.first);
                    at[1] = char(record.*member.second);
                } else if constexpr (!std::is_same_v<M, std::monostate>) {
                    fields_detail::store(record.*member, at);
                }
            },
            row.member);
    }
    std::copy_n(fixed.begin(), std::min(frame.size(), kFixedSize), frame.data());
}
