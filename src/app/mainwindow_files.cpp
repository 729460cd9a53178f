// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/assigns.h"
#include "app/busyguard.h"
#include "app/filepicker.h"
#include "app/filepickerrules.h"
#include "app/newimage.h"
#include "app/recovery.h"
#include "app/setquality.h"
#include "core/compose.h"
#include "formats/load.h"
#include "formats/save.h"
#include "views/imgwindow.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTextStream>
#include <QUrl>

#include <algorithm>

namespace
{
const QStringList kOwnExtensions = {QStringLiteral(".elx"), QStringLiteral(".ato")};

/// The extensions of files that are read, each as "*.ext".
QStringList readablePatterns()
{
    QStringList patterns;
    for (const QStringList &list : {qtExtensions(), rawExtensions(), kOwnExtensions,
                                    QStringList{QStringLiteral(".mcai"), QStringLiteral(".rgba"),
                                                QStringLiteral(".iff"), QStringLiteral(".pix")}})
        for (const QString &extension : list)
            patterns << QLatin1Char('*') + extension;
    return patterns;
}

QString patternsOf(const QStringList &extensions)
{
    QStringList patterns;
    for (const QString &extension : extensions)
        patterns << QLatin1Char('*') + extension;
    return patterns.join(QLatin1Char(' '));
}

/// The form that holds a master with its layers, the only one for a layered picture.
const char *const kLayeredForm = QT_TRANSLATE_NOOP("MainWindow", "Layered picture (*.elx)");

const char *const kAtomicForm =
    QT_TRANSLATE_NOOP("MainWindow", "Picture with every field, 16 bits (*.ato)");

/// Forms of a single picture; their order is that of the filters of the save dialog.
const char *const kWrittenForms[] = {
    QT_TRANSLATE_NOOP("MainWindow", "PNG picture (*.png)"),
    QT_TRANSLATE_NOOP("MainWindow", "JPEG picture (*.jpg *.jpeg)"), kAtomicForm,
    QT_TRANSLATE_NOOP("MainWindow", "Small picture with every field, 16 bits (*.mcai)"),
    QT_TRANSLATE_NOOP("MainWindow", "Raw samples, 16 or 8 bits (*.rgba)")};

QStringList translated(const char *const *begin, const char *const *end)
{
    QStringList texts;
    for (; begin != end; ++begin)
        texts << MainWindow::tr(*begin);
    return texts;
}

bool isWritable(const QString &path, bool layered)
{
    if (layered)
        return path.endsWith(kOwnExtensions.constFirst(), Qt::CaseInsensitive);
    for (const char *form : kWrittenForms)
        for (const QString &extension : extensionsOfFilter(QString::fromUtf8(form)))
            if (path.endsWith(extension, Qt::CaseInsensitive))
                return true;
    return false;
}
} // namespace

void MainWindow::nameFileBags()
{
    imageFileBag.filters =
        QStringList{tr("Pictures (%1)").arg(readablePatterns().join(QLatin1Char(' '))),
                    tr("Common pictures (%1)").arg(patternsOf(qtExtensions())),
                    tr("Layered pictures and pictures with every field (%1)")
                        .arg(patternsOf(kOwnExtensions)),
                    tr("Camera RAW (%1)").arg(patternsOf(rawExtensions())),
                    tr("Raw samples (*.rgba)"),
                    tr("Bit plane pictures (*.iff)"),
                    tr("Small grey pictures (*.pix)"),
                    tr("All files (*)")}
            .join(QStringLiteral(";;"));
    saveFileBag.filters =
        translated(std::begin(kWrittenForms), std::end(kWrittenForms)).join(QStringLiteral(";;"));
    const struct {
        FileBag &bag;
        const char *key;
        QString filters; ///< empty: given above
    } names[] = {
        {scriptPresetsFileBag, "scriptPresetsFileBag", tr("Saved scripts (*.json)")},
        {imageFileBag, "imageFileBag", {}},
        {kbdConfigFileBag, "kbdConfigFileBag", tr("Key tables (*.kbc)")},
        {animFileBag, "animFileBag", tr("GIF animation (*.gif)")},
        {scriptFileBag, "scriptFileBag", tr("Scripts (*.txt *.script);;All files (*)")},
        {saveFileBag, "saveFileBag", {}},
        {paletteFileBag, "paletteFileBag", tr("Palettes (*.pal)")},
        {scriptColorsFileBag, "scriptColorsFileBag", tr("Script colours (*.sco)")},
        {convolutionsFileBag, "convolutionsFileBag", tr("Convolutions (*.cnv)")},
        {jsonFileBag, "jsonFileBag", tr("JSON files (*.json)")},
        {gerberFileBag, "gerberFileBag", tr("Gerber files (*.gbr)")},
        {padsFileBag, "padsFileBag", tr("Pads (*.pads)")},
        {jsonPalFileBag, "jsonPalFileBag", tr("Palettes (*.json)")},
        {jsonPShapeFileBag, "jsonPShapeFileBag", tr("Shapes (*.json)")},
        {curvesFileBag, "curvesFileBag", tr("Curves (*.json)")},
        {rangeFileBag, "rangeFileBag", tr("Ranges (*.rng)")},
        {customIconsFileBag, "customIconsFileBag", tr("Icons (*.png)")},
        {settingsFileBag, "settingsFileBag", tr("Settings (*.ini)")},
        {maskFileBag, "maskFileBag", tr("Grey pictures (*.png)")},
    };
    for (const auto &name : names) {
        name.bag.key = QLatin1String(name.key);
        if (!name.filters.isEmpty())
            name.bag.filters = name.filters;
    }
}

std::vector<FileBag *> MainWindow::fileBags()
{
    return {&scriptPresetsFileBag, &imageFileBag,      &kbdConfigFileBag, &animFileBag,
            &scriptFileBag,        &saveFileBag,       &paletteFileBag,   &scriptColorsFileBag,
            &convolutionsFileBag,  &jsonFileBag,       &gerberFileBag,    &padsFileBag,
            &jsonPalFileBag,       &jsonPShapeFileBag, &curvesFileBag,    &rangeFileBag,
            &customIconsFileBag,   &settingsFileBag,   &maskFileBag};
}

image *MainWindow::loadFile(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    const FileRecord record = FileRecord::fromPath(assigns().resolve(path));
    if (!QFileInfo::exists(record.fullPath)) {
        recentFiles.remove(record.fullPath);
        messageBox(tr("Load Image"), tr("%1 was not found.<br>It may have been moved, "
                                        "renamed or deleted, or its disk is not connected.")
                                         .arg(record.fullPath.toHtmlEscaped()));
        return nullptr;
    }
    BusyGuard guard(busy);
    const int saidBefore = messagesSaid;
    QApplication::setOverrideCursor(Qt::BusyCursor);
    image *loaded = loadImageFile(record.fullPath, record.name, &record, true);
    QApplication::restoreOverrideCursor();
    if (loaded) {
        imageFileBag.record.folder = record.folder;
        noteRecent(record);
    } else if (messagesSaid == saidBefore) { // some readers fail for the debug channel alone
        messageBox(tr("Load Image"),
                   tr("%1 could not be read.<br>It may be damaged, or no picture at all.")
                       .arg(record.name.toHtmlEscaped()));
    }
    return loaded;
}

void MainWindow::noteRecent(const FileRecord &record)
{
    recentFiles.add(record.fullPath, recentLimit);
    recentFolders().add(record.folder, recentLimit);
}

void MainWindow::openRecentFile(int position)
{
    const QString path = recentFiles.entries().value(position - 1);
    if (path.isEmpty())
        statusText(tr("There is no recent file %1").arg(position));
    else
        openLater({path});
}

void MainWindow::openLater(const QStringList &paths)
{
    openQueue += paths;
}

QString MainWindow::askFile(QWidget *parent, const QString &title, const QString &filter, bool save)
{
    // Files of one kind share a folder and a look of the dialog, whoever asks for them.
    const std::vector<FileBag *> bags = fileBags();
    const auto known = std::find_if(bags.begin(), bags.end(),
                                    [&](const FileBag *bag) { return bag->filters == filter; });
    FileBag other;
    other.filters = filter;
    FileBag *bag = known == bags.end() ? &other : *known;
    const auto purpose = save ? filePicker::PickFor::Save : filePicker::PickFor::Open;
    return filePicker::pick(parent, bag, purpose, title).value(0);
}

void MainWindow::openUrls(const QList<QUrl> &urls)
{
    for (const QUrl &url : urls) {
        if (url.isLocalFile())
            openQueue << url.toLocalFile();
        else
            refusedUrl = url.toDisplayString();
    }
}

void MainWindow::runStartupSequence(const QString &fileName)
{
    QFile file(fileName);
    if (!file.open(QIODevice::ReadOnly | QIODevice::Text))
        return;
    QDir folder = QFileInfo(fileName).absoluteDir();
    QStringList missing;
    const auto load = [&](const QString &name) -> image * {
        const QString path = folder.absoluteFilePath(assigns().resolve(name));
        if (QFileInfo::exists(path))
            return loadFile(path);
        missing << name; // told in the status line: no box before the program is up
        return nullptr;
    };
    QTextStream text(&file);
    text.setCodec("UTF-8");
    QString line;
    while (text.readLineInto(&line)) {
        const QStringList words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (words.size() < 2)
            continue;
        if (words.at(0) == QLatin1String("path"))
            folder.setPath(folder.absoluteFilePath(assigns().resolve(words.at(1))));
        else if (words.at(0) == QLatin1String("load"))
            load(words.at(1));
        else if (words.at(0) == QLatin1String("loadbrush"))
            if (image *brush = load(words.at(1))) {
                assignBrush(brush);
                updateAssignmentLabels();
            }
    }
    if (!missing.isEmpty())
        statusText(tr("Start-up sequence: not found: %1").arg(missing.join(QLatin1String(", "))));
}

void MainWindow::showLoadDialog()
{
    openLater(
        filePicker::pick(this, &imageFileBag, filePicker::PickFor::OpenMany, tr("Load Image")));
}

void MainWindow::on_actionNew_Image_triggered()
{
    showNewImageDialog();
}

void MainWindow::on_actionLoad_Image_2_triggered()
{
    showLoadDialog();
}

void MainWindow::on_actionLoad_Next_Image_triggered()
{
    const imgWindow *window = validCurrent();
    QString path = window ? window->img->fullPath : QString();
    if (path.isEmpty())
        path = imageFileBag.record.folder + QLatin1Char('/');
    const QString next = nextFileOfFolder(path);
    if (next.isEmpty())
        statusText(tr("No further image in this folder"));
    else
        loadFile(next);
}

QString MainWindow::nextFileOfFolder(const QString &path) const
{
    const FileRecord from = FileRecord::fromPath(path);
    const QDir folder(from.folder);
    const QStringList names = folder.entryList(readablePatterns(), QDir::Files | QDir::Readable,
                                               QDir::Name | QDir::IgnoreCase);
    const auto next = std::find_if(names.begin(), names.end(), [&from](const QString &name) {
        const int order = name.compare(from.name, Qt::CaseInsensitive);
        return order > 0 || (order == 0 && name > from.name);
    });
    return next == names.end() ? QString() : folder.absoluteFilePath(*next);
}

void MainWindow::saveImage(imgWindow *window)
{
    if (!window || !isWindow(window) || !window->validImage())
        return;
    // A layer is saved with its stack; it may itself have come from a file.
    image *stack = masterOf(window->img);
    image *img = stack ? stack : window->img;
    if (img->fullPath.isEmpty() || !isWritable(img->fullPath, stack))
        showSaveDialog(window, false);
    else
        saveTo(FileRecord::fromPath(img->fullPath), img, false);
}

void MainWindow::showSaveDialog(imgWindow *window, bool flat)
{
    saveByDialog(window, flat, QString());
}

/// With `onlyFilter` that form alone is offered.
void MainWindow::saveByDialog(imgWindow *window, bool flat, const QString &onlyFilter)
{
    if (!window || !isWindow(window) || !window->validImage())
        return;
    image *shown = window->img;
    image *stack = masterOf(shown);
    image *img = stack ? stack : shown;
    const bool layered = stack && !flat;
    FileBag bag = saveFileBag;
    if (layered || !onlyFilter.isEmpty())
        bag.filters = layered ? tr(kLayeredForm) : onlyFilter;
    QString folder = img->folder;
    for (const image *layer : qAsConst(img->layers)) // a new stack: where its pictures are
        folder = folder.isEmpty() ? layer->folder : folder;
    if (!folder.isEmpty())
        bag.record.folder = folder;
    for (const QString &filter : bag.filters.split(QStringLiteral(";;"))) // its own form first
        for (const QString &extension : extensionsOfFilter(filter))
            if (img->fullPath.endsWith(extension, Qt::CaseInsensitive))
                bag.record.filter = filter;
    const QString title = stack && flat ? tr("Save Flattened Copy") : tr("Save Image");
    const QString path =
        filePicker::pick(window, &bag, filePicker::PickFor::Save, title, fileNameFor(img->name))
            .value(0);
    // The dialog ran an event loop: the window may be gone, or show nothing any more.
    if (path.isEmpty() || !isWindow(window) || !window->validImage() || window->img != shown ||
        masterOf(shown) != stack)
        return;
    FileRecord record = FileRecord::fromPath(path);
    record.filter = bag.record.filter;
    const QString filterBefore = saveFileBag.record.filter, filters = saveFileBag.filters;
    saveFileBag = bag;
    saveFileBag.filters = filters;
    if (layered || !onlyFilter.isEmpty())
        saveFileBag.record.filter = filterBefore;
    saveTo(record, img, flat);
}

void MainWindow::on_actionSave_Image_Atomic_triggered()
{
    if (imgWindow *window = validCurrent())
        saveByDialog(window, true, tr(kAtomicForm));
}

QString MainWindow::fileNameFor(const QString &name)
{
    QString stem = name;
    if (stem.endsWith(QLatin1String(": master")))
        stem.chop(8);
    return QFileInfo(stem).completeBaseName();
}

bool MainWindow::saveTo(FileRecord record, image *img, bool flat)
{
    record.forSaving = true;
    BusyGuard guard(busy);
    if (img->kind == 1 && img->needsRebuild)
        compose(img, true);
    if (!saveImageFile(record, img, flat))
        return false;
    noteRecent(record);
    if (recovery && !img->hasUnsavedChanges())
        recovery->pictureSaved(img);
    refreshViews(img); // the picture is called by its file from now on
    return true;
}

void MainWindow::on_actionSave_Image_triggered()
{
    sendCommand(kCommandSave);
}
