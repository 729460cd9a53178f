// SPDX-License-Identifier: GPL-3.0-or-later
#include "text/textimage.h"

#include "core/image.h"
#include "core/rows.h"

#include <QFont>
#include <QFontMetricsF>
#include <QImage>
#include <QPainter>
#include <QStringList>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>
#include <vector>

namespace
{
constexpr double kMaxPixels = 4000;
constexpr double kMaxLeading = 100;
/// Font height times characters of a line: wider than any picture in every script, and far
/// below the 2^25 where Qt's fixed-point widths would wrap round.
constexpr double kMaxLineEms = 1 << 20;
/// A picture of this many samples takes 3.5 GiB in its planes.
constexpr int64_t kMaxSamples = int64_t(1) << 28;
constexpr int kHalfCoverage = 128;
constexpr uint16_t kByteToSample = 257;

/// One line, with its place on the canvas.
struct Line {
    QString text;
    double advance = 0;
    QRectF ink; ///< relative to its origin
    QPointF origin;
};

struct Layout {
    QFont font;
    std::vector<Line> lines;
    QPoint corner; ///< where the canvas starts; the first base line starts at 0, 0
    TextMetrics metrics = {};
};

QFont fontOf(const TextStyle &style)
{
    QFont font(style.family);
    font.setPixelSize(std::max(1, int(std::lround(style.pixels))));
    font.setBold(style.bold);
    font.setItalic(style.italic);
    font.setUnderline(style.underline);
    font.setStyleStrategy(style.antialias ? QFont::PreferAntialias : QFont::NoAntialias);
    return font;
}

bool inRange(double value, double low, double high)
{
    return value >= low && value <= high; // false for a NaN
}

/// Measures each line; false if one is too wide to be measured.
bool measureLines(const QStringList &texts, const TextStyle &style, Layout *layout)
{
    const QFontMetricsF measure(layout->font);
    for (QString text : texts) {
        if (text.endsWith(QLatin1Char('\r')))
            text.chop(1);
        if (text.size() * style.pixels > kMaxLineEms)
            return false;
        layout->lines.push_back(
            {text, measure.horizontalAdvance(text), measure.boundingRect(text), {}});
    }
    return true;
}

/// Puts the lines below each other. Returns the rectangle that holds their advances and,
/// where glyphs overhang (italics do), their ink.
QRectF placeLines(const TextStyle &style, const TextMetrics &metrics, std::vector<Line> *lines)
{
    double widest = 0;
    for (const Line &line : *lines)
        widest = std::max(widest, std::ceil(line.advance));
    const double share = std::clamp(style.align, 0, 2) / 2.0;
    const double step = metrics.lineHeight * style.leading;
    QRectF all;
    for (size_t i = 0; i < lines->size(); ++i) {
        Line &line = (*lines)[i];
        line.origin = {std::floor((widest - std::ceil(line.advance)) * share),
                       std::round(double(i) * step)};
        all |=
            QRectF(0, line.origin.y() - metrics.ascent, widest, metrics.ascent + metrics.descent);
        if (!line.ink.isEmpty())
            all |= line.ink.translated(line.origin);
    }
    return all;
}

/// Where everything goes; nothing for a text without extent or beyond the bounds.
std::optional<Layout> layOut(const QString &text, const TextStyle &style)
{
    if (text.isEmpty() || !inRange(style.pixels, 1, kMaxPixels) ||
        !inRange(style.leading, 0, kMaxLeading))
        return std::nullopt;
    Layout layout;
    layout.font = fontOf(style);
    const QFontMetrics measure(layout.font);
    TextMetrics &metrics = layout.metrics;
    metrics = {0, 0, measure.lineSpacing(), measure.ascent(), measure.descent(), measure.leading()};
    const QStringList texts = text.split(QLatin1Char('\n'));
    if (texts.size() > kMaxImageSide || !measureLines(texts, style, &layout))
        return std::nullopt;
    const QRectF all = placeLines(style, metrics, &layout.lines);
    if (!inRange(all.width(), 1, kMaxImageSide - 2) || !inRange(all.height(), 1, kMaxImageSide - 2))
        return std::nullopt;
    const QRect canvas = all.toAlignedRect();
    layout.corner = canvas.topLeft();
    metrics.width = canvas.width();
    metrics.height = canvas.height();
    if (int64_t(metrics.width) * metrics.height > kMaxSamples)
        return std::nullopt;
    return layout;
}

/// How much of each sample the text covers, 0 to 255; null if memory is short.
QImage drawCoverage(const Layout &layout, bool antialias)
{
    QImage coverage(layout.metrics.width, layout.metrics.height, QImage::Format_Alpha8);
    if (coverage.isNull())
        return coverage;
    coverage.fill(0);
    QPainter painter(&coverage);
    painter.setRenderHint(QPainter::Antialiasing, antialias); // large glyphs are drawn as outlines
    painter.setRenderHint(QPainter::TextAntialiasing, antialias);
    painter.setFont(layout.font);
    painter.setPen(Qt::black);
    for (const Line &line : layout.lines)
        painter.drawText(line.origin - layout.corner, line.text);
    return coverage;
}

void takeCoverage(const QImage &coverage, bool antialias, image *into)
{
    const uchar *bytes = coverage.constBits();
    const int stride = coverage.bytesPerLine();
    parallelRows(into->height, into->width, [=](int first, int end) {
        for (int y = first; y < end; ++y) {
            const uchar *in = bytes + int64_t(y) * stride;
            uint16_t *out = into->alpha + int64_t(y) * into->width;
            for (int x = 0; x < into->width; ++x)
                out[x] = antialias ? uint16_t(in[x] * kByteToSample)
                                   : (in[x] < kHalfCoverage ? uint16_t(0) : uint16_t(65535));
        }
    });
}
} // namespace

image *renderText(const QString &text, const TextStyle &style, TextMetrics *metrics)
{
    const std::optional<Layout> layout = layOut(text, style);
    if (metrics)
        *metrics = layout ? layout->metrics : TextMetrics{};
    if (!layout)
        return nullptr;
    const QImage coverage = drawCoverage(*layout, style.antialias);
    auto made = std::make_unique<image>();
    if (coverage.isNull() ||
        !made->allocateUnfilled(coverage.width(), coverage.height(), QStringLiteral("text")))
        return nullptr;
    made->fill(style.red, style.green, style.blue, 0);
    takeCoverage(coverage, style.antialias, made.get());
    return made.release();
}

TextMetrics measureText(const QString &text, const TextStyle &style)
{
    const std::optional<Layout> layout = layOut(text, style);
    return layout ? layout->metrics : TextMetrics{};
}
