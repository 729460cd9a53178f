// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/filebag.h"

#include "app/filepickerrules.h"

#include <QDir>
#include <QSettings>
#include <QStringList>

namespace
{
constexpr uint32_t kViewStyles = 3;
constexpr int kLeastSide = 200, kMostSide = 16384;

/// Texts and types are both seen in stores: some hold "true", some a boolean.
bool flag(const QSettings &store, const char *name, bool otherwise)
{
    const QString text = store.value(QLatin1String(name)).toString().toLower();
    if (text == QLatin1String("true") || text == QLatin1String("1"))
        return true;
    return text == QLatin1String("false") || text == QLatin1String("0") ? false : otherwise;
}

QSize sensible(const QSize &size)
{
    const auto fits = [](int side) { return side >= kLeastSide && side <= kMostSide; };
    return fits(size.width()) && fits(size.height()) ? size : QSize();
}
} // namespace

void FileBag::load(QSettings &store)
{
    const FileRecord defaults;
    store.beginGroup(key);
    record.folder = store.value(QStringLiteral("folder")).toString();
    record.filter = store.value(QStringLiteral("filter")).toString();
    record.showHidden = flag(store, "showHidden", defaults.showHidden);
    record.showPreview = flag(store, "showPreview", defaults.showPreview);
    record.sortByDate = flag(store, "sortByDate", defaults.sortByDate);
    record.reverseSort = flag(store, "reverseSort", defaults.reverseSort);
    bool isNumber = false;
    const uint32_t style = store.value(QStringLiteral("viewStyle")).toUInt(&isNumber);
    record.viewStyle = isNumber && style < kViewStyles ? style : defaults.viewStyle;
    dialogSize = sensible(store.value(QStringLiteral("dialogSize")).toSize());
    store.endGroup();
    if (!isPlausiblePath(record.folder))
        record.folder.clear();
    if (!filterList().contains(record.filter))
        record.filter.clear();
}

void FileBag::save(QSettings &store) const
{
    store.beginGroup(key);
    store.setValue(QStringLiteral("folder"), record.folder);
    store.setValue(QStringLiteral("filter"), record.filter);
    store.setValue(QStringLiteral("showHidden"), record.showHidden);
    store.setValue(QStringLiteral("showPreview"), record.showPreview);
    store.setValue(QStringLiteral("sortByDate"), record.sortByDate);
    store.setValue(QStringLiteral("reverseSort"), record.reverseSort);
    store.setValue(QStringLiteral("viewStyle"), record.viewStyle);
    if (dialogSize.isValid())
        store.setValue(QStringLiteral("dialogSize"), dialogSize);
    store.endGroup();
}

QStringList FileBag::filterList() const
{
    return filters.split(QStringLiteral(";;"), Qt::SkipEmptyParts);
}

QString FileBag::startFolder() const
{
    return record.folder.isEmpty() ? QDir::homePath() : nearestFolder(record.folder);
}
