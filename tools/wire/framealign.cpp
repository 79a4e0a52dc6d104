#include "tools/wire/framealign.h"

#include "tools/wire/framefields.h"

#include <QHash>

#include <bitset>
#include <optional>
#include <vector>

namespace wire {

namespace {

/// So many equal frames in a row are the same ones; fewer may be at the end of both recordings.
constexpr int kAnchorFrames = 4;
constexpr int kNear = 64; ///< frames in which an anchor is looked for at first
/// Frames of both whose differences are weighed: memory and time go with its square.
constexpr int kAlignedFrames = 256;
constexpr int kMostCost = 7; ///< of a pair, however many of its fields differ
constexpr int kGapCost = 4;  ///< more than half of it: else no frame would be a changed one
constexpr int kNever = 2 * kAlignedFrames * kGapCost;
/// A field counts where one frame in so many has a value that the other side has too.
constexpr int kCommonShare = 8;

quint16 markOf(const char *bytes, int size)
{
    const uint hash = qHashBits(bytes, std::size_t(size), uint(size));
    return quint16((hash ^ hash >> 16) | 1);
}

using Frames = QVector<FrameMarks>;

bool isTelling(const Frames &before, const Frames &after, FrameKind kind, std::size_t field)
{
    std::bitset<1 << 16> there;
    int known = 0, asked = 0, common = 0;
    for (const FrameMarks &frame : after) {
        if (frame.kind == kind) {
            there.set(frame.marks[field]);
            ++known;
        }
    }
    for (const FrameMarks &frame : before) {
        if (frame.kind == kind) {
            ++asked;
            common += there.test(frame.marks[field]);
        }
    }
    return common * kCommonShare >= qMin(known, asked);
}

void drop(Frames &frames, FrameKind kind, std::size_t field)
{
    for (FrameMarks &frame : frames)
        if (frame.kind == kind)
            frame.marks[field] = 0;
}

void keepTelling(Frames &before, Frames &after)
{
    for (const FrameKind kind : {FrameKind::Unknown, FrameKind::Host, FrameKind::Gcu}) {
        for (std::size_t field = 0; field < FrameMarks::kFields; ++field) {
            if (isTelling(before, after, kind, field))
                continue;
            drop(before, kind, field);
            drop(after, kind, field);
        }
    }
}

int pairCost(const FrameMarks &before, const FrameMarks &after)
{
    if (before.kind != after.kind)
        return kNever;
    quint16 cost = 0; // as wide as a mark: a few instructions then take all of them
    for (std::size_t i = 0; i < FrameMarks::kFields; ++i)
        cost = quint16(cost + (before.marks[i] != after.marks[i]));
    return qMin<int>(cost, kMostCost);
}

/// What it costs at the least to go on from `before` frames of the one and `after` of the other to
/// the horizon, where so many of both together are passed: a pair counts there as two, so that ways
/// with gaps and ways without them are as long as one another.
class Costs
{
public:
    Costs(const Frames &before, const Frames &after)
        : m_before(before), m_after(after),
          m_horizon(qMin(int(before.size() + after.size()), kMost)), m_costs(kWidth * kWidth, 0)
    {
        for (int i = qMin(int(before.size()), m_horizon); i >= 0; --i)
            for (int j = qMin(int(after.size()), m_horizon - 1 - i); j >= 0; --j)
                at(i, j) = qint16(bestAt(i, j).cost);
    }

    QVector<Place> places()
    {
        QVector<Place> places;
        for (int i = 0, j = 0; 2 * (i + j) < m_horizon;) {
            places.append(bestAt(i, j).place);
            i += places.last() != Place::Added;
            j += places.last() != Place::Lost;
        }
        return places;
    }

private:
    static constexpr int kMost = kAlignedFrames;
    static constexpr std::size_t kWidth = kMost + 2;

    struct Best
    {
        int cost;
        Place place;
    };

    Best bestAt(int i, int j)
    {
        const bool hasBefore = i < m_before.size(), hasAfter = j < m_after.size();
        Best best{kNever, Place::Pair};
        if (hasBefore && hasAfter)
            best.cost = pairCost(m_before[i], m_after[j]) + at(i + 1, j + 1);
        if (hasBefore && kGapCost + at(i + 1, j) < best.cost)
            best = {kGapCost + at(i + 1, j), Place::Lost};
        if (hasAfter && kGapCost + at(i, j + 1) < best.cost)
            best = {kGapCost + at(i, j + 1), Place::Added};
        return best;
    }

    qint16 &at(int i, int j) { return m_costs[std::size_t(i) * kWidth + std::size_t(j)]; }

    const Frames &m_before, &m_after;
    const int m_horizon;
    std::vector<qint16> m_costs;
};

using Keys = QVector<uint>;

Keys keysOf(const Frames &frames)
{
    Keys keys;
    for (const FrameMarks &frame : frames)
        keys.append(qHashBits(frame.marks.data(), sizeof frame.marks, uint(frame.kind)));
    return keys;
}

/// A number for each frame and those after it that make an anchor. At the end of a recording its
/// end makes up for frames.
QVector<quint64> runsOf(Keys keys, bool reachEnd)
{
    const int count = reachEnd ? keys.size() : qMax(0, int(keys.size()) - kAnchorFrames + 1);
    keys.resize(count + kAnchorFrames - 1);
    QVector<quint64> runs;
    for (int i = 0; i < count; ++i) {
        quint64 run = 0;
        for (int j = i; j < i + kAnchorFrames; ++j)
            run = (run ^ keys[j]) * Q_UINT64_C(0x9E3779B97F4A7C15);
        runs.append(run);
    }
    return runs;
}

/// Where both go on alike: how many frames stand in front of it.
struct Anchor
{
    int before = 0, after = 0;
};

std::optional<Anchor> anchorOf(const Keys &before, const Keys &after, bool reachEnd)
{
    const QVector<quint64> runs = runsOf(before, reachEnd), others = runsOf(after, reachEnd);
    QHash<quint64, int> first;
    for (int i = others.size() - 1; i >= 0; --i)
        first[others[i]] = i;
    std::optional<Anchor> nearest;
    for (int i = 0; i < runs.size() && (!nearest || i < nearest->before + nearest->after); ++i) {
        const int j = first.value(runs[i], -1);
        if (j >= 0 && (!nearest || i + j < nearest->before + nearest->after))
            nearest = Anchor{i, j};
    }
    return nearest;
}

/// Goes from anchor to anchor along both.
class Walk
{
public:
    Walk(Frames before, Frames after, bool reachEnd)
        : m_before(std::move(before)), m_after(std::move(after)), m_reachEnd(reachEnd)
    {
        keepTelling(m_before, m_after);
        m_beforeKeys = keysOf(m_before);
        m_afterKeys = keysOf(m_after);
    }

    /// As far as there are anchors, and there is still much to look ahead at.
    QVector<Place> places()
    {
        for (auto anchor = nextAnchor(); anchor && hasView(); anchor = nextAnchor())
            goTo(*anchor);
        return m_places.isEmpty() ? Costs(m_before, m_after).places() : m_places;
    }

private:
    bool hasView() const
    {
        return m_reachEnd || (m_i <= m_before.size() / 2 && m_j <= m_after.size() / 2);
    }

    /// First among a few frames, which takes little.
    std::optional<Anchor> nextAnchor() const
    {
        for (const int most : {kNear, int(qMax(m_before.size(), m_after.size()))}) {
            const Keys before = m_beforeKeys.mid(m_i, most), after = m_afterKeys.mid(m_j, most);
            const bool areWhole =
                m_i + before.size() == m_before.size() && m_j + after.size() == m_after.size();
            if (const auto anchor = anchorOf(before, after, m_reachEnd && areWhole))
                return anchor;
        }
        return {};
    }

    void goTo(const Anchor &anchor)
    {
        if (anchor.before == 0 && anchor.after == 0)
            goOnAlike();
        else if (anchor.after == 0)
            go(QVector<Place>(anchor.before, Place::Lost));
        else if (anchor.before == 0)
            go(QVector<Place>(anchor.after, Place::Added));
        else
            go(Costs(m_before.mid(m_i, anchor.before), m_after.mid(m_j, anchor.after)).places());
    }

    void goOnAlike()
    {
        int count = 1;
        while (m_i + count < m_before.size() && m_j + count < m_after.size() &&
               m_beforeKeys[m_i + count] == m_afterKeys[m_j + count])
            ++count;
        go(QVector<Place>(count, Place::Pair));
    }

    void go(const QVector<Place> &places)
    {
        m_i += places.size() - places.count(Place::Added);
        m_j += places.size() - places.count(Place::Lost);
        m_places += places;
    }

    Frames m_before, m_after;
    const bool m_reachEnd;
    Keys m_beforeKeys, m_afterKeys;
    int m_i = 0, m_j = 0;
    QVector<Place> m_places;
};

} // namespace

FrameMarks marksOf(const QByteArray &bytes)
{
    FrameMarks frame;
    frame.kind = kindOf(bytes);
    std::size_t count = 0;
    const auto add = [&](const Span &span) {
        if (span.size > 0 && count < FrameMarks::kFields)
            frame.marks[count] = markOf(bytes.constData() + span.offset, span.size);
        ++count;
    };
    if (frame.kind == FrameKind::Unknown)
        frame.marks.fill(markOf(bytes.constData(), bytes.size()));
    for (const protocol::Field &field : fieldsOf(frame.kind)) {
        const Span span = spanOf(field, frame.kind, bytes.constData(), bytes.size());
        if (field.kind == FieldKind::Crc) // it follows from the others
            continue;
        if (field.size > 0) {
            add(span);
            continue;
        }
        for (int i = 0; i < 2; ++i) // code, and result or fixed byte
            add({span.offset + i, span.size > i ? 1 : 0});
        add({span.offset + 2, span.size - 2});
    }
    return frame;
}

QVector<Place> placesOf(const QVector<FrameMarks> &before, const QVector<FrameMarks> &after,
                        bool reachEnd)
{
    return Walk(before, after, reachEnd).places();
}

} // namespace wire
