#include "bench/soak/picture.h"

#include <QTextStream>

#include <algorithm>
#include <cmath>

namespace {

constexpr int kWidth = 1000; // pixels of the curves
constexpr int kHeight = 200; // of each
constexpr int kLeft = 70;
constexpr int kTop = 50;
constexpr int kGap = 60;
constexpr int kTextHeight = 14;
constexpr const char *kColours[kLinkCount] = {"#1f6fb4", "#d9822b", "#3a8f4d"};

struct Range
{
    double low;
    double high;
};

/// With some room on both sides, so that a flat curve lies in the middle.
Range rangeOf(const std::vector<Sample> &samples, std::size_t quantity)
{
    const auto order = [quantity](const Sample &a, const Sample &b) {
        return a.figures[quantity] < b.figures[quantity];
    };
    const auto ends = std::minmax_element(samples.begin(), samples.end(), order);
    return {std::floor(ends.first->figures[quantity] - 1),
            std::ceil(ends.second->figures[quantity] + 1)};
}

void writeText(QTextStream &out, int x, int y, const QString &text, const char *anchor = "start")
{
    out << "<text x=\"" << x << "\" y=\"" << y << "\" text-anchor=\"" << anchor << "\">" << text
        << "</text>\n";
}

/// One curve, cut into runs of samples of one link.
void writeCurve(QTextStream &out, const std::vector<Sample> &samples, std::size_t quantity, int top)
{
    const Range range = rangeOf(samples, quantity);
    const double minutes = samples.back().minute;
    out << "<rect x=\"" << kLeft << "\" y=\"" << top << "\" width=\"" << kWidth << "\" height=\""
        << kHeight << "\" fill=\"none\" stroke=\"#999\"/>\n";
    writeText(out, kLeft, top - kTextHeight / 2,
              QString::fromLatin1(kQuantities[quantity].name) + QLatin1Char(' ') +
                  QLatin1String(kQuantities[quantity].unit));
    writeText(out, kLeft - 5, top + kTextHeight, QString::number(range.high), "end");
    writeText(out, kLeft - 5, top + kHeight, QString::number(range.low), "end");
    writeText(out, kLeft + kWidth, top + kHeight + kTextHeight + 2,
              QString::number(minutes, 'f', 1) + QLatin1String(" min"), "end");
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const bool begins = i == 0 || samples[i].link != samples[i - 1].link;
        if (begins)
            out << (i == 0 ? "" : "\"/>\n") << "<polyline fill=\"none\" stroke=\""
                << kColours[samples[i].link] << "\" points=\"";
        const double y =
            (range.high - samples[i].figures[quantity]) / (range.high - range.low) * kHeight;
        out << kLeft + samples[i].minute / minutes * kWidth << ',' << top + y << ' ';
    }
    out << "\"/>\n";
}

} // namespace

QString picture(const std::vector<Sample> &samples)
{
    QString text;
    QTextStream out(&text);
    const int height = kTop + int(kQuantities.size()) * (kHeight + kGap);
    out << "<svg xmlns=\"http://www.w3.org/2000/svg\" width=\"" << kLeft + kWidth + 20
        << "\" height=\"" << height << "\" font-family=\"sans-serif\" font-size=\"" << kTextHeight
        << "\">\n<rect width=\"100%\" height=\"100%\" fill=\"white\"/>\n";
    for (int link = 0; link < kLinkCount; ++link)
        out << "<text x=\"" << kLeft + 80 * link << "\" y=\"20\" fill=\"" << kColours[link] << "\">"
            << kLinks[link] << "</text>\n";
    for (std::size_t i = 0; i < kQuantities.size() && !samples.empty(); ++i)
        writeCurve(out, samples, i, kTop + int(i) * (kHeight + kGap));
    out << "</svg>\n";
    return text;
}
