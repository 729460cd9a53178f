// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QWidget>

#include <array>

class image;

/// Histograms of red, green and blue over each other, 256 bins of the high bytes.
class HistogramView : public QWidget
{
    Q_OBJECT
public:
    explicit HistogramView(QWidget *parent = nullptr);

    using Counts = std::array<int, 256>;
    /// Counts the samples of a picture and shows them; null clears the view. Samples at
    /// alpha 0 are left out, since nothing of them can be seen.
    void setPicture(const image *picture);
    /// How often each byte value occurs in channel 0 (red), 1 (green) or 2 (blue).
    const Counts &counts(int channel) const { return bins[size_t(channel)]; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    std::array<Counts, 3> bins{};
};
