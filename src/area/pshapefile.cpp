// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/pshapefile.h"

#include "area/pshape.h"
#include "core/memory.h"
#include "formats/writers.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

namespace
{
const QString kFormat = QStringLiteral("format");
const QString kMarker = QStringLiteral("Kestrane P-Shape");
const QString kVersion = QStringLiteral("version");
const QString kName = QStringLiteral("name");
const QString kKind = QStringLiteral("kind");
const QString kWidth = QStringLiteral("baseWidth");
const QString kHeight = QStringLiteral("baseHeight");
const QString kOpen = QStringLiteral("open");
const QString kCount = QStringLiteral("count");
const QString kPoints = QStringLiteral("points");

constexpr int kVersionNumber = 1;
constexpr qint64 kMostBytes = 16 << 20; ///< all points with all their digits take 12 MB
constexpr int kLeastPoints = 3;         ///< fewer enclose nothing
constexpr double kFurthest = 1000.0;    ///< of a point, where the figure's own reach is 0.5
constexpr double kMostBase = 4294967295.0;
constexpr int kMostNameLetters = 200;
constexpr int kQuotedLetters = 40; ///< of a foreign file, in the message

struct ShapeText {
    Q_DECLARE_TR_FUNCTIONS(area)
};

/// What stands in a file, short enough for a message.
QString shown(const QJsonValue &value)
{
    switch (value.type()) {
    case QJsonValue::Undefined:
        return ShapeText::tr("nothing");
    case QJsonValue::Null:
        return QStringLiteral("null");
    case QJsonValue::Bool:
        return value.toBool() ? QStringLiteral("true") : QStringLiteral("false");
    case QJsonValue::Double:
        return QString::number(value.toDouble(), 'g', 10);
    case QJsonValue::String:
        return QLatin1Char('"') + value.toString().left(kQuotedLetters).simplified() +
               QLatin1Char('"');
    case QJsonValue::Array:
        return ShapeText::tr("a list of %1").arg(value.toArray().size());
    default:
        return ShapeText::tr("an object");
    }
}

/// Reads the fields of a file one by one, up to the first that is out of order.
class ShapeReader
{
public:
    explicit ShapeReader(QString *reason) : error(reason) {}

    bool refuse(const QString &found, const QString &expected) const
    {
        *error =
            ShapeText::tr("P-Shape file data out of order: %1 does match %2").arg(found, expected);
        return false;
    }

    bool parse(const QByteArray &bytes)
    {
        const QJsonDocument document = QJsonDocument::fromJson(bytes);
        fields = document.object();
        if (document.isObject() && fields.contains(kFormat))
            return true;
        const QString start = QString::fromUtf8(bytes.left(kQuotedLetters)).simplified();
        return refuse(start.isEmpty() ? ShapeText::tr("nothing")
                                      : QLatin1Char('"') + start + QLatin1Char('"'),
                      named(kFormat, shown(kMarker)));
    }

    bool equals(const QString &key, const QJsonValue &expected) const
    {
        const QJsonValue value = fields.value(key);
        return value == expected || refuse(named(key, shown(value)), shown(expected));
    }
    bool text(const QString &key, QString *result) const
    {
        const QJsonValue value = fields.value(key);
        if (!value.isString())
            return refuse(named(key, shown(value)), ShapeText::tr("a text"));
        *result = value.toString().left(kMostNameLetters).simplified();
        return true;
    }
    bool flag(const QString &key, bool *result) const
    {
        const QJsonValue value = fields.value(key);
        *result = value.toBool();
        return value.isBool() || refuse(named(key, shown(value)), ShapeText::tr("true or false"));
    }
    bool number(const QString &key, double low, double high, double *result) const
    {
        const QJsonValue value = fields.value(key);
        *result = value.toDouble();
        return inRange(value, low, high) || refuse(named(key, shown(value)), range(low, high));
    }
    bool whole(const QString &key, int low, int high, int *result) const
    {
        double value = 0;
        if (!number(key, low, high, &value))
            return false;
        *result = int(value);
        return *result == value ||
               refuse(named(key, shown(value)), ShapeText::tr("a whole number"));
    }

    /// The points, as many as the file says.
    bool points(int count, ShapePoint *result) const
    {
        const QJsonValue value = fields.value(kPoints);
        const QJsonArray list = value.toArray();
        if (!value.isArray() || list.size() != count)
            return refuse(named(kPoints, shown(value)), ShapeText::tr("a list of %1").arg(count));
        for (int i = 0; i < count; ++i) {
            const QJsonArray pair = list.at(i).toArray();
            if (pair.size() != 2 || !inRange(pair.at(0), -kFurthest, kFurthest) ||
                !inRange(pair.at(1), -kFurthest, kFurthest))
                return refuse(
                    named(ShapeText::tr("point %1").arg(i + 1), shownPair(list.at(i))),
                    ShapeText::tr("a pair of numbers, each %1").arg(range(-kFurthest, kFurthest)));
            result[i] = {pair.at(0).toDouble(), pair.at(1).toDouble()};
        }
        return true;
    }

private:
    static QString named(const QString &key, const QString &value)
    {
        return key + QStringLiteral(" ") + value;
    }
    static QString range(double low, double high)
    {
        return ShapeText::tr("%1 to %2").arg(low, 0, 'f', 0).arg(high, 0, 'f', 0);
    }
    static bool inRange(const QJsonValue &value, double low, double high)
    {
        return value.isDouble() && value.toDouble() >= low && value.toDouble() <= high;
    }
    static QString shownPair(const QJsonValue &value)
    {
        const QJsonArray pair = value.toArray();
        return pair.size() == 2 ? shown(pair.at(0)) + QStringLiteral(", ") + shown(pair.at(1))
                                : shown(value);
    }

    QJsonObject fields;
    QString *error;
};

/// Reads everything before the points.
bool readForm(const ShapeReader &reader, PShape::Form *form, int *count)
{
    QString kind;
    if (!reader.equals(kFormat, kMarker) || !reader.equals(kVersion, kVersionNumber) ||
        !reader.text(kName, &form->name) || !reader.text(kKind, &kind) ||
        !reader.number(kWidth, 1.0, kMostBase, &form->baseWidth) ||
        !reader.number(kHeight, 1.0, kMostBase, &form->baseHeight) ||
        !reader.flag(kOpen, &form->closed) ||
        !reader.whole(kCount, kLeastPoints, kShapeEntries, count))
        return false;
    if (form->name.isEmpty())
        form->name = kind;
    return true;
}

/// The bytes of a file that is not too large to be one of a shape.
bool readBytes(const QString &path, const ShapeReader &reader, QByteArray *bytes, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = file.errorString();
        return false;
    }
    // One byte more than allowed: some files do not tell how long they are.
    *bytes = file.read(kMostBytes + 1);
    if (file.error() != QFileDevice::NoError) {
        *error = file.errorString();
        return false;
    }
    return bytes->size() <= kMostBytes ||
           reader.refuse(ShapeText::tr("a file of more than %1 bytes").arg(kMostBytes), kMarker);
}

QJsonDocument documentOf(const PShape &shape, const QString &name)
{
    QJsonArray points;
    for (int i = 0; i < shape.lastCount; ++i)
        points.append(QJsonArray{shape.lastpolylist[i].x, shape.lastpolylist[i].y});
    return QJsonDocument(QJsonObject{{kFormat, kMarker},
                                     {kVersion, kVersionNumber},
                                     {kName, name},
                                     {kKind, shape.kind},
                                     {kWidth, shape.lastBaseWidth},
                                     {kHeight, shape.lastBaseHeight},
                                     {kOpen, shape.lastClosed},
                                     {kCount, shape.lastCount},
                                     {kPoints, points}});
}
} // namespace

bool savePShape(const QString &path, const PShape &shape, QString *error)
{
    if (shape.lastCount < kLeastPoints) {
        *error =
            ShapeText::tr("Draw a selection first: the last one is what is saved as a P-Shape.");
        return false;
    }
    QSaveFile file(path);
    const QByteArray bytes =
        documentOf(shape, QFileInfo(path).completeBaseName()).toJson(QJsonDocument::Compact);
    if (file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && commitWhole(file))
        return true;
    *error = file.errorString();
    return false;
}

bool loadPShape(const QString &path, PShape *shape, QString *error)
{
    ShapeReader reader(error);
    QByteArray bytes;
    PShape::Form form;
    int count = 0;
    if (!readBytes(path, reader, &bytes, error) || !reader.parse(bytes) ||
        !readForm(reader, &form, &count))
        return false;
    const TrackedBuffer<ShapePoint> points(size_t(count), "pshape file");
    if (points && !reader.points(count, points.get()))
        return false;
    if (points && shape->setCurrent(points.get(), count, form))
        return true;
    *error = ShapeText::tr("There is not enough memory.");
    return false;
}
