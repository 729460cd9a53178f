// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QPolygonF>
#include <QWidget>

#include <array>

class image;

/// Histograms of red, green, blue and luma, 256 levels of the high bytes. A click switches
/// between linear and logarithmic heights, the context menu chooses what is shown; both are
/// settings of the workspace.
class HistogramView : public QWidget
{
    Q_OBJECT
public:
    enum Channel { AllChannels, Red, Green, Blue, Luma };

    explicit HistogramView(QWidget *parent = nullptr);

    using Counts = std::array<int, 256>;
    /// Counts the samples of a picture and shows them; null clears the view. Samples at
    /// alpha 0 are left out, since nothing of them can be seen. Of a large picture only an
    /// even share is counted.
    void setPicture(const image *picture);
    /// How often each byte value occurs in channel 0 (red), 1 (green), 2 (blue) or 3 (luma).
    const Counts &counts(int channel) const { return bins[size_t(channel)]; }

    /// Whether heights are logarithmic, and which channel is shown.
    static bool isLogarithmic();
    static Channel shownChannel();

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    bool event(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void contextMenuEvent(QContextMenuEvent *event) override;

private:
    void setLogarithmic(bool on);
    void setChannel(Channel channel);
    void describe();
    bool isShown(size_t channel) const;
    int levelAt(int x) const;
    QString tipAt(int x) const;
    QPolygonF outline(const Counts &channel, double top) const;
    void drawColour(QPainter *painter, const QPolygonF &shape, size_t channel) const;

    std::array<Counts, 4> bins{};
    bool isShare = false; ///< not all samples were counted
};
