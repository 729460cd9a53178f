// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/histogramview.h"

#include "core/image.h"
#include "core/workspace.h"

#include <QActionGroup>
#include <QContextMenuEvent>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QLocale>
#include <QMenu>
#include <QMouseEvent>
#include <QPainter>
#include <QToolTip>

#include <algorithm>
#include <cmath>

namespace
{
constexpr size_t kLuma = 3;
constexpr double kGolden = 0.6180339887498949; ///< whose multiples fall evenly between 0 and 1
constexpr int kRun = 32;                       ///< samples counted in a row: those of a cache line
constexpr int64_t kMostCounted = 1 << 18;      ///< about, of a picture

/// Every how many runs and rows one is counted, so that a large picture takes no longer than a
/// refresh may.
int strideOf(const image &picture)
{
    const double share = double(picture.sampleCount()) / double(kMostCounted);
    return std::max(1, int(std::ceil(std::sqrt(share))));
}

void countRun(const image &picture, int64_t from, int64_t end,
              std::array<HistogramView::Counts, 4> *bins)
{
    for (int64_t i = from; i < end; ++i) {
        if (!picture.alpha[i])
            continue;
        const int red = picture.red[i], green = picture.green[i], blue = picture.blue[i];
        ++(*bins)[0][size_t(red >> 8)];
        ++(*bins)[1][size_t(green >> 8)];
        ++(*bins)[2][size_t(blue >> 8)];
        ++(*bins)[kLuma][size_t((30 * red + 59 * green + 11 * blue) / 100 >> 8)];
    }
}

/// The count that takes the full height. The outer levels do not matter, since clipped samples
/// pile up there; nor do a few tall levels, which would flatten all others, beyond some bound.
int highest(HistogramView::Counts counts)
{
    const auto first = counts.begin() + 1, last = counts.end() - 1;
    const auto tall = first + (last - first) * 19 / 20;
    std::nth_element(first, tall, last);
    const int most = *std::max_element(tall, last);
    return *tall > 0 ? int(std::min<int64_t>(most, int64_t(3) * *tall)) : most;
}
} // namespace

HistogramView::HistogramView(QWidget *parent) : QWidget(parent)
{
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Expanding);
    setFocusPolicy(Qt::TabFocus);
    setCursor(Qt::PointingHandCursor);
    describe();
}

QSize HistogramView::sizeHint() const
{
    return {180, 64};
}

QSize HistogramView::minimumSizeHint() const
{
    return {96, 40};
}

void HistogramView::setPicture(const image *picture)
{
    bins = {};
    isShare = false;
    if (picture && picture->valid() && picture->alpha) {
        const int stride = strideOf(*picture);
        isShare = stride > 1;
        const int step = kRun * stride;
        for (int y = 0; y < picture->height; y += stride) {
            const int64_t row = int64_t(y) * picture->width;
            if (!isShare) {
                countRun(*picture, row, row + picture->width, &bins);
                continue;
            }
            // Runs of neighbouring rows stand apart, or stripes of the picture would count
            // wholly or not at all.
            const int first = int(std::fmod(y / stride * kGolden, 1.0) * stride) * kRun;
            for (int x = first; x < picture->width; x += step)
                countRun(*picture, row + x, row + std::min(x + kRun, picture->width), &bins);
        }
    }
    update();
}

// --- What is shown -----------------------------------------------------------------------

bool HistogramView::isLogarithmic()
{
    return workspace() && workspace()->histogramLog;
}

HistogramView::Channel HistogramView::shownChannel()
{
    return workspace() ? Channel(workspace()->histogramChannel) : AllChannels;
}

void HistogramView::setLogarithmic(bool on)
{
    if (workspace())
        workspace()->histogramLog = on;
    describe();
    update();
}

void HistogramView::setChannel(Channel channel)
{
    if (workspace())
        workspace()->histogramChannel = channel;
    describe();
    update();
}

void HistogramView::describe()
{
    setAccessibleDescription(
        isLogarithmic() ? tr("Logarithmic heights. Space for linear ones, Menu for channels.")
                        : tr("Linear heights. Space for logarithmic ones, Menu for channels."));
}

bool HistogramView::isShown(size_t channel) const
{
    const Channel shown = shownChannel();
    return shown == AllChannels || size_t(shown) == channel + 1;
}

int HistogramView::levelAt(int x) const
{
    return std::clamp(x * 256 / std::max(1, width()), 0, 255);
}

QString HistogramView::tipAt(int x) const
{
    const int level = levelAt(x);
    const QString names[] = {tr("Red"), tr("Green"), tr("Blue"), tr("Luma")};
    QString text = isShare ? tr("Level %1 (a share of the picture is counted)").arg(level)
                           : tr("Level %1").arg(level);
    for (size_t c = 0; c < bins.size(); ++c)
        if (isShown(c))
            text += QStringLiteral("\n%1: %2")
                        .arg(names[c], QLocale().toString(bins[c][size_t(level)]));
    return text + QLatin1Char('\n') +
           (isLogarithmic() ? tr("Click for linear heights") : tr("Click for logarithmic heights"));
}

bool HistogramView::event(QEvent *event)
{
    if (event->type() != QEvent::ToolTip)
        return QWidget::event(event);
    const auto *help = static_cast<QHelpEvent *>(event);
    const int level = levelAt(help->x());
    // The tip goes when the pointer comes to another level.
    const int left = level * width() / 256;
    QToolTip::showText(help->globalPos(), tipAt(help->x()), this,
                       QRect(left, 0, width() / 256 + 1, height()));
    return true;
}

void HistogramView::mouseReleaseEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton && rect().contains(event->pos()))
        setLogarithmic(!isLogarithmic());
}

void HistogramView::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Space)
        setLogarithmic(!isLogarithmic());
    else
        QWidget::keyPressEvent(event);
}

void HistogramView::contextMenuEvent(QContextMenuEvent *event)
{
    auto *menu = new QMenu(this);
    menu->setAttribute(Qt::WA_DeleteOnClose);
    auto *group = new QActionGroup(menu);
    const QString names[] = {tr("&All"), tr("&Red"), tr("&Green"), tr("&Blue"), tr("L&uma")};
    for (int i = AllChannels; i <= Luma; ++i) {
        QAction *action = menu->addAction(names[i]);
        action->setCheckable(true);
        action->setChecked(i == shownChannel());
        group->addAction(action);
        connect(action, &QAction::triggered, this, [this, i] { setChannel(Channel(i)); });
    }
    menu->addSeparator();
    QAction *logarithmic = menu->addAction(tr("&Logarithmic"));
    logarithmic->setCheckable(true);
    logarithmic->setChecked(isLogarithmic());
    connect(logarithmic, &QAction::triggered, this, &HistogramView::setLogarithmic);
    menu->popup(event->globalPos());
}

// --- Drawing -----------------------------------------------------------------------------

QPolygonF HistogramView::outline(const Counts &channel, double top) const
{
    const bool logarithmic = isLogarithmic();
    const double step = width() / 256.0;
    QPolygonF shape;
    shape << QPointF(0, height());
    for (int i = 0; i < 256; ++i) {
        const double count = channel[size_t(i)];
        const double part = logarithmic ? std::log1p(count) / std::log1p(top) : count / top;
        const double y = height() * (1 - std::min(1.0, part));
        shape << QPointF(i * step, y) << QPointF((i + 1) * step, y);
    }
    return shape << QPointF(width(), height());
}

/// Where colours overlap they mix as light does on a dark ground, and as ink on a light one.
void HistogramView::drawColour(QPainter *painter, const QPolygonF &shape, size_t channel) const
{
    const bool dark = palette().color(QPalette::Base).lightness() < 128;
    const QColor onDark[] = {{225, 60, 60}, {50, 185, 70}, {70, 105, 255}, {210, 210, 210}};
    const QColor onLight[] = {{255, 165, 165}, {165, 232, 172}, {175, 193, 255}, {170, 170, 170}};
    const QColor edges[] = {{200, 30, 30}, {0, 130, 20}, {40, 70, 230}, {70, 70, 70}};
    const QColor fill = dark ? onDark[channel] : onLight[channel];
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->setCompositionMode(dark ? QPainter::CompositionMode_Screen
                                     : QPainter::CompositionMode_Multiply);
    painter->drawPolygon(shape);
    painter->setCompositionMode(QPainter::CompositionMode_SourceOver);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(dark ? fill.lighter(115) : edges[channel], 0.8));
    painter->drawPolyline(shape);
}

void HistogramView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), palette().color(QPalette::Base));
    painter.setRenderHint(QPainter::Antialiasing);
    int top = 1;
    for (size_t c = 0; c < bins.size(); ++c)
        if (isShown(c))
            top = std::max(top, highest(bins[c]));
    const bool all = shownChannel() == AllChannels;
    for (size_t c = 0; c < bins.size(); ++c)
        if (isShown(c) && !(all && c == kLuma))
            drawColour(&painter, outline(bins[c], top), c);
    if (all) { // luma as a line over the colours
        painter.setPen(QPen(palette().color(QPalette::Text), 1));
        painter.drawPolyline(outline(bins[kLuma], top));
    }
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(palette().color(hasFocus() ? QPalette::Highlight : QPalette::Mid));
    painter.drawRect(rect().adjusted(0, 0, -1, -1));
    if (isLogarithmic()) {
        QRect box(QPoint(), fontMetrics().size(0, tr("log")) + QSize(6, 0));
        box.moveTopRight(rect().topRight() + QPoint(-1, 1));
        QColor ground = palette().color(QPalette::Base);
        ground.setAlphaF(0.75);
        painter.fillRect(box, ground);
        painter.setPen(palette().color(QPalette::Text));
        painter.drawText(box, Qt::AlignCenter, tr("log"));
    }
}
