// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/busyguard.h"
#include "app/newimage.h"
#include "app/setquality.h"
#include "core/compose.h"
#include "formats/load.h"
#include "formats/save.h"
#include "views/imgwindow.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QRegularExpression>
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
                                    QStringList{QStringLiteral(".rgba"), QStringLiteral(".pix")}})
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

/// The extensions that a filter of a file dialog names, each with its dot.
QStringList extensionsOf(const QString &filter)
{
    QStringList found;
    static const QRegularExpression pattern(QStringLiteral("\\*(\\.\\w+)"));
    QRegularExpressionMatchIterator matches = pattern.globalMatch(filter);
    while (matches.hasNext())
        found << matches.next().captured(1);
    return found;
}

/// The form that holds a master with its layers, the only one for a layered picture.
const char *const kLayeredForm = QT_TRANSLATE_NOOP("MainWindow", "Layered picture (*.elx)");

/// Forms of a single picture; their order is that of the filters of the save dialog.
const char *const kWrittenForms[] = {
    QT_TRANSLATE_NOOP("MainWindow", "PNG picture (*.png)"),
    QT_TRANSLATE_NOOP("MainWindow", "JPEG picture (*.jpg *.jpeg)"),
    QT_TRANSLATE_NOOP("MainWindow", "Picture with every field, 16 bits (*.ato)"),
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
        for (const QString &extension : extensionsOf(QString::fromUtf8(form)))
            if (path.endsWith(extension, Qt::CaseInsensitive))
                return true;
    return false;
}
} // namespace

void MainWindow::nameFileBags()
{
    imageFileBag.key = QStringLiteral("imageFileBag");
    imageFileBag.filters =
        QStringList{tr("Pictures (%1)").arg(readablePatterns().join(QLatin1Char(' '))),
                    tr("Common pictures (%1)").arg(patternsOf(qtExtensions())),
                    tr("Layered pictures and pictures with every field (%1)")
                        .arg(patternsOf(kOwnExtensions)),
                    tr("Camera RAW (%1)").arg(patternsOf(rawExtensions())),
                    tr("Raw samples (*.rgba)"),
                    tr("Small grey pictures (*.pix)"),
                    tr("All files (*)")}
            .join(QStringLiteral(";;"));
    saveFileBag.key = QStringLiteral("saveFileBag");
    saveFileBag.filters =
        translated(std::begin(kWrittenForms), std::end(kWrittenForms)).join(QStringLiteral(";;"));
    animFileBag.key = QStringLiteral("animFileBag");
    animFileBag.filters = tr("GIF animation (*.gif)");
}

image *MainWindow::loadFile(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    const FileRecord record = FileRecord::fromPath(path);
    BusyGuard guard(busy);
    const int saidBefore = messagesSaid;
    QApplication::setOverrideCursor(Qt::BusyCursor);
    image *loaded = loadImageFile(record.fullPath, record.name, &record, true);
    QApplication::restoreOverrideCursor();
    if (loaded)
        imageFileBag.record.folder = record.folder;
    else if (messagesSaid == saidBefore) // some readers fail for the debug channel alone
        messageBox(tr("Load Image"),
                   tr("%1 could not be read.<br>It may be damaged, or no picture at all.")
                       .arg(record.name.toHtmlEscaped()));
    return loaded;
}

void MainWindow::openLater(const QStringList &paths)
{
    openQueue += paths;
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
    QTextStream text(&file);
    text.setCodec("UTF-8");
    QString line;
    while (text.readLineInto(&line)) {
        const QStringList words = line.split(QLatin1Char(' '), Qt::SkipEmptyParts);
        if (words.size() < 2)
            continue;
        if (words.at(0) == QLatin1String("path"))
            folder.setPath(folder.absoluteFilePath(words.at(1)));
        else if (words.at(0) == QLatin1String("load"))
            loadFile(folder.absoluteFilePath(words.at(1)));
        else if (words.at(0) == QLatin1String("loadbrush"))
            if (image *brush = loadFile(folder.absoluteFilePath(words.at(1)))) {
                assignBrush(brush);
                updateAssignmentLabels();
            }
    }
}

void MainWindow::showLoadDialog()
{
    QFileDialog dialog(this, tr("Load Image"), imageFileBag.record.folder, imageFileBag.filters);
    dialog.setFileMode(QFileDialog::ExistingFiles);
    if (!imageFileBag.record.filter.isEmpty())
        dialog.selectNameFilter(imageFileBag.record.filter);
    if (dialog.exec() != QDialog::Accepted)
        return;
    imageFileBag.record.folder = dialog.directory().absolutePath();
    imageFileBag.record.filter = dialog.selectedNameFilter();
    openLater(dialog.selectedFiles());
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
    if (!window || !isWindow(window) || !window->validImage())
        return;
    image *shown = window->img;
    image *stack = masterOf(shown);
    image *img = stack ? stack : shown;
    const bool layered = stack && !flat;
    QString folder = img->folder;
    for (const image *layer : qAsConst(img->layers)) // a new stack: where its pictures are
        folder = folder.isEmpty() ? layer->folder : folder;
    if (folder.isEmpty())
        folder = saveFileBag.record.folder;
    QFileDialog dialog(window, stack && flat ? tr("Save Flattened Copy") : tr("Save Image"), folder,
                       layered ? tr(kLayeredForm) : saveFileBag.filters);
    dialog.setAcceptMode(QFileDialog::AcceptSave);
    const auto setSuffix = [&dialog](const QString &filter) {
        dialog.setDefaultSuffix(extensionsOf(filter).value(0).mid(1));
    };
    connect(&dialog, &QFileDialog::filterSelected, &dialog, setSuffix);
    if (!layered && !saveFileBag.record.filter.isEmpty())
        dialog.selectNameFilter(saveFileBag.record.filter);
    setSuffix(dialog.selectedNameFilter());
    dialog.selectFile(fileNameFor(img->name));
    if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty())
        return;
    // The dialog ran an event loop: the window may be gone, or show nothing any more.
    if (!isWindow(window) || !window->validImage() || window->img != shown ||
        masterOf(shown) != stack)
        return;
    FileRecord record = FileRecord::fromPath(dialog.selectedFiles().constFirst());
    record.filter = dialog.selectedNameFilter();
    saveFileBag.record.folder = record.folder;
    if (!layered)
        saveFileBag.record.filter = record.filter;
    saveTo(record, img, flat);
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
    refreshViews(img); // the picture is called by its file from now on
    return true;
}

void MainWindow::on_actionSave_Image_triggered()
{
    sendCommand(kCommandSave);
}
