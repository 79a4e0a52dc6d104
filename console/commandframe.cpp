#include "console/commandframe.h"

#include "protocol/codec.h"
#include "protocol/fields.h"
#include "protocol/frametext.h"

#include <algorithm>

namespace {

constexpr quint8 kIdleSize = kFrameOverhead + 1;
constexpr int kAnswerSize = kFrameOverhead + 2;
constexpr const char *kIdleCode = "00";
constexpr const char *kInertialValid = "01";
constexpr const char *kControlAndInertialValid = "05";

constexpr int pieceSize(PieceKind kind)
{
    if (kind == PieceKind::None)
        return 0;
    return kind == PieceKind::I16 || kind == PieceKind::Limit ? 2 : 1;
}

constexpr bool sizesFit()
{
    for (const ConsoleCommand &row : kConsoleCommands) {
        int size = kFrameOverhead + hexTextSize(row.code);
        for (const Piece &piece : row.pieces)
            size += pieceSize(piece.kind);
        if (size != row.frameSize)
            return false;
    }
    return true;
}
static_assert(sizesFit(), "a frame size disagrees with its command text");

/// Control inputs as text of six bytes, and whether one of them isn't zero.
struct Controls
{
    QString text;
    bool any = false;
};

Controls controls(const ConsoleState &state)
{
    const ConsoleCommand *row = modeCommand(state.podMode);
    const ControlPanel panel = row ? row->panel : ControlPanel::None;
    Controls result;
    for (std::size_t i = 0; i < kAngleInputs.size(); ++i) {
        const char *object = panel == ControlPanel::Angles  ? kAngleInputs[i]
                             : panel == ControlPanel::Rates ? kRateInputs[i]
                                                            : nullptr;
        const qint16 value = object ? state.textOf(object).toShort() : qint16(0);
        result.text += toHexText(encodeI16(value));
        result.any = result.any || value != 0;
    }
    return result;
}

QString pieceText(const Piece &piece, const ConsoleState &state)
{
    switch (piece.kind) {
    case PieceKind::None:
        return {};
    case PieceKind::Literal:
        return QLatin1String(piece.source);
    case PieceKind::Raw:
        return state.textOf(piece.source) + QLatin1Char(' ');
    case PieceKind::I16:
        return toHexText(encodeI16(state.textOf(piece.source).toShort()));
    case PieceKind::LowByte:
        return toHexText(encodeI16(state.textOf(piece.source).toShort()).left(1));
    case PieceKind::Limit:
        return toHexText(encodeI16(qint16(scaledDouble(state.textOf(piece.source), 1.0))));
    }
    return {};
}

QString commandText(const ConsoleCommand &row, const ConsoleState &state)
{
    QString text = QLatin1String(row.code);
    for (const Piece &piece : row.pieces)
        text += pieceText(piece, state);
    return text;
}

/// The row that the frame carries, or null for an idle frame. A mode that the pod has already
/// reported adds nothing.
const ConsoleCommand *chosenCommand(const ConsoleState &state)
{
    for (int i = kConsoleCommandCount - 1; i >= 0; --i) {
        const ConsoleCommand &row = kConsoleCommands[std::size_t(i)];
        if (state.selected[std::size_t(i)] && (row.mode == kNoMode || row.mode != state.podMode))
            return &row;
    }
    return nullptr;
}

} // namespace

const ConsoleCommand *modeCommand(qint8 mode)
{
    const auto row =
        std::find_if(kConsoleCommands.begin(), kConsoleCommands.end(),
                     [mode](const auto &r) { return r.mode != kNoMode && r.mode == mode; });
    return row == kConsoleCommands.end() ? nullptr : &*row;
}

QByteArray consoleFrame(const ConsoleState &state, bool idle)
{
    const ConsoleCommand *row = idle ? nullptr : chosenCommand(state);
    const Controls control = controls(state);
    return frameFromText(row ? row->frameSize : kIdleSize,
                         {state.textOf(kVersionObject), control.text,
                          QLatin1String(control.any ? kControlAndInertialValid : kInertialValid),
                          state.carrier,
                          row ? commandText(*row, state) : QLatin1String(kIdleCode)});
}

bool isAnswer(const QByteArray &sent, const QByteArray &received)
{
    const quint8 code = byteAt(sent, kFixedSize);
    return code != 0 && code == byteAt(received, kFixedSize) && received.size() == kAnswerSize;
}
