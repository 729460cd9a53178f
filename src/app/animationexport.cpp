// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/animationexport.h"

#include "app/layeranimation.h"
#include "core/image.h"
#include "core/workspace.h"

#include "ui_animationexport.h"

#include <QDoubleSpinBox>
#include <QLocale>
#include <QPainter>
#include <QPushButton>
#include <QScopedValueRollback>
#include <QStyledItemDelegate>
#include <QtConcurrent>

#include <algorithm>

namespace
{
constexpr int kName = 0, kDelay = 1; // columns
constexpr int kHundredths = 100;
constexpr double kLongest = 655.35;
constexpr int kPreviewWidth = 400, kPreviewHeight = 320;
constexpr int kChecker = 8;
constexpr int kSettleMs = 250;
constexpr int kNotReadyMs = 40;
/// Viewers take shorter delays for this.
constexpr int kLeastDelay = 2, kDelayOfShort = 10;

/// Edits a delay in seconds.
class DelayEdit : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QWidget *createEditor(QWidget *parent, const QStyleOptionViewItem &,
                          const QModelIndex &) const override
    {
        auto *spin = new QDoubleSpinBox(parent);
        spin->setRange(0, kLongest);
        spin->setSingleStep(0.05);
        spin->setSuffix(AnimationExport::tr(" s"));
        spin->setFrame(false);
        return spin;
    }
    QString displayText(const QVariant &value, const QLocale &locale) const override
    {
        return locale.toString(value.toDouble(), 'f', 2) + AnimationExport::tr(" s");
    }
};

/// The frame as large as there is room for, on the checker where it has holes.
QImage fitted(const QImage &picture, QSize room, int dark, int light)
{
    QSize size = picture.size();
    const bool shrinks = size.width() > room.width() || size.height() > room.height();
    if (shrinks)
        size = size.scaled(room, Qt::KeepAspectRatio).expandedTo({1, 1});
    else
        size *= std::max(1, std::min(room.width() / size.width(), room.height() / size.height()));
    QImage out(size, QImage::Format_RGB32);
    if (out.isNull())
        return out;
    QPainter painter(&out);
    for (int y = 0; y < size.height(); y += kChecker)
        for (int x = 0; x < size.width(); x += kChecker) {
            const int grey = (x / kChecker ^ y / kChecker) & 1 ? dark : light;
            painter.fillRect(x, y, kChecker, kChecker, QColor(grey, grey, grey));
        }
    painter.drawImage(QPoint(0, 0),
                      picture.scaled(size, Qt::IgnoreAspectRatio,
                                     shrinks ? Qt::SmoothTransformation : Qt::FastTransformation));
    return out;
}
} // namespace

AnimationExport::AnimationExport(image *stack, GifAnimation *animation, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::AnimationExport>()), master(stack),
      result(animation), chosen(*animation), layers(frameLayers(*stack))
{
    const QScopedValueRollback<bool> guard(filling, true);
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    ui->buttonBox->button(QDialogButtonBox::Save)->setText(tr("Export…"));
    previews.resize(size_t(count()));
    // Delays of another stack, or of this one before it changed, belong to other layers.
    if (chosen.delays.size() != count()) {
        chosen.delays.clear();
        for (int i = 0; i < count(); ++i)
            chosen.delays << chosen.delay;
    }
    ui->repeats->setValue(chosen.repeats);
    ui->colors->setValue(chosen.colors);
    ui->dither->setChecked(chosen.dither);
    ui->reversed->setChecked(chosen.reversed);
    ui->delay->setValue(double(chosen.delay) / kHundredths);
    ui->preview->setFixedSize(kPreviewWidth + 8, kPreviewHeight + 8);
    ui->frameSlider->setRange(0, std::max(0, count() - 1));
    const QFontMetrics metrics(font());
    const int digits = QString::number(count()).size();
    ui->frameNumber->setMinimumWidth(metrics.horizontalAdvance(
        tr("%1 of %2").arg(QString(digits, QLatin1Char('8')), QString(digits, QLatin1Char('8')))));
    ui->play->setMinimumWidth(
        std::max(metrics.horizontalAdvance(tr("Pause")), metrics.horizontalAdvance(tr("Play"))) +
        24);
    ui->frames->setItemDelegateForColumn(kDelay, new DelayEdit(this));
    ui->frames->horizontalHeader()->setSectionResizeMode(kName, QHeaderView::Stretch);
    ui->frames->setMinimumWidth(metrics.averageCharWidth() * 40);
    fillTable();
    settle.setSingleShot(true);
    settle.setInterval(kSettleMs);
    connect(&settle, &QTimer::timeout, this, &AnimationExport::startOver);
    connect(&player, &QTimer::timeout, this, &AnimationExport::playOn);
    connect(&watcher, &QFutureWatcher<GifPreview>::finished, this, &AnimationExport::frameMade);
    startOver();
    showFrame(0);
    setPlaying(count() > 1);
    ui->play->setEnabled(count() > 1);
    ui->frameSlider->setEnabled(count() > 1);
}

AnimationExport::~AnimationExport()
{
    stop = true;
    watcher.waitForFinished();
}

int AnimationExport::framesReady() const
{
    return int(std::count_if(previews.begin(), previews.end(),
                             [](const GifPreview &made) { return !made.picture.isNull(); }));
}

void AnimationExport::done(int code)
{
    player.stop();
    settle.stop();
    stop = true;
    disconnect(&watcher, nullptr, this, nullptr);
    watcher.waitForFinished();
    if (code == QDialog::Accepted)
        *result = chosen;
    QDialog::done(code);
}

// --- What is chosen ---------------------------------------------------------------------

void AnimationExport::fillTable()
{
    const QScopedValueRollback<bool> guard(filling, true);
    ui->frames->setRowCount(count());
    for (int place = 0; place < count(); ++place) {
        const int number = numberOf(place);
        auto *name = new QTableWidgetItem(master->layers.at(layers.at(number))->name);
        name->setFlags(name->flags() & ~Qt::ItemIsEditable);
        auto *delay = new QTableWidgetItem;
        delay->setData(Qt::EditRole, double(chosen.delayOf(number)) / kHundredths);
        delay->setTextAlignment(Qt::AlignRight | Qt::AlignVCenter);
        ui->frames->setItem(place, kName, name);
        ui->frames->setItem(place, kDelay, delay);
    }
}

void AnimationExport::on_frames_cellChanged(int row, int column)
{
    if (filling || column != kDelay)
        return;
    const double seconds = ui->frames->item(row, column)->data(Qt::EditRole).toDouble();
    chosen.delays[numberOf(row)] = qRound(std::clamp(seconds, 0.0, kLongest) * kHundredths);
    showSummary();
}

void AnimationExport::on_frames_currentCellChanged(int row)
{
    if (filling || row < 0 || row == current)
        return;
    setPlaying(false);
    showFrame(row);
}

void AnimationExport::on_delay_valueChanged(double seconds)
{
    if (filling)
        return;
    chosen.delay = qRound(seconds * kHundredths);
    std::fill(chosen.delays.begin(), chosen.delays.end(), chosen.delay);
    fillTable();
    showSummary();
}

void AnimationExport::on_repeats_valueChanged(int repeats)
{
    chosen.repeats = repeats;
}

void AnimationExport::on_colors_valueChanged(int colors)
{
    chosen.colors = colors;
    settle.start();
}

void AnimationExport::on_dither_toggled(bool on)
{
    chosen.dither = on;
    settle.start();
}

void AnimationExport::on_reversed_toggled(bool on)
{
    if (filling)
        return;
    chosen.reversed = on;
    fillTable();
    showFrame(current);
}

// --- Making the frames --------------------------------------------------------------------

void AnimationExport::startOver()
{
    settle.stop();
    previews.assign(size_t(count()), {});
    if (making >= 0) { // its end starts the next one
        outdated = true;
        stop = true;
    } else {
        makeNext();
    }
    showSummary();
}

/// The frame that is looked at comes first, then those that follow it. Composing is quick
/// and has to be done here; reducing the colours is what takes its time.
void AnimationExport::makeNext()
{
    making = -1;
    for (int i = 0; i < count() && making < 0; ++i) {
        const int number = numberOf((current + i) % count());
        if (previews[size_t(number)].picture.isNull())
            making = number;
    }
    if (making < 0)
        return;
    source = makeFrame(master, layers.at(making));
    if (!source) {
        making = -1;
        ui->summary->setText(tr("There is not enough memory for a preview."));
        return;
    }
    outdated = false;
    stop = false;
    const double ratio = devicePixelRatioF();
    const QSize room = QSize(kPreviewWidth, kPreviewHeight) * ratio;
    const int dark = workspace()->checkerDark, light = workspace()->checkerLight;
    const image *frame = source.get();
    watcher.setFuture(
        QtConcurrent::run([this, frame, how = chosen, several = count() > 1, room, dark, light]() {
            GifPreview made = previewGifFrame(*frame, how, several, stop);
            if (!made.picture.isNull())
                made.picture = fitted(made.picture, room, dark, light);
            return made;
        }));
}

void AnimationExport::frameMade()
{
    const int made = making;
    making = -1;
    source.reset();
    if (!outdated) {
        previews[size_t(made)] = watcher.result();
        if (previews[size_t(made)].picture.isNull()) {
            ui->summary->setText(tr("There is not enough memory for a preview."));
            return;
        }
        if (made == numberOf(current))
            showFrame(current);
        showSummary();
    }
    makeNext();
}

// --- Showing ------------------------------------------------------------------------------

void AnimationExport::showFrame(int place)
{
    if (count() == 0)
        return;
    const QScopedValueRollback<bool> guard(filling, true);
    current = place;
    const QImage &picture = previews[size_t(numberOf(place))].picture;
    if (picture.isNull()) {
        ui->preview->setText(tr("Being made…"));
    } else {
        QPixmap pixmap = QPixmap::fromImage(picture);
        pixmap.setDevicePixelRatio(devicePixelRatioF());
        ui->preview->setPixmap(pixmap);
    }
    ui->frameSlider->setValue(place);
    ui->frameNumber->setText(tr("%1 of %2").arg(place + 1).arg(count()));
    ui->frames->selectRow(place);
}

void AnimationExport::showSummary()
{
    const int ready = framesReady();
    int64_t bytes = 0, length = 0;
    for (const GifPreview &made : previews)
        bytes += made.bytes;
    for (const int delay : qAsConst(chosen.delays))
        length += delay;
    QString text = tr("Frames: %1 of %2 × %3, %4 s")
                       .arg(count())
                       .arg(master->width)
                       .arg(master->height)
                       .arg(QLocale().toString(double(length) / kHundredths, 'f', 2));
    if (ready == count())
        text += tr("; the file takes %1").arg(QLocale().formattedDataSize(bytes));
    else if (ready > 0)
        text += tr("; the file takes about %1 (%2 of %3 frames made)")
                    .arg(QLocale().formattedDataSize(bytes * count() / ready, 1))
                    .arg(ready)
                    .arg(count());
    ui->summary->setText(text);
}

void AnimationExport::on_frameSlider_valueChanged(int frame)
{
    if (filling)
        return;
    setPlaying(false);
    showFrame(frame);
}

void AnimationExport::on_play_clicked()
{
    setPlaying(!playing());
}

void AnimationExport::setPlaying(bool on)
{
    if (on)
        player.start(kNotReadyMs);
    else
        player.stop();
    ui->play->setText(on ? tr("Pause") : tr("Play"));
}

/// The next frame, once it is there; until then the one shown stays.
void AnimationExport::playOn()
{
    const int next = (current + 1) % count();
    if (previews[size_t(numberOf(next))].picture.isNull()) {
        player.setInterval(kNotReadyMs);
        return;
    }
    showFrame(next);
    const int delay = chosen.delayOf(numberOf(next));
    player.setInterval((delay < kLeastDelay ? kDelayOfShort : delay) * 1000 / kHundredths);
}
