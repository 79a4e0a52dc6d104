#include "console/carrierblock.h"

#include <algorithm>

namespace {

constexpr int kRequestOffset = 30;

/// The form's text for a host row: of its carrier field, or of what the form doesn't hold.
QString rowText(const protocol::Field &row, const CarrierTexts &texts)
{
    for (std::size_t i = 0; i < kCarrierFields.size(); ++i) {
        if (kCarrierFields[i].offset == row.offset)
            return texts[i];
    }
    return row.offset == kRequestOffset ? QStringLiteral("1") : QString();
}

} // namespace

const char *carrierKey(const CarrierField &field)
{
    const auto row = std::find_if(kHostRows.begin(), kHostRows.end(), [&field](const auto &r) {
        return r.field.offset == field.offset;
    });
    return row == kHostRows.end() ? "" : row->field.key;
}

QByteArray carrierBlock(const CarrierTexts &texts)
{
    QByteArray block;
    for (const auto &row : kHostRows) {
        if (row.field.offset >= kCarrierOffset && row.field.offset < kFixedSize)
            block.append(fieldBytes(row.field, rowText(row.field, texts)));
    }
    return block;
}
