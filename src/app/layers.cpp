// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/layers.h"

#include "app/mainwindow.h"
#include "app/smallpicture.h"
#include "core/image.h"
#include "core/layermodes.h"
#include "layers/stack.h"
#include "views/imgwindow.h"

#include "ui_layers.h"

#include <QAbstractSpinBox>
#include <QDebug>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QScopedValueRollback>
#include <QScreen>
#include <QSettings>

#include <algorithm>
#include <cmath>

namespace
{
constexpr int kDrawDelayMs = 200;
constexpr int kGap = 12;
constexpr int kTenthsPerPercent = 10;
const QString kPlaceKey = QStringLiteral("layersPlace");
const QString kByNameKey = QStringLiteral("layersByName");

QString modeName(int id)
{
    const auto &table = layerModeTable();
    const auto found = std::find_if(table.begin(), table.end(),
                                    [id](const LayerModeEntry &entry) { return entry.id == id; });
    return found == table.end() ? QString::number(id) : QString::fromLatin1(found->name);
}

bool modeHasFactor(int id)
{
    constexpr int mask = 7, inverseMask = 10; // they scale the alpha that they write
    const auto &table = layerModeTable();
    return id == mask || id == inverseMask ||
           std::any_of(table.begin(), table.end(), [id](const LayerModeEntry &entry) {
               return entry.id == id && entry.useFactor;
           });
}

QString percentText(double part)
{
    return QString::number(std::round(part * 10000) / 100) + QStringLiteral(" %");
}

LayerRow rowFor(const image &layer, const image &master)
{
    QStringList parts = {modeName(layer.layerMode), percentText(layer.opacity)};
    if (layer.localStack)
        parts << Layers::tr("stacked");
    if (layer.lockStep)
        parts << Layers::tr("locked");
    if (layer.globalMask && layer.layerMode != kWarpMode)
        parts << Layers::tr("mask");
    LayerRow row;
    row.name = layer.name;
    row.detail = parts.join(QStringLiteral(" · "));
    row.tip = Layers::tr("%1<br>%2 × %3 samples at %4, %5<br>Double-click to open its window")
                  .arg(layer.title.toHtmlEscaped())
                  .arg(layer.width)
                  .arg(layer.height)
                  .arg(layer.xOffset)
                  .arg(layer.yOffset);
    row.visible = layer.visible;
    row.target = master.target == &layer;
    return row;
}

/// What is shown already stays untouched: the person may be typing in the field.
void showNumber(QDoubleSpinBox *spin, double value)
{
    if (std::abs(spin->value() - value) > 0.5 * std::pow(10.0, -spin->decimals()))
        spin->setValue(value);
}

void showNumber(QSpinBox *spin, int value)
{
    if (spin->value() != value)
        spin->setValue(value);
}
} // namespace

Layers::Layers(MainWindow *mainWindow)
    : QDialog(mainWindow), debugFlag(qEnvironmentVariableIsSet("KESTRANE_DEBUG_LAYERS")),
      ui(std::make_unique<Ui::Layers>()), main(mainWindow)
{
    const QScopedValueRollback<bool> guard(filling, true);
    ui->setupUi(this);
    ui->layerList->setProperty(
        "emptyText", tr("No layered picture is open.\nLayers, Make Layered in the main window "
                        "turns the current picture into one."));
    // The styles' own popup is as tall as the screen for so many modes.
    ui->layerMode->setStyleSheet(QStringLiteral("QComboBox { combobox-popup: 0; }"));
    textStyle.pixels = 0; // until the first text, which fits its picture
    textStyle.red = uint16_t(main->foreRed);
    textStyle.green = uint16_t(main->foreGreen);
    textStyle.blue = uint16_t(main->foreBlue);
    connectList();
    // A wheel that scrolls past must not change what it happens to pass.
    const auto spins = findChildren<QAbstractSpinBox *>();
    for (QWidget *widget : spins)
        widget->installEventFilter(this);
    for (QWidget *widget : std::initializer_list<QWidget *>{ui->layerMode, ui->masterCombo,
                                                            ui->opacitySlider, ui->factorSlider}) {
        widget->setFocusPolicy(Qt::StrongFocus);
        widget->installEventFilter(this);
    }
    for (QWidget *widget : spins)
        widget->setFocusPolicy(Qt::StrongFocus);
    drawing.setSingleShot(true);
    drawing.setInterval(kDrawDelayMs);
    connect(&drawing, &QTimer::timeout, this, &Layers::drawPictures);
    populateLayerModes();
}

Layers::~Layers() = default;

void Layers::connectList()
{
    connect(ui->layerList, &LayerList::eyeClicked, this, &Layers::toggleVisible);
    connect(ui->layerList, &LayerList::rowOpened, this,
            [this](int row) { main->showPart(layerAt(row)); });
    connect(ui->layerList, &LayerList::moveRequested, this,
            [this](int from, int to) { moveTo(layerAt(from), ui->layerList->count() - 1 - to); });
    connect(ui->layerList, &LayerList::removeRequested, ui->destroy, &QToolButton::click);
    connect(ui->layerList, &LayerList::renameRequested, ui->renameLayer, &QToolButton::click);
}

void Layers::log(const char *call) const
{
    if (debugFlag)
        qDebug().noquote() << call;
}

image *Layers::master() const
{
    const bool live = main->ownsImage(shown) && Workspace::validImage(shown);
    return live && shown->kind == 1 && shown->serial == shownSerial ? shown : nullptr;
}

image *Layers::selected() const
{
    const image *of = master();
    return of && of->layers.contains(current) ? current : nullptr;
}

image *Layers::layerAt(int row) const
{
    const image *of = master();
    return of ? of->layers.value(int(of->layers.size()) - 1 - row, nullptr) : nullptr;
}

int Layers::rowOf(const image *layer) const
{
    const int place = getLayerIndex(layer);
    return place < 0 ? -1 : int(master()->layers.size()) - 1 - place;
}

int Layers::getLayerIndex(const image *lay) const
{
    log("getLayerIndex(lay)");
    const image *of = master();
    return of ? int(of->layers.indexOf(const_cast<image *>(lay))) : -1;
}

bool Layers::makeMaster(image *img)
{
    log("makeMaster(img)");
    return ::makeMaster(img) && setMaster(img);
}

bool Layers::setMaster(image *img)
{
    log("setMaster(img)");
    if (!img || img->kind != 1)
        return false;
    if (img != master()) {
        shown = img;
        shownSerial = img->serial;
        current = img->layers.isEmpty() ? nullptr : img->layers.constLast();
    }
    setLayerList();
    picturesChanged();
    return true;
}

bool Layers::addLayer(image *master, image *layer)
{
    log("addLayer(master,layer)");
    if (!::addLayer(master, layer))
        return false;
    selectLayer(layer);
    return true;
}

bool Layers::insertBefore(image *target, image *newlayer)
{
    log("insertBefore(target,newlayer)");
    if (!::insertBefore(target, newlayer))
        return false;
    selectLayer(newlayer);
    return true;
}

void Layers::selectLayer(image *lay)
{
    log("selectLayer(lay)");
    if (getLayerIndex(lay) < 0)
        return;
    current = lay;
    setLayerList();
}

void Layers::follow(image *img)
{
    image *of = masterOf(img);
    if (!of || !main->ownsImage(of))
        return;
    const bool layerChosen = img->kind == 2 && img != selected();
    if (of == master() && !layerChosen)
        return;
    if (of != master())
        setMaster(of);
    if (layerChosen)
        selectLayer(img);
}

void Layers::stackChanged(const image *changedMaster)
{
    if (changedMaster && changedMaster != master()) {
        const QScopedValueRollback<bool> guard(filling, true);
        fillMasters(master());
        return;
    }
    setLayerList();
    picturesChanged();
}

void Layers::setLayerList()
{
    log("setLayerList()");
    {
        const QScopedValueRollback<bool> guard(filling, true);
        const image *of = master();
        fillMasters(of);
        fillRows(of);
        showTarget(of);
    }
    setWorkingLayerModes();
    enabledWidgets();
}

void Layers::fillMasters(const image *shownMaster)
{
    QStringList titles;
    QVariantList serials;
    int index = -1;
    for (const image *img : qAsConst(main->images)) {
        if (img->kind != 1)
            continue;
        if (img == shownMaster)
            index = int(titles.size());
        titles << img->title;
        serials << int(img->serial);
    }
    bool same = ui->masterCombo->count() == titles.size();
    for (int i = 0; same && i < titles.size(); ++i)
        same = ui->masterCombo->itemText(i) == titles.at(i) &&
               ui->masterCombo->itemData(i) == serials.at(i);
    if (!same) {
        ui->masterCombo->clear();
        for (int i = 0; i < titles.size(); ++i)
            ui->masterCombo->addItem(titles.at(i), serials.at(i));
    }
    if (ui->masterCombo->currentIndex() != index)
        ui->masterCombo->setCurrentIndex(index);
    ui->masterCombo->setToolTip(index < 0 ? tr("The layered picture that this dialog works on")
                                          : titles.at(index).toHtmlEscaped());
}

void Layers::fillRows(const image *shownMaster)
{
    QVector<LayerRow> rows;
    const QList<image *> layers = shownMaster ? shownMaster->layers : QList<image *>();
    for (int i = layers.size() - 1; i >= 0; --i)
        rows << rowFor(*layers.at(i), *shownMaster);
    // A layer that went away leaves the selection to the one in its place.
    const int oldRow = std::max(0, ui->layerList->currentRow());
    ui->layerList->setRows(rows);
    if (!layers.contains(current))
        current = rows.isEmpty() ? nullptr : layerAt(std::min(oldRow, int(rows.size()) - 1));
    const int row = current ? int(layers.size()) - 1 - int(layers.indexOf(current)) : -1;
    if (ui->layerList->currentRow() != row)
        ui->layerList->setCurrentRow(row);
}

void Layers::showTarget(const image *shownMaster)
{
    const image *target = shownMaster ? shownMaster->target : nullptr;
    if (target && shownMaster->layers.contains(const_cast<image *>(target)))
        ui->targetLabel->setText(
            tr("Target: <font color=\"#008800\"><b>%1</b></font>")
                .arg(ui->targetLabel->fontMetrics()
                         .elidedText(target->name, Qt::ElideMiddle,
                                     std::max(80, ui->targetLabel->width() - 80))
                         .toHtmlEscaped()));
    else
        ui->targetLabel->setText(tr("Target: <font color=\"#FF0000\"><i>None</i></font>"));
}

void Layers::setLayerMode(const image *layer)
{
    log("setLayerMode(layer)");
    const QScopedValueRollback<bool> guard(filling, true);
    ui->layerMode->setCurrentIndex(layer ? ui->layerMode->findData(layer->layerMode) : -1);
}

void Layers::setWorkingLayerModes()
{
    log("setWorkingLayerModes()");
    const QScopedValueRollback<bool> guard(filling, true);
    const image *layer = selected();
    setLayerMode(layer);
    ui->visible->setChecked(layer && layer->visible);
    ui->localstack->setChecked(layer && layer->localStack);
    ui->lockstep->setChecked(layer && layer->lockStep);
    ui->globalmask->setChecked(layer && layer->globalMask);
    if (!layer)
        return;
    showNumber(ui->opacity, layer->opacity * 100);
    ui->opacitySlider->setValue(qRound(ui->opacity->value() * kTenthsPerPercent));
    showNumber(ui->factor, layer->factor * 100);
    ui->factorSlider->setValue(qRound(ui->factor->value()));
    showNumber(ui->xOffset, layer->xOffset);
    showNumber(ui->yOffset, layer->yOffset);
    showNumber(ui->xFraction, layer->xFraction);
    showNumber(ui->yFraction, layer->yFraction);
    showNumber(ui->xCenter, layer->xCenter);
    showNumber(ui->yCenter, layer->yCenter);
    showNumber(ui->rotation, layer->rotation);
}

void Layers::enabledWidgets()
{
    log("enabledWidgets()");
    const image *of = master();
    const image *layer = selected();
    for (QWidget *widget :
         std::initializer_list<QWidget *>{ui->create, ui->addLayer, ui->gentext, ui->createWarp,
                                          ui->renameMaster, ui->saveAll, ui->masterCombo})
        widget->setEnabled(of);
    ui->clearTarget->setEnabled(of && of->target);
    ui->gifAnim->setEnabled(layer);
    for (QWidget *widget : std::initializer_list<QWidget *>{
             ui->clone, ui->hflip, ui->vflip, ui->renameLayer, ui->visible, ui->localstack,
             ui->lockstep, ui->opacity, ui->opacitySlider, ui->byName})
        widget->setEnabled(layer);
    ui->assignTarget->setEnabled(layer && of->target != layer);
    const bool several = layer && of->layers.size() > 1;
    ui->higher->setEnabled(several && layer != of->layers.constLast());
    ui->lower->setEnabled(several && layer != of->layers.constFirst());
    ui->detach->setEnabled(several);
    ui->destroy->setEnabled(several);

    const bool warp = layer && layer->layerMode == kWarpMode;
    ui->layerMode->setEnabled(layer && !warp);
    ui->globalmask->setEnabled(layer && !warp);
    for (QWidget *widget :
         std::initializer_list<QWidget *>{ui->resetWarp, ui->scaleWarp, ui->rotateWarp})
        widget->setEnabled(warp);
    for (QWidget *widget :
         std::initializer_list<QWidget *>{ui->toChans, ui->rgbToHSV, ui->rgbToCMY, ui->rgbToCMYK})
        widget->setEnabled(layer && !warp);
    for (QWidget *widget : std::initializer_list<QWidget *>{ui->shadowEffect, ui->glowEffect,
                                                            ui->embossEffect, ui->punchEffect})
        widget->setEnabled(layer && layer->layerMode == kNormalMode);
    const bool factor = layer && modeHasFactor(layer->layerMode);
    ui->factor->setEnabled(factor);
    ui->factorSlider->setEnabled(factor);
    enablePlacement(layer);
}

/// Layers of a circuit board always lie in register; few modes turn their layer.
void Layers::enablePlacement(const image *layer)
{
    const bool placed = layer && !isPcbMode(layer->layerMode);
    ui->xOffset->setEnabled(placed);
    ui->yOffset->setEnabled(placed);
    const bool turns = layer && modeTurns(layer->layerMode);
    for (QWidget *widget : std::initializer_list<QWidget *>{ui->rotation, ui->xCenter, ui->yCenter,
                                                            ui->xFraction, ui->yFraction})
        widget->setEnabled(turns);
}

void Layers::populateLayerModes()
{
    log("populateLayerModes()");
    const QScopedValueRollback<bool> guard(filling, true);
    std::vector<LayerModeEntry> entries = layerModeTable();
    if (ui->byName->isChecked())
        std::stable_sort(entries.begin(), entries.end(),
                         [](const LayerModeEntry &one, const LayerModeEntry &other) {
                             return qstricmp(one.name, other.name) < 0;
                         });
    ui->layerMode->clear();
    for (const LayerModeEntry &entry : entries)
        ui->layerMode->addItem(QString::fromLatin1(entry.name), entry.id);
    setLayerMode(selected());
}

void Layers::picturesChanged()
{
    // Not started anew by each change, or a drag would hold the pictures up to its end.
    if (!drawing.isActive())
        drawing.start();
}

void Layers::drawPictures()
{
    // Names and other settings that a window's command changed follow here too.
    setLayerList();
    const image *of = master();
    const double ratio = devicePixelRatioF();
    for (int row = 0; of && row < ui->layerList->count(); ++row)
        ui->layerList->setPicture(
            row, smallPicture(*layerAt(row), LayerList::pictureSide(), ratio, true));
    main->refreshOperatorSource();
}

void Layers::settings(QSettings &store, bool save)
{
    if (save) {
        store.setValue(kPlaceKey, geometry());
        store.setValue(kByNameKey, ui->byName->isChecked());
        return;
    }
    ui->byName->setChecked(store.value(kByNameKey).toBool());
    populateLayerModes();
    // At the right edge, away from the main window and the operator dialog.
    const QRect desk = QGuiApplication::primaryScreen()->availableGeometry();
    resize(sizeHint().expandedTo(QSize(372, std::min(640, desk.height() - 60))));
    move(desk.right() - width() - kGap, desk.top() + kGap);
    const QRect saved = store.value(kPlaceKey).toRect();
    const QPoint grip = saved.topLeft() + QPoint(60, 10);
    const auto screens = QGuiApplication::screens();
    if (saved.isValid() && std::any_of(screens.begin(), screens.end(), [grip](QScreen *screen) {
            return screen->availableGeometry().contains(grip);
        }))
        setGeometry(saved);
}

void Layers::keyPressEvent(QKeyEvent *event)
{
    if (main->globalKey(event))
        return;
    imgWindow *window = main->validCurrent();
    if (!window || event->key() == Qt::Key_Escape) {
        QDialog::keyPressEvent(event);
        return;
    }
    // What no control of the dialog takes is a command for the current image.
    QKeyEvent handed(QEvent::KeyPress, event->key(), event->modifiers(), event->text(),
                     event->isAutoRepeat());
    QCoreApplication::sendEvent(window, &handed);
}

bool Layers::eventFilter(QObject *watched, QEvent *event)
{
    auto *widget = qobject_cast<QWidget *>(watched);
    if (event->type() == QEvent::Wheel && widget && !widget->hasFocus()) {
        event->ignore();
        return true;
    }
    return QDialog::eventFilter(watched, event);
}
