// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/operators.h"

#include "core/scale.h"
#include "operators/base/operatortable.h"
#include "operators/base/oppage.h"
#include "operators/dialog/colorwell.h"
#include "operators/dialog/crange.h"
#include "operators/dialog/histogramview.h"
#include "operators/dialog/opfavorites.h"
#include "operators/dialog/oppreview.h"
#include "operators/filter/exposure.h"
#include "operators/pipeline/random15.h"
#include "operators/table/allops.h"
#include "script/run/script.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"
#include "views/imgwindow.h"
#include "views/keytable.h"
#include "views/viewhost.h"

#include <QtTest>
#include <QtWidgets>

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>

namespace
{
constexpr int kExposure = 29, kNegative = 62, kScript = 82, kEmptyRow = 97, kWatcher = 98,
              kCrowd = 99, kSampler = 100;

/// Whether `crop` shows the part of the picture at `origin`, and clear white beside it.
bool isCrop(const image &crop, const image &picture, const QPoint &origin)
{
    for (int i = 0; i < crop.width * crop.height; ++i) {
        const int x = i % crop.width + origin.x(), y = i / crop.width + origin.y();
        const int at = y * picture.width + x;
        const bool inside = x >= 0 && y >= 0 && x < picture.width && y < picture.height;
        const bool same = inside ? crop.gmask[i] == 65535 && crop.alpha[i] == picture.alpha[at] &&
                                       crop.red[i] == picture.red[at]
                                 : crop.gmask[i] == 0 && crop.alpha[i] == 0 &&
                                       crop.red[i] == 65535 && crop.blue[i] == 65535;
        if (!same)
            return false;
    }
    return true;
}

/// QTest's own move carries no button.
void moveTo(QWidget *widget, const QPoint &place)
{
    QMouseEvent move(QEvent::MouseMove, place, Qt::NoButton, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(widget, &move);
}

class DialogHost : public ViewHost
{
public:
    void showNewImageDialog() override { ++newImageDialogs; }
    bool globalKey(QKeyEvent *) override { return takesKeys; }
    int newImageDialogs = 0;
    bool takesKeys = false;
};

/// The dialog over all operators, with one window open on a picture.
class DialogTest : public testing::Test
{
protected:
    DialogTest()
    {
        addAllOperators(&table);
        table.add({kEmptyRow, 0, "empty", "Empty", "", "", nullptr});
    }
    ~DialogTest() override
    {
        dialog.reset();
        close();
    }
    void open(int width, int height)
    {
        dialog.reset();
        close();
        picture = randomImage(width, height, 7);
        ws.images = {picture.get()};
        window = std::make_unique<imgWindow>(picture.get());
        host.windows = {window.get()};
        host.currentWindow = window.get();
        dialog = std::make_unique<Operators>(&table);
        dialog->show();
        settle();
    }
    /// Waits for the refresh of the preview that is to come, if one is.
    void settle()
    {
        EXPECT_TRUE(QTest::qWaitFor([this] { return !dialog->previewPending(); }));
    }
    /// What a person does in the modal boxes that come up: ten times a second.
    template <class Answer>
    void whileAnswering(Answer answer, const std::function<void()> &act)
    {
        QTimer person;
        QObject::connect(&person, &QTimer::timeout, [&] {
            if (QWidget *modal = QApplication::activeModalWidget())
                answer(modal);
        });
        person.start(10);
        act();
    }
    void close()
    {
        host.windows.clear();
        host.currentWindow = nullptr;
        window.reset();
        ws.images.clear();
        picture.reset();
    }
    void showType(int row)
    {
        child<QComboBox>("comboBox")->setCurrentIndex(row);
        settle();
    }
    QPoint origin() const { return {window->previewX, window->previewY}; }
    Exposure *exposure() { return static_cast<Exposure *>(table.byId(kExposure)); }
    template <class Op>
    Op *add(int id, const char *name)
    {
        auto made = std::make_unique<Op>(&table);
        Op *op = made.get();
        table.add({id, 0, name, name, "", "%1 [a] [b] [c]", nullptr}, std::move(made));
        return op;
    }
    template <class Widget>
    Widget *child(const QString &name)
    {
        auto *found = dialog->findChild<Widget *>(name);
        EXPECT_NE(found, nullptr) << qPrintable(name);
        return found;
    }

    RecordingWorkspace ws;
    DialogHost host;
    OperatorTable table;
    ImagePtr picture;
    std::unique_ptr<imgWindow> window;
    std::unique_ptr<Operators> dialog;
};

/// Fills every pool of the page and keeps what its handlers are told.
class Crowd : public OpWrapper
{
public:
    using OpWrapper::OpWrapper;

    void build(OpPage *page) override
    {
        for (int i = 0; i < 14; ++i) { // more than there is room for
            page->addLabel(QStringLiteral("I%1").arg(i), OpPage::LabelAlign::Right, false);
            added << page->addIntSpin(0, 99, 0, false)
                  << page->addSlider(QStringLiteral("S%1").arg(i), -9, 9, 0, true, "%")
                  << page->addDoubleSpin(0, 9, 0.25, 2, 0, true)
                  << page->addCheck("check", false, false)
                  << page->addComboData({"a", "b"}, {5, 6}, 0, i % 3 == 2)
                  << page->addButton("B", false) << page->addLine("", false) << page->addEditor("");
        }
        page->addWell(0x1234, 0x5678, 0x9ABC, false);
        page->addWell(65535, 0, 0, true);
    }
    int slider(int i, int v) override { return told("slider", i, v); }
    int intspin(int i, int v) override { return told("intspin", i, v); }
    int dubspin(int i, double v) override { return told("dubspin", i, v); }
    int combo(int i, int v) override { return told("combo", i, v); }
    int checkbox(int i, bool v) override { return told("checkbox", i, v); }
    int button(int i) override { return told("button", i, 0); }
    int lineedit(int i, QString v) override { return told("lineeditor", i, v.toDouble()); }
    int editor(int i, QObject *sender) override
    {
        return told("editor", i, qobject_cast<QPlainTextEdit *>(sender)->toPlainText().toDouble());
    }
    int colorwell(int i, int v) override { return told("colorwell", i, v); }

    int told(const char *handler, int index, double value)
    {
        last = QStringLiteral("%1 %2 %3").arg(handler).arg(index).arg(value);
        return 0;
    }
    QString last;
    QList<int> added;
};

/// An operator with one parameter of every kind.
class Sampler : public DeclaredOp
{
public:
    explicit Sampler(OperatorTable *table) : DeclaredOp(table)
    {
        declare({&whole, "w", 1, 20, 5, spin("Whole")});
        declare({&real, "r", -2e6, 2e6, 0.5, doubleSpin("Real", 0.1, 2)});
        declare({&hidden, "h", 0, 9, 0, ::slider("Hidden"), false, false});
        declare({&on, "o", 0, 1, 0, check("On")});
    }
    void apply(image *, image *) override {}
    QString line()
    {
        QString text;
        scriptLine(&text);
        return text;
    }
    int whole, hidden;
    double real;
    bool on;
};
} // namespace

TEST_F(DialogTest, ListsTheTableAndRemembersTheChoice)
{
    ws.mainOpIndex = kNegative;
    open(120, 110);
    auto *combo = child<QComboBox>("opCombo");
    EXPECT_EQ(combo->currentText(), QLatin1String("Negative"));
    ASSERT_EQ(combo->count(), int(table.operators().size()) + 1);
    for (int i = 1; i < combo->count(); ++i) {
        const OpWrapper *op = table.operators()[size_t(i - 1)];
        const bool enabled = combo->model()->flags(combo->model()->index(i, 0)) & Qt::ItemIsEnabled;
        EXPECT_EQ(combo->itemText(i), op->menuName);
        EXPECT_EQ(enabled, op->self != nullptr) << i;
    }
    QTest::keyClick(combo, Qt::Key_Home);
    EXPECT_TRUE(table.currentOp == 0 && ws.mainOpIndex == 0 && table.page == nullptr);
    for (const char *name : {"operate", "reset", "setHotkey", "buildscript", "gethelp"})
        EXPECT_FALSE(child<QPushButton>(name)->isEnabled()) << name;

    for (const int none : {kEmptyRow, 4711}) {
        dialog->selectOperator(kNegative);
        dialog->selectOperator(none);
        EXPECT_EQ(combo->currentIndex(), 0) << none;
    }
    dialog->selectOperator(kNegative);
    combo->setCurrentIndex(combo->findData(kEmptyRow)); // as a search by letters can
    EXPECT_EQ(table.currentOp, kNegative);
    EXPECT_EQ(combo->currentText(), QLatin1String("Negative"));
    QSignalSpy help(dialog.get(), &Operators::helpRequested);
    QTest::mouseClick(child<QPushButton>("gethelp"), Qt::LeftButton);
    EXPECT_EQ(help.value(0).value(0).toInt(), kNegative);
    EXPECT_EQ(child<QPushButton>("gethelp")->toolTip(),
              QLatin1String("Open manual to\n\"opnegative.html\"\noperator help page"));
    dialog->selectOperator(kExposure);
    EXPECT_EQ(combo->currentText(), QLatin1String("Exposure"));
    EXPECT_EQ(dialog->helpPageName, QLatin1String("opexposure.html"));
    dialog.reset();
    EXPECT_TRUE(table.page == nullptr && table.preview == nullptr) << "nothing is left behind";
    exposure()->reset(); // would show its fields on a page
}

TEST_F(DialogTest, SliderKeysChangeFieldValueAndPreview)
{
    ws.mainOpIndex = kExposure;
    ws.thumbnail = false;
    open(120, 110);
    auto *slider = child<QSlider>("slider0");
    for (int i = 0; i < 25; ++i)
        QTest::keyClick(slider, i % 2 ? Qt::Key_Right : Qt::Key_PageUp);
    settle();
    EXPECT_EQ(exposure()->amount, 25);
    EXPECT_EQ(child<QLabel>("value0")->text(), QLatin1String("25"));
    const int opaque = int(std::find(picture->alpha, picture->alpha + 100, 65535) - picture->alpha);
    ASSERT_LT(opaque, 100);
    const int green = int(std::min(1.25 * picture->green[opaque], 65535.0));
    EXPECT_EQ(table.preview->green[opaque], green);
    EXPECT_EQ(qGreen(child<OpPreview>("oppreview")->shown().pixel(opaque, 0)), green >> 8);
    child<QComboBox>("combo0")->setCurrentIndex(1);

    QTest::mouseClick(child<QPushButton>("reset"), Qt::LeftButton);
    EXPECT_EQ(exposure()->amount, 0);
    EXPECT_EQ(exposure()->mode, 1) << "reset keeps the mode";
    QSignalSpy applied(dialog.get(), &Operators::operateRequested);
    QTest::mouseClick(child<QPushButton>("operate"), Qt::LeftButton);
    EXPECT_EQ(applied.count(), 1);
}

TEST_F(DialogTest, NStepsThroughTheOperatorsThatAreThere)
{
    open(120, 110);
    QList<int> there = {0};
    for (const OpWrapper *op : table.operators())
        if (op->self)
            there << op->id;
    QList<int> seen = {table.currentOp};
    // In the list itself, which would look for names that begin with the letter.
    for (int i = 1; i < there.size() + 2; ++i) {
        QTest::keyClick(child<QComboBox>("opCombo"), Qt::Key_N);
        if (table.currentOp != seen.last())
            seen << table.currentOp;
    }
    EXPECT_EQ(seen, there);
    QTest::keyClick(dialog.get(), Qt::Key_N, Qt::ShiftModifier);
    EXPECT_EQ(table.currentOp, there[there.size() - 2]);
    QTest::keyClick(dialog.get(), Qt::Key_N, Qt::MetaModifier);
    EXPECT_EQ(table.currentOp, there[there.size() - 2]);
    EXPECT_EQ(host.newImageDialogs, 1);
    dialog->selectOperator(0);
    QTest::keyClick(dialog.get(), Qt::Key_N, Qt::ShiftModifier);
    EXPECT_EQ(table.currentOp, 0);
    QSignalSpy digits(dialog.get(), &Operators::digitAction);
    for (const int key : {Qt::Key_1, Qt::Key_9, Qt::Key_0})
        QTest::keyClick(child<QComboBox>("opCombo"), Qt::Key(key), Qt::AltModifier);
    const QList<QList<QVariant>> entries = {{0}, {8}, {9}};
    EXPECT_EQ(QList<QList<QVariant>>(digits), entries);
}

TEST_F(DialogTest, HotkeysAreTakenOrRefused)
{
    struct {
        const char *fault, *keys, *hotkey, *box;
    } const cases[] = {
        {"reserved", "h", "y",
         "Key Not Allowed: \"h\" cannot be used as a hotkey.\nHow about \"H\" instead?"},
        {"of another", "c", "y", "Key In Use: This hotkey is already in use"},
        {"of a command", "k", "y",
         "Key In Use: This key is already in use for \"Checker behind transparency\""},
        {"steps", "n", "y",
         "Key Not Allowed: \"n\" steps through the operators.\nPlease choose another key."},
        {"its own again", "y", "y", ""},
        {"given up", "", "y", ""},
        {"upper case of the reserved", "H", "H", ""}};
    ws.mainOpIndex = kExposure;
    open(120, 110);
    exposure()->hotkey = QStringLiteral("y");
    table.byId(kNegative)->hotkey = QStringLiteral("c");
    keyTable() = KeyTable::defaults();
    keyTable().bind(Qt::Key_N, 0);
    QString keys;
    QStringList grabbed, boxes;
    const auto person = [&](QWidget *modal) {
        if (auto *box = qobject_cast<QMessageBox *>(modal)) {
            boxes << box->windowTitle() + ": " + box->text();
            box->accept();
        } else if (modal->objectName() == "keyGrabber") {
            grabbed << keys;
            QTest::keyClicks(modal, keys);
            if (keys.isEmpty())
                QTest::keyClick(modal, Qt::Key_Escape);
        }
    };
    for (const auto &c : cases) {
        keys = c.keys;
        grabbed.clear();
        boxes.clear();
        whileAnswering(
            person, [this] { QTest::mouseClick(child<QPushButton>("setHotkey"), Qt::LeftButton); });
        EXPECT_EQ(grabbed, QStringList{keys}) << c.fault;
        EXPECT_EQ(exposure()->hotkey, c.hotkey) << c.fault;
        EXPECT_EQ(boxes.join('|'), c.box) << c.fault;
    }
    keyTable() = KeyTable::defaults();
    EXPECT_EQ(child<QLabel>("hotkeyLabel")->text(), QLatin1String("H"));

    QTest::keyClicks(child<QComboBox>("opCombo"), "c");
    EXPECT_EQ(table.currentOp, kNegative);
    QTest::keyClick(dialog.get(), Qt::Key_H);
    QTest::keyClick(dialog.get(), Qt::Key_H, Qt::ShiftModifier | Qt::AltModifier);
    EXPECT_EQ(table.currentOp, kNegative) << "upper case alone is Exposure's";
    EXPECT_TRUE(dialog->hotkeyPressed("H"));
    EXPECT_EQ(table.currentOp, kExposure);
    table.operators().back()->hotkey = QStringLiteral("e"); // has no operator
    EXPECT_FALSE(dialog->hotkeyPressed("e") || dialog->hotkeyPressed(""));
}

TEST_F(DialogTest, ControlKeysGoToTheMainWindowUnlessThereIsText)
{
    struct KeyCounter : QWidget {
        int keys = 0;
        void keyPressEvent(QKeyEvent *) override { ++keys; }
    } main;
    open(120, 110);
    dialog->setParent(&main, Qt::Dialog);
    QTest::keyClick(dialog.get(), Qt::Key_Control, Qt::ControlModifier);
    EXPECT_EQ(main.keys, 0);
    QTest::keyClick(dialog.get(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(main.keys, 1);
    table.currentOp = 3;
    QTest::keyClick(dialog.get(), Qt::Key_S, Qt::ControlModifier);
    EXPECT_EQ(main.keys, 1);
    EXPECT_FALSE(dialog->modControl) << "recorded from the release too";
    dialog->setParent(nullptr);
}

TEST_F(DialogTest, SettingsKeepPreviewTypeAndCustomColors)
{
    open(120, 110);
    QTemporaryDir folder;
    QSettings store(folder.filePath("s.ini"), QSettings::IniFormat);
    table.store = &store;
    child<QComboBox>("comboBox")->setCurrentIndex(2);
    QColorDialog::setCustomColor(1, QColor(1, 2, 3));
    dialog->settings(true);
    ws.opsX2Preview = false;
    QColorDialog::setCustomColor(1, Qt::white);
    store.setValue("CustomColorB1", 4711);
    dialog->settings(false);
    EXPECT_EQ(child<QComboBox>("comboBox")->currentIndex(), 2);
    EXPECT_EQ(QColor(QColorDialog::customColor(1)), QColor(1, 2, 255));
}

TEST_F(DialogTest, PreviewShowsThumbnailOrCrop)
{
    struct {
        const char *fault;
        int width, height, type;
        QPoint origin; // after a start at (500, 500); null: shown as thumbnail
    } const cases[] = {{"large as thumb", 300, 120, 0, {}},
                       {"below the view on both sides", 99, 99, 1, {}},
                       {"as wide as the view", 100, 99, 1, {0, -1}},
                       {"narrow", 20, 300, 1, {-80, 200}},
                       {"large", 333, 222, 1, {233, 122}},
                       {"below the half view", 49, 49, 2, {}},
                       {"between the views", 99, 99, 2, {49, 49}}};
    for (const auto &c : cases) {
        SCOPED_TRACE(c.fault);
        open(c.width, c.height);
        showType(c.type);
        window->previewX = window->previewY = 500;
        dialog->refreshPreview();
        EXPECT_EQ(dialog->thumbnailUsed, c.origin.isNull());
        EXPECT_EQ(ws.thumbnail, c.type == 0) << "the flag is only lent to the preview";
        if (c.origin.isNull()) {
            image fitted;
            ASSERT_TRUE(fitted.allocate(100, 100, QStringLiteral("fitted")));
            ASSERT_TRUE(scaleBilinear(picture.get(), &fitted, true));
            EXPECT_TRUE(sameColors(*table.preview, fitted));
            EXPECT_TRUE(sameColors(*table.previewThumb, fitted));
            continue;
        }
        EXPECT_EQ(origin(), c.origin);
        EXPECT_TRUE(isCrop(c.type == 2 ? *table.previewHalf : *table.preview, *picture, c.origin));
    }
}

TEST_F(DialogTest, PreviewBeforeShowsTheOriginalWhileItIsDown)
{
    open(150, 120);
    std::fill_n(picture->alpha, picture->sampleCount(), uint16_t(65535));
    std::fill_n(picture->red, picture->sampleCount(), uint16_t(0x10FF));
    picture->alpha[3] = 0;
    dialog->selectOperator(kNegative);
    showType(1);
    const auto *histogram = child<HistogramView>("histogram");
    EXPECT_EQ(histogram->counts(0)[0xEF], 100 * 100 - 1) << "the clear sample is left out";
    auto *before = child<QPushButton>("before");
    QTest::mousePress(before, Qt::LeftButton);
    settle();
    EXPECT_TRUE(isCrop(*table.preview, *picture, {}));
    EXPECT_EQ(histogram->counts(0)[0x10], 100 * 100 - 1);
    QTest::mouseRelease(before, Qt::LeftButton);
    settle();
    EXPECT_EQ(table.preview->red[0], 65535 - picture->red[0]);
    EXPECT_TRUE(picture->undoList.isEmpty() && table.preview->undoList.isEmpty());
    EXPECT_EQ(table.lastOp, 0) << "a preview is no act";
}

TEST_F(DialogTest, PreviewDraggingMovesTheCropAndEndsAtTheEdges)
{
    open(180, 130);
    showType(1);
    auto *view = child<OpPreview>("oppreview");
    QTest::mousePress(view, Qt::LeftButton, {}, QPoint(10, 10));
    moveTo(view, QPoint(40, 25));
    moveTo(view, QPoint(35, 25));
    settle();
    EXPECT_TRUE(isCrop(*table.preview, *picture, {25, 15}));
    moveTo(view, QPoint(99, 99));
    settle();
    EXPECT_EQ(origin(), QPoint(80, 30));
    QTest::mouseRelease(view, Qt::LeftButton, {}, QPoint(99, 99));
    moveTo(view, QPoint(0, 0));
    EXPECT_EQ(origin(), QPoint(80, 30)) << "no button is down";
}

TEST_F(DialogTest, PreviewKeysMoveTheCrop)
{
    open(500, 400);
    showType(1);
    struct Step {
        Qt::Key key;
        Qt::KeyboardModifiers modifiers;
        QPoint origin;
    };
    for (const Step &step : {Step{Qt::Key_Right, Qt::NoModifier, {1, 0}},
                             Step{Qt::Key_Down, Qt::ShiftModifier, {1, 10}},
                             Step{Qt::Key_Right, Qt::ShiftModifier | Qt::AltModifier, {11, 10}},
                             Step{Qt::Key_Down, Qt::AltModifier, {11, 110}},
                             Step{Qt::Key_Left, Qt::NoModifier, {10, 110}},
                             Step{Qt::Key_Up, Qt::ShiftModifier, {10, 100}},
                             Step{Qt::Key_Home, Qt::ShiftModifier, {200, 150}},
                             Step{Qt::Key_Home, Qt::MetaModifier, {400, 300}},
                             Step{Qt::Key_Right, Qt::NoModifier, {400, 300}},
                             Step{Qt::Key_Home, Qt::NoModifier, {0, 0}}}) {
        QTest::keyClick(dialog.get(), step.key, step.modifiers);
        settle();
        EXPECT_EQ(origin(), step.origin);
        EXPECT_TRUE(isCrop(*table.preview, *picture, step.origin));
    }
    host.takesKeys = true;
    QTest::keyClick(dialog.get(), Qt::Key_Right);
    EXPECT_EQ(window->previewX, 0) << "the global dispatcher comes first";
}

TEST_F(DialogTest, PreviewIsClearedWithItsWindow)
{
    open(120, 120);
    EXPECT_FALSE(child<OpPreview>("oppreview")->shown().isNull());
    close();
    dialog->timetopreview();
    settle();
    EXPECT_TRUE(child<OpPreview>("oppreview")->shown().isNull());
    EXPECT_FALSE(child<QPushButton>("operate")->isEnabled());
    dialog->prod(5, 5);
    QTest::keyClick(dialog.get(), Qt::Key_Home);
}

TEST_F(DialogTest, PreviewDrawsHighBytesOverTheBackground)
{
    const ImagePtr coloured = plainImage(50, 50, 0xFF00, 0x8000, 0, 65535);
    coloured->alpha[0] = 0;
    coloured->alpha[1] = 32768;
    const QRgb dark = qRgb(118, 118, 118), light = qRgb(138, 138, 138);
    OpPreview view;
    ws.checkerOn = true;
    view.setPicture(coloured.get(), true);
    const QImage shown = view.shown();
    EXPECT_TRUE(shown.pixel(0, 0) == dark && shown.pixel(1, 1) == dark) << "one block";
    EXPECT_EQ(shown.pixel(2, 1), qRgb((255 + 118) / 2, (128 + 118) / 2, 58)) << "truncated";
    EXPECT_EQ(shown.pixel(4, 0), qRgb(255, 128, 0));

    const ImagePtr clear = plainImage(100, 100, 65535, 65535, 65535, 0);
    view.setPicture(clear.get(), false);
    EXPECT_EQ(view.shown().pixel(8, 7), light);
    ws.checkerOn = false;
    view.setPicture(clear.get(), false);
    EXPECT_EQ(view.shown().pixel(8, 7), view.palette().color(QPalette::Window).rgb());
}

class Page : public DialogTest
{
protected:
    Page()
    {
        open(120, 110);
        dialog->selectOperator(kCrowd);
    }
    Crowd *crowd = add<Crowd>(kCrowd, "crowd");
    Sampler *sampler = add<Sampler>(kSampler, "sampler");
};

TEST_F(Page, EveryControlReachesItsHandlerAndHasAName)
{
    struct {
        const char *pool;
        int size;
        Qt::Key key;
        double value;
    } const pools[] = {{"slider", 6, Qt::Key_Right, 1},   {"intspin", 9, Qt::Key_Up, 1},
                       {"dubspin", 9, Qt::Key_Up, 0.25},  {"combo", 13, Qt::Key_Down, 1},
                       {"checkbox", 9, Qt::Key_Space, 1}, {"button", 8, Qt::Key_Space, 0},
                       {"lineeditor", 2, Qt::Key_7, 7},   {"editor", 1, Qt::Key_8, 8}};
    for (const auto &pool : pools)
        for (int i = 0; i < pool.size; ++i) {
            QTest::keyClick(child<QWidget>(pool.pool + QString::number(i)), pool.key);
            EXPECT_EQ(crowd->last, QString("%1 %2 %3").arg(pool.pool).arg(i).arg(pool.value));
        }
    EXPECT_EQ(crowd->added.count(-1), 14 * 8 - 57) << "refused when a pool is full";
    QStringList shown; // by the picker when it comes up
    const auto picks = [&](QWidget *modal) {
        auto *picker = qobject_cast<QColorDialog *>(modal);
        shown << picker->currentColor().name();
        picker->setCurrentColor(QColor(1, 2, 3));
        shown.size() == 1 ? picker->accept() : picker->reject();
    };
    whileAnswering(picks, [this] { QTest::mouseClick(child<ColorWell>("well0"), Qt::LeftButton); });
    EXPECT_EQ(crowd->last, QString("colorwell 0 %1").arg(double(0x010203)));
    crowd->last.clear();
    whileAnswering(picks, [this] { QTest::keyClick(child<ColorWell>("well1"), Qt::Key_Space); });
    EXPECT_EQ(crowd->last, QString()) << "given up";
    EXPECT_EQ(shown, (QStringList{"#12569a", "#ff0000"}));
    for (const QWidget *w : child<QWidget>("operatorPage")
                                ->findChildren<QWidget *>(QString(), Qt::FindDirectChildrenOnly))
        EXPECT_TRUE(!w->accessibleName().isEmpty() || w->focusPolicy() == Qt::NoFocus)
            << w->objectName().toStdString();
    EXPECT_EQ(child<QSpinBox>("intspin3")->accessibleName(), QLatin1String("I3"));
}

TEST_F(Page, OnlyThePersonIsHeardAndOnlyOnTheShownPage)
{
    OpPage *page = table.page;
    page->setSlider(2, 5);
    page->setIntSpin(1, 42);
    page->setDoubleSpin(0, 1.5);
    page->setCombo(12, 1);
    page->setCombo(99, 1); // not on this page
    page->setCheck(8, true);
    page->setLine(1, "text");
    EXPECT_EQ(child<QLabel>("value2")->text(), QLatin1String("5%"));
    EXPECT_EQ(child<QSpinBox>("intspin1")->value(), 42);
    EXPECT_EQ(child<QComboBox>("combo12")->currentData().toInt(), 6);
    EXPECT_TRUE(child<QCheckBox>("checkbox8")->isChecked());
    auto *slider = child<QSlider>("slider0");
    dialog->selectOperator(kNegative);
    slider->setValue(3);
    EXPECT_TRUE(crowd->last.isEmpty());
}

TEST_F(Page, DeclaredControlsFollowTheFields)
{
    dialog->selectOperator(kSampler);
    auto *whole = child<QSpinBox>("intspin0");
    auto *real = child<QDoubleSpinBox>("dubspin0");
    auto *hidden = child<QSlider>("slider0");
    auto *on = child<QCheckBox>("checkbox0");
    EXPECT_TRUE(whole->value() == 5 && real->value() == 0.5 && real->singleStep() == 0.1);
    whole->setValue(12);
    real->setValue(2.5);
    hidden->setValue(4);
    on->click();
    EXPECT_EQ(sampler->intspin(0, 21), 1); // out of range
    EXPECT_EQ(sampler->intspin(1, 3), 0);  // no such control
    EXPECT_EQ(sampler->dubspin(0, qQNaN()), 1);
    EXPECT_EQ(sampler->line(), QLatin1String("sampler 12 2.5 1\n"));
    EXPECT_EQ(sampler->hidden, 4);
    sampler->reset();
    EXPECT_EQ(sampler->line(), QLatin1String("sampler 5 0.5 0\n"));
    EXPECT_TRUE(whole->value() == 5 && real->value() == 0.5);
    EXPECT_TRUE(hidden->value() == 0 && !on->isChecked());

    dialog->selectOperator(kExposure);
    child<QSlider>("slider0")->setValue(40);
    sampler->reset(); // the page shows another operator
    EXPECT_EQ(child<QSlider>("slider0")->value(), 40);
}

TEST_F(Page, DeclaredLinesReadBackAsWritten)
{
    QString usage;
    for (double value : {0.1, -3.75, 1000000.0, 1e-7, 123456.789012345}) {
        sampler->real = value;
        sampler->on = true;
        const QStringList words = sampler->line().trimmed().split(' ');
        sampler->real = 0;
        ASSERT_TRUE(sampler->readArguments(3, words.mid(1), &usage)) << value;
        EXPECT_EQ(sampler->real, value);
    }
    EXPECT_EQ(usage, QLatin1String("sampler [a] [b] [c]"));
    EXPECT_FALSE(sampler->readArguments(3, {"1", "99999", "2"}, &usage)); // a check is 0 or 1
    EXPECT_TRUE(sampler->on);
}

namespace
{
/// Counts its runs and remembers what it saw.
class Watcher : public OpWrapper
{
public:
    using OpWrapper::OpWrapper;
    void build(OpPage *page) override { page->addSlider("S", 0, 99, 0, false); }
    int slider(int, int v) override { return value = v, 1; }
    void apply(image *target, image *) override
    {
        ++runs;
        seen = value;
        sample = target->red[0];
        dice = random15();
    }
    int value = 0, runs = 0, seen = -1, sample = -1, dice = -1;
};
} // namespace

TEST_F(DialogTest, ADragCostsOneRefreshOfItsLastState)
{
    auto *op = add<Watcher>(kWatcher, "watcher");
    open(300, 200);
    showType(0);
    dialog->selectOperator(kWatcher);
    settle();
    auto *slider = child<QSlider>("slider0");
    op->runs = 0;
    for (int i = 1; i <= 50; ++i)
        slider->setValue(i);
    EXPECT_EQ(op->runs, 0);
    settle();
    EXPECT_TRUE(op->runs == 1 && op->seen == 50);

    picture->fill(1234, 0, 0, 65535);
    dialog->timetopreview();
    slider->setValue(60); // must not make the stale thumbnail serve again
    settle();
    EXPECT_TRUE(op->runs == 2 && op->seen == 60);
    EXPECT_EQ(table.previewThumb->red[50 * 100 + 50], 1234);
    const int dice = op->dice;
    seedRandom15(77);
    const int next = random15();
    seedRandom15(77);
    slider->setValue(70);
    settle();
    EXPECT_EQ(op->dice, dice) << "each preview sees the same numbers";
    EXPECT_EQ(random15(), next) << "and takes none from the work";

    picture->inUse = true; // an operator lets events through
    slider->setValue(80);
    QTest::qWait(120);
    EXPECT_EQ(op->runs, 3);
    picture->inUse = false;
    settle();
    EXPECT_TRUE(op->runs == 4 && op->seen == 80);
}

TEST_F(DialogTest, LinesGoToTheScriptUntilItIsCleared)
{
    open(120, 110);
    auto *script = static_cast<Script *>(table.byId(kScript));
    auto *add = child<QPushButton>("buildscript"), *clear = child<QPushButton>("reset_2");
    dialog->selectOperator(kScript);
    EXPECT_FALSE(add->isEnabled() || clear->isEnabled());
    dialog->selectOperator(kExposure);
    child<QSlider>("slider0")->setValue(12);
    script->text = QStringLiteral("# by hand");
    QSignalSpy edited(dialog.get(), &Operators::scriptEdited);
    QTest::mouseClick(add, Qt::LeftButton);
    EXPECT_EQ(script->text, QLatin1String("# by hand\nexposure 12 0\n"));
    EXPECT_EQ(table.currentOp, kExposure);
    ws.showBuiltScript = true;
    QTest::mouseClick(add, Qt::LeftButton);
    EXPECT_EQ(table.currentOp, kScript);
    EXPECT_EQ(child<QPlainTextEdit>("ceditor0")->toPlainText(), script->text);
    EXPECT_EQ(script->text.count("exposure"), 2);

    ws.answer = 0;
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(ws.questions.size(), 1);
    EXPECT_FALSE(script->text.isEmpty());
    ws.confirmClearScript = false;
    QTest::mouseClick(clear, Qt::LeftButton);
    EXPECT_EQ(ws.questions.size(), 1);
    EXPECT_TRUE(script->text.isEmpty());
    EXPECT_EQ(child<QPlainTextEdit>("ceditor0")->toPlainText(), QString());
    EXPECT_FALSE(clear->isEnabled());
    EXPECT_EQ(edited.count(), 3);
}

TEST_F(DialogTest, FavoritesAreMenuEntriesByName)
{
    QTemporaryDir folder;
    QSettings store(folder.filePath("s.ini"), QSettings::IniFormat);
    table.store = &store;
    store.setValue("opfav02", "Negative");
    store.setValue("opfav15", "Not There");
    store.setValue("opfavx", "nonsense");
    QAction exposureAction("E&xposure\tE"), negativeAction("Negative");
    negativeAction.setEnabled(false);
    QSignalSpy exposed(&exposureAction, &QAction::triggered);
    auto panel = std::make_unique<OpFavorites>(&table, QList{&exposureAction, &negativeAction});
    panel->show();
    EXPECT_TRUE(ws.favoritesShown);
    EXPECT_EQ(panel->favorite(2), QLatin1String("Negative"));
    EXPECT_TRUE(panel->favorite(0).isEmpty() && panel->favorite(16).isEmpty());
    panel->setFavorite(16, "Exposure"); // is no slot

    table.currentOp = kExposure;
    QString offered; // by the menu of a slot, before one of its keys is pressed
    const auto menuOf = [&](int number, Qt::Key key) {
        QTimer::singleShot(20, panel.get(), [&offered, key] {
            auto *menu = qobject_cast<QMenu *>(QApplication::activePopupWidget());
            ASSERT_NE(menu, nullptr);
            offered = menu->actions().constFirst()->text();
            QTest::keyClick(menu, key);
            menu->close();
        });
        auto *slot = panel->findChild<QPushButton *>(QStringLiteral("favorite%1").arg(number));
        emit slot->customContextMenuRequested(QPoint(3, 3));
        return slot;
    };
    const QPushButton *first = menuOf(1, Qt::Key_P);
    EXPECT_EQ(offered, QLatin1String("&Put \"Exposure\" Here"));
    EXPECT_EQ(first->text(), QLatin1String("Exposure"));
    QTest::mouseClick(panel->findChild<QPushButton *>("favorite1"), Qt::LeftButton);
    EXPECT_EQ(exposed.count(), 1);
    EXPECT_EQ(menuOf(15, Qt::Key_C)->text(), QLatin1String("(empty)"));
    menuOf(2, Qt::Key_W);
    table.currentOp = kScript; // stands in another menu
    menuOf(3, Qt::Key_P);
    EXPECT_TRUE(panel->favorite(3).isEmpty());
    panel->save();
    panel->close();
    EXPECT_FALSE(ws.favoritesShown);
    EXPECT_EQ(store.value("opfav01").toString(), QLatin1String("Exposure"));
    EXPECT_TRUE(store.value("opfav15").toString().isEmpty() && store.value("opwide").toBool());
}

TEST(RangeStrip, RunsThroughItsColoursFromLeftToRight)
{
    cRange strip([](double place) { return uint32_t(std::lround(255 * place)) << 16; }, 300);
    EXPECT_EQ(strip.sizeHint(), QSize(300, 32));
    strip.resize(258, 32);
    const QImage shown = strip.grab().toImage();
    for (int x : {3, 129, 254})
        EXPECT_EQ(shown.pixelColor(x, 16), QColor(x - 1, 0, 0)) << x;
}
