// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/imageinformation.h"

#include "core/image.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "views/viewhost.h"

#include "ui_imageinformation.h"

#include <QApplication>
#include <QClipboard>
#include <QDateTime>
#include <QLocale>
#include <QPushButton>

#include <algorithm>

namespace
{
constexpr double kCmPerInch = 2.54;
constexpr int kSpareRows = 2;
constexpr int kFullPlanes = 7, kSnapshotPlanes = 5;
constexpr int kAnnotationLines = 4;
constexpr int kPlaceDecimals = 6; // a tenth of a metre

int64_t planeBytes(const image &img)
{
    return int64_t(img.width) * (int64_t(img.height) + kSpareRows) * int64_t(sizeof(uint16_t)) *
           (img.lightweight ? kSnapshotPlanes : kFullPlanes);
}

int64_t stepBytes(const image &img)
{
    int64_t bytes = 0;
    for (const auto *list : {&img.undoList, &img.redoList})
        for (const image *step : *list)
            bytes += planeBytes(*step);
    return bytes;
}

QString kindText(const image &img)
{
    switch (img.kind) {
    case 1:
        return ImageInformation::tr("layered picture");
    case 2:
        return ImageInformation::tr("layer %1 of \"%2\"")
            .arg(img.layerIndex())
            .arg(img.master ? img.master->name : QString());
    default:
        return ImageInformation::tr("picture");
    }
}

QString sizeText(const image &img)
{
    return ImageInformation::tr("%1 × %2 samples (%3 megapixels)")
        .arg(img.width)
        .arg(img.height)
        .arg(QLocale().toString(double(img.sampleCount()) / 1e6, 'f', 2));
}

QString memoryText(const image &img)
{
    int64_t planes = planeBytes(img), steps = stepBytes(img);
    for (const image *layer : img.layers) {
        planes += planeBytes(*layer);
        steps += stepBytes(*layer);
    }
    const QString text = QLocale().formattedDataSize(planes);
    return steps == 0 ? text
                      : ImageInformation::tr("%1, and %2 for undo and redo")
                            .arg(text, QLocale().formattedDataSize(steps));
}

/// "20240131:235959 UTC" as a person writes it; anything else as it stands.
QString timeText(const QString &stamp)
{
    const QDateTime time =
        QLocale::c().toDateTime(stamp.left(15), QStringLiteral("yyyyMMdd:hhmmss"));
    if (!time.isValid() || !stamp.endsWith(QLatin1String(" UTC")))
        return stamp.isEmpty() ? ImageInformation::tr("unknown") : stamp;
    return time.toString(QStringLiteral("yyyy-MM-dd hh:mm:ss")) + QStringLiteral(" UTC");
}

QString placeText(const image &img)
{
    return QStringLiteral("%1, %2").arg(QString::number(img.latitude, 'f', kPlaceDecimals),
                                        QString::number(img.longitude, 'f', kPlaceDecimals));
}

QString shutterText(double seconds)
{
    if (seconds > 0 && seconds < 0.5)
        return ImageInformation::tr("1/%1 s").arg(qRound(1.0 / seconds));
    return ImageInformation::tr("%1 s").arg(QLocale().toString(seconds, 'g', 3));
}

void addFact(QFormLayout *form, const QString &caption, const QString &value)
{
    auto *label = new QLabel(value);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setWordWrap(true);
    label->setAccessibleName(caption);
    form->addRow(caption + QLatin1Char(':'), label);
}
} // namespace

ImageInformation::ImageInformation(image *img, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::ImageInformation>()), shown(img)
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    const QFontMetrics metrics(font());
    ui->annotation->setFixedHeight(metrics.lineSpacing() * kAnnotationLines + 14);
    ui->lines->setMinimumHeight(metrics.lineSpacing() * 10);
    ui->pages->setMinimumWidth(metrics.averageCharWidth() * 72);
    fillFacts();
    fillFields();
    fillCamera();
    ui->pages->setCurrentIndex(0);
}

ImageInformation::~ImageInformation() = default;

void ImageInformation::fillFacts()
{
    const image &img = *shown;
    const image &saved = img.kind == 2 && img.master ? *img.master : img;
    const FileRecord file = FileRecord::fromPath(saved.fullPath);
    addFact(ui->facts, tr("File"), saved.fullPath.isEmpty() ? tr("none") : file.name);
    addFact(ui->facts, tr("Folder"), saved.fullPath.isEmpty() ? tr("none") : file.folder);
    addFact(ui->facts, tr("Kind"), kindText(img));
    addFact(ui->facts, tr("Size"), sizeText(img));
    addFact(ui->facts, tr("Depth"),
            img.imageMode == 1 ? tr("16 bits a channel, YRB") : tr("16 bits a channel, RGB"));
    if (img.kind == 1)
        addFact(ui->facts, tr("Layers"), QString::number(img.layers.size()));
    if (img.quantised)
        addFact(ui->facts, tr("Palette"), img.paletteSource);
    addFact(ui->facts, tr("Notes"), QString::number(img.notations.size()));
    addFact(ui->facts, tr("Memory"), memoryText(img));
    addFact(ui->facts, tr("Unsaved changes"), img.hasUnsavedChanges() ? tr("yes") : tr("no"));
}

void ImageInformation::fillFields()
{
    ui->name->setText(shown->name);
    ui->annotation->setPlainText(shown->annotation);
    ui->author->setText(shown->author);
    ui->copyright->setText(shown->copyright);
    ui->software->setText(shown->software);
    ui->xDpi->setValue(shown->xDpi);
    ui->yDpi->setValue(shown->yDpi);
    ui->lockDpi->setChecked(shown->xDpi == shown->yDpi);
    ui->created->setText(timeText(shown->creationTime));
    ui->modified->setText(timeText(shown->modificationTime));
    firstDpi = {ui->xDpi->value(), ui->yDpi->value()};
    showPrintSize();
}

void ImageInformation::fillCamera()
{
    const image &img = *shown;
    const QLocale locale;
    // 0 is what no camera wrote. All 1 is what a native file without these fields reads as.
    const bool written =
        img.shutter != 1 || img.aperture != 1 || img.focalLength != 1 || img.iso != 1;
    const auto known = [written](double value) { return written && value > 0; };
    if (known(img.shutter))
        addFact(ui->cameraFacts, tr("Exposure"), shutterText(img.shutter));
    if (known(img.aperture))
        addFact(ui->cameraFacts, tr("Aperture"),
                tr("f/%1").arg(locale.toString(img.aperture, 'g', 3)));
    if (known(img.focalLength))
        addFact(ui->cameraFacts, tr("Focal length"),
                tr("%1 mm").arg(locale.toString(img.focalLength, 'g', 4)));
    if (known(img.iso))
        addFact(ui->cameraFacts, tr("ISO"), locale.toString(img.iso, 'g', 7));
    if (img.altitude != 0)
        addFact(ui->cameraFacts, tr("Altitude"),
                tr("%1 m").arg(locale.toString(img.altitude, 'f', 1)));
    const bool placed = img.latitude != 0 || img.longitude != 0;
    ui->place->setText(placed ? placeText(img) : tr("unknown"));
    ui->copyPlace->setEnabled(placed);
    for (const QString &line : img.tagLines) {
        const int colon = line.indexOf(QLatin1String(": "));
        auto *item = new QTreeWidgetItem(ui->lines);
        item->setText(0, colon < 0 ? line : line.left(colon));
        item->setText(1, colon < 0 ? QString() : line.mid(colon + 2));
        item->setToolTip(1, item->text(1).left(1000).toHtmlEscaped());
    }
    ui->lines->resizeColumnToContents(0);
    const bool any = !img.tagLines.isEmpty();
    for (QWidget *field : {static_cast<QWidget *>(ui->lines), static_cast<QWidget *>(ui->search),
                           static_cast<QWidget *>(ui->copyLines)})
        field->setEnabled(any);
    if (!any)
        (new QTreeWidgetItem(ui->lines, {tr("The picture carries no lines of a camera.")}))
            ->setFirstColumnSpanned(true);
}

void ImageInformation::showPrintSize()
{
    const double across = double(shown->width) / ui->xDpi->value();
    const double down = double(shown->height) / ui->yDpi->value();
    const auto text = [](double v) { return QLocale().toString(v, 'f', 2); };
    ui->printSize->setText(
        tr("%1 × %2 inches, %3 × %4 cm")
            .arg(text(across), text(down), text(across * kCmPerInch), text(down * kCmPerInch)));
}

// --- Acts -------------------------------------------------------------------------------

void ImageInformation::on_countColors_clicked()
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const int64_t coarse = shown->colorCount24(), fine = shown->colorCount48();
    QApplication::restoreOverrideCursor();
    if (coarse == 0 || fine == 0)
        ui->colorCount->setText(tr("There is not enough memory to count them."));
    else
        ui->colorCount->setText(
            tr("%1 at 8 bits a channel, %2 at 16")
                .arg(QLocale().toString(qlonglong(coarse)), QLocale().toString(qlonglong(fine))));
}

void ImageInformation::on_copyPlace_clicked()
{
    QApplication::clipboard()->setText(ui->place->text());
}

void ImageInformation::on_copyLines_clicked()
{
    const bool some = !ui->lines->selectedItems().isEmpty();
    QStringList lines;
    for (int i = 0; i < ui->lines->topLevelItemCount(); ++i) {
        const QTreeWidgetItem *item = ui->lines->topLevelItem(i);
        if (!item->isHidden() && (!some || item->isSelected()))
            lines << item->text(0) + QStringLiteral(": ") + item->text(1);
    }
    QApplication::clipboard()->setText(lines.join(QLatin1Char('\n')));
}

void ImageInformation::on_search_textChanged(const QString &text)
{
    for (int i = 0; i < ui->lines->topLevelItemCount(); ++i) {
        QTreeWidgetItem *item = ui->lines->topLevelItem(i);
        const bool found = item->text(0).contains(text, Qt::CaseInsensitive) ||
                           item->text(1).contains(text, Qt::CaseInsensitive);
        item->setHidden(!found);
        if (!found)
            item->setSelected(false);
    }
}

void ImageInformation::on_xDpi_valueChanged(int dpi)
{
    if (ui->lockDpi->isChecked())
        ui->yDpi->setValue(dpi);
    showPrintSize();
}

void ImageInformation::on_yDpi_valueChanged(int dpi)
{
    if (ui->lockDpi->isChecked())
        ui->xDpi->setValue(dpi);
    showPrintSize();
}

void ImageInformation::on_lockDpi_toggled(bool on)
{
    if (on)
        ui->yDpi->setValue(ui->xDpi->value());
}

/// A field that a person did not touch counts as it is, even if the control shows another
/// value: a line has no line breaks, and a file may hold no sensible dots per inch.
bool ImageInformation::edited() const
{
    const auto lines = {ui->name, ui->author, ui->copyright, ui->software};
    return std::any_of(lines.begin(), lines.end(),
                       [](const QLineEdit *line) { return line->isModified(); }) ||
           ui->annotation->document()->isModified() || ui->xDpi->value() != firstDpi.width() ||
           ui->yDpi->value() != firstDpi.height();
}

void ImageInformation::accept()
{
    QDialog::accept();
    if (!edited())
        return;
    // A master has no undo of its own: its records would belong to the target layer.
    if (shown->kind != 1)
        beginAct(shown);
    const auto take = [](const QLineEdit *line, QString *field) {
        if (line->isModified())
            *field = line->text();
    };
    if (!ui->name->text().trimmed().isEmpty())
        take(ui->name, &shown->name);
    take(ui->author, &shown->author);
    take(ui->copyright, &shown->copyright);
    take(ui->software, &shown->software);
    if (ui->annotation->document()->isModified())
        shown->annotation = ui->annotation->toPlainText();
    if (ui->xDpi->value() != firstDpi.width())
        shown->xDpi = ui->xDpi->value();
    if (ui->yDpi->value() != firstDpi.height())
        shown->yDpi = ui->yDpi->value();
    shown->changed = true;
    shown->stampModification();
    shown->rebuildTitle();
    if (image *master = masterOf(shown); master && master != shown)
        master->changed = true; // a layer without a window is not asked about
    workspace()->refreshViews(shown);
    if (ViewHost *host = viewHost())
        host->updateMenus();
}
