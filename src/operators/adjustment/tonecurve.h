// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <cstdint>

/// A curve from levels to levels, both 0 to 1, through 2 to 32 knots. Between two knots it
/// never leaves their heights, so it has no bumps that nobody drew; before the first and
/// behind the last it is flat. Knots stand in ascending order, a least distance apart.
class ToneCurve
{
public:
    struct Knot {
        double x = 0, y = 0;
        bool operator==(const Knot &other) const { return x == other.x && y == other.y; }
    };
    static constexpr int kLeastKnots = 2, kMostKnots = 32;
    static constexpr double kLeastDistance = 0.25 / 255; ///< between two knots' x

    /// The straight line, which changes nothing.
    ToneCurve();

    int count() const { return used; }
    /// The index is limited to those of the knots.
    Knot knot(int index) const;
    bool operator==(const ToneCurve &other) const;

    /// Takes these knots. False, with nothing changed, if they are too few or too many, not in
    /// order, too close to each other or out of 0 to 1.
    bool setKnots(const Knot *knots, int knotCount);
    /// The index of the new knot; -1 if there is no room for it.
    int add(double x, double y);
    /// Moves a knot as far as its neighbours let it.
    void move(int index, double x, double y);
    /// Takes away a knot that is neither the first nor the last. False for those.
    bool remove(int index);
    bool isEnd(int index) const { return index <= 0 || index >= used - 1; }

    double valueAt(double x) const;
    /// Fills 65536 entries: each is its index through the curve, truncated.
    void fillTable(uint16_t *table) const;

    /// "0,0 0.25,0.2 1,1": x and y of each knot. setText() is false, with nothing changed, for
    /// what is no such text.
    QString text() const;
    bool setText(const QString &text);

    /// Ready curves; the first is the straight line. An index beyond them gives that one too.
    static QStringList presetNames();
    static ToneCurve preset(int index);
    /// Which ready curve this one is; -1 for none.
    int presetIndex() const;

    /// Reads or writes a curve file. False with a reason; the curve, or an old file, then
    /// stays as it was.
    bool load(const QString &path, QString *error);
    bool save(const QString &path, QString *error) const;

    int chosen = 0; ///< the knot that keys and number boxes act on; no part of the curve

private:
    void findSlopes();

    // An array and no vector: a preview may read what a drag is changing.
    std::array<Knot, kMostKnots> points{};
    std::array<double, kMostKnots> slopes{};
    int used = 0;
};
