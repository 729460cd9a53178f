// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/adjustment/tonecurve.h"

#include "formats/writers.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace
{
const QString kFormat = QStringLiteral("format");
const QString kMarker = QStringLiteral("Kestrane Curve");
const QString kVersion = QStringLiteral("version");
const QString kKnots = QStringLiteral("knots");
constexpr int kVersionNumber = 1;
constexpr qint64 kMostBytes = 64 << 10; ///< a file of 32 knots takes 2 KiB

struct CurveText {
    Q_DECLARE_TR_FUNCTIONS(ToneCurve)
};

/// One entry of the list of knots; what is no pair of numbers lies out of range.
ToneCurve::Knot knotOf(const QJsonValue &entry)
{
    const QJsonArray pair = entry.toArray();
    return pair.size() == 2 ? ToneCurve::Knot{pair.at(0).toDouble(-1), pair.at(1).toDouble(-1)}
                            : ToneCurve::Knot{-1, -1};
}

bool parse(const QByteArray &bytes, ToneCurve *curve, QString *error)
{
    const QJsonObject fields = QJsonDocument::fromJson(bytes).object();
    if (fields.value(kFormat) != kMarker) {
        *error = CurveText::tr("it is no curve file of this program");
        return false;
    }
    if (fields.value(kVersion) != kVersionNumber) {
        *error = CurveText::tr("it comes from a later version of this program");
        return false;
    }
    const QJsonArray list = fields.value(kKnots).toArray();
    std::array<ToneCurve::Knot, ToneCurve::kMostKnots> knots;
    if (list.size() < ToneCurve::kLeastKnots || list.size() > int(knots.size())) {
        *error = CurveText::tr("it has %1 knots where %2 to %3 are expected")
                     .arg(list.size())
                     .arg(ToneCurve::kLeastKnots)
                     .arg(ToneCurve::kMostKnots);
        return false;
    }
    for (int i = 0; i < list.size(); ++i)
        knots[size_t(i)] = knotOf(list.at(i));
    if (curve->setKnots(knots.data(), list.size()))
        return true;
    *error = CurveText::tr("its knots are damaged: each is a pair of numbers from 0 to 1, and "
                           "stands to the right of the one before it");
    return false;
}
} // namespace

bool ToneCurve::load(const QString &path, QString *error)
{
    QFile file(path);
    QString reason;
    if (!file.open(QIODevice::ReadOnly)) {
        reason = file.errorString();
    } else {
        // A device or a pipe tells no size, so the limit is that of what is read.
        const QByteArray bytes = file.read(kMostBytes + 1);
        if (bytes.size() > kMostBytes)
            reason = CurveText::tr("it is too long for a curve file");
        else if (parse(bytes, this, &reason))
            return true;
    }
    if (error)
        *error = CurveText::tr("The curve %1 could not be read: %2.").arg(path, reason);
    return false;
}

bool ToneCurve::save(const QString &path, QString *error) const
{
    QJsonArray list;
    for (int i = 0; i < count(); ++i)
        list.append(QJsonArray{knot(i).x, knot(i).y});
    const QJsonObject fields{{kFormat, kMarker}, {kVersion, kVersionNumber}, {kKnots, list}};
    QSaveFile file(path);
    const QByteArray bytes = QJsonDocument(fields).toJson();
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && commitWhole(file))
        return true;
    if (error)
        *error =
            CurveText::tr("The curve %1 could not be written: %2.").arg(path, file.errorString());
    return false;
}
