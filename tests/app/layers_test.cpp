// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/layeranimation.h"
#include "app/layerlist.h"
#include "app/layers.h"
#include "apphelpers.h"
#include "core/layermodes.h"
#include "layers/stack.h"
#include "support/debuglog.h"

#include "app/filepicker.h"
#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDoubleSpinBox>
#include <QImageReader>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QToolButton>

namespace
{
/// Goes on in every modal dialog with a button box, after `prepare` has filled it.
class DialogAccepter
{
public:
    explicit DialogAccepter(std::function<void(QDialog *)> prepare = {})
    {
        QObject::connect(&poller, &QTimer::timeout, [this, prepare]() {
            auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            auto *buttons = dialog ? dialog->findChild<QDialogButtonBox *>("buttonBox") : nullptr;
            if (!buttons)
                return;
            if (prepare)
                prepare(dialog);
            ++accepted;
            buttons->button(QDialogButtonBox::Ok)->click();
        });
        poller.start(10);
    }
    int accepted = 0;

private:
    QTimer poller;
};
} // namespace

/// A master with the layers "one.png" below and "two.png" on top, and its dialog open.
class LayersTest : public AppTest
{
protected:
    void SetUp() override
    {
        AppTest::SetUp();
        one = main->loadFile(picture("one.png"));
        two = main->loadFile(picture("two.png", QSize(20, 10), 0xFF2040C0U));
        master = makeLayered(one);
        ASSERT_NE(master, nullptr);
        main->openView(master);
        action("actionLayers")->trigger();
        dialog = main->layersDialog;
        ASSERT_NE(dialog, nullptr);
        ASSERT_TRUE(dialog->addLayer(master, two));
        settle();
    }
    /// As after a paint and a save.
    void settle()
    {
        master->needsRebuild = master->changed = false;
        one->changed = two->changed = false;
    }
    /// Whether something marked the stack since the last call.
    bool marked()
    {
        const bool result = master->needsRebuild && master->changed;
        settle();
        return result;
    }
    template <class Widget = QWidget>
    Widget *control(const char *name)
    {
        auto *found = dialog->findChild<Widget *>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    void click(const char *name)
    {
        auto *button = control<QAbstractButton>(name);
        ASSERT_TRUE(button->isEnabled()) << name;
        button->click();
    }
    LayerList *list() { return control<LayerList>("layerList"); }
    QPoint rowCentre(int row) { return list()->visualItemRect(list()->item(row)).center(); }
    void dragRow(int from, QPoint to)
    {
        QWidget *area = list()->viewport();
        const QPoint start = rowCentre(from);
        QTest::mousePress(area, Qt::LeftButton, {}, start);
        for (const QPoint &at : {(start + to) / 2, to}) {
            QMouseEvent move(QEvent::MouseMove, at, Qt::NoButton, Qt::LeftButton, {});
            QApplication::sendEvent(area, &move);
        }
        QTest::mouseRelease(area, Qt::LeftButton, {}, to);
    }
    void setMode(int id)
    {
        auto *combo = control<QComboBox>("layerMode");
        combo->setCurrentIndex(combo->findData(id));
    }

    image *one = nullptr, *two = nullptr, *master = nullptr;
    Layers *dialog = nullptr;
};

TEST_F(LayersTest, ControlsWriteTheFieldOfTheSelectedLayer)
{
    EXPECT_EQ(dialog->selected(), two) << "what was added is selected";
    EXPECT_EQ(list()->item(0)->text(), "two.png") << "the top layer stands first";
    const auto number = [this](const char *name, double value) {
        auto *spin = control<QAbstractSpinBox>(name);
        ASSERT_TRUE(spin->isEnabled()) << name;
        spin->setFocus();
        spin->selectAll();
        QTest::keyClicks(spin, QString::number(value));
    };
    number("opacity", 40);
    EXPECT_DOUBLE_EQ(two->opacity, 0.4);
    EXPECT_TRUE(marked());
    EXPECT_EQ(control<QSlider>("opacitySlider")->value(), 400);
    control<QSlider>("opacitySlider")->setValue(255);
    EXPECT_DOUBLE_EQ(two->opacity, 0.255);
    EXPECT_TRUE(marked());
    number("xOffset", 7);
    EXPECT_EQ(two->xOffset, 7);
    EXPECT_TRUE(marked());
    const std::pair<const char *, bool image::*> flags[] = {{"visible", &image::visible},
                                                            {"localstack", &image::localStack},
                                                            {"lockstep", &image::lockStep},
                                                            {"globalmask", &image::globalMask}};
    for (const auto &[name, field] : flags) {
        const bool before = two->*field;
        click(name);
        EXPECT_EQ(two->*field, !before) << name;
        EXPECT_TRUE(marked()) << name;
    }
    setMode(50);
    EXPECT_EQ(two->layerMode, 50);
    EXPECT_TRUE(marked());
    number("factor", -250);
    EXPECT_DOUBLE_EQ(two->factor, -2.5);
    EXPECT_TRUE(marked());

    QTest::mouseClick(list()->viewport(), Qt::LeftButton, {}, list()->eyeRect(1).center());
    EXPECT_FALSE(one->visible) << "the eye of a row that is not selected";
    EXPECT_TRUE(marked());
    EXPECT_EQ(dialog->selected(), two);
}

TEST_F(LayersTest, NothingIsWrittenWhileTheDialogIsFilled)
{
    one->opacity = 1.0 / 3;
    one->layerMode = 5;
    one->xOffset = 100000; // more than the field can show
    one->factor = 12345;
    settle();
    for (image *layer : {one, two, one})
        dialog->selectLayer(layer);
    click("byName");
    click("byName");
    dialog->drawPictures();
    EXPECT_FALSE(master->needsRebuild || master->changed || one->changed || two->changed);
    EXPECT_EQ(one->opacity, 1.0 / 3);
    EXPECT_EQ(one->xOffset, 100000);
    EXPECT_EQ(one->factor, 12345);
    EXPECT_EQ(control<QComboBox>("layerMode")->currentText(), "Multiply");
    EXPECT_FALSE(dialog->isFilling());
}

TEST_F(LayersTest, WhatIsEnabledFollowsTheMode)
{
    struct Case {
        int mode;
        bool effects, warp, globalMask, modes, factor, offset, rotation;
    };
    const Case cases[] = {{0, true, false, true, true, false, true, false},
                          {6, false, true, false, false, false, true, false},
                          {3, false, false, true, true, false, true, true},
                          {7, false, false, true, true, true, true, false},
                          {25, false, false, true, true, true, true, false},
                          {55, false, false, true, true, false, false, false}};
    for (const Case &c : cases) {
        two->layerMode = c.mode;
        dialog->selectLayer(two);
        for (const char *name : {"shadowEffect", "glowEffect", "embossEffect", "punchEffect"})
            EXPECT_EQ(control(name)->isEnabled(), c.effects) << name << c.mode;
        for (const char *name : {"resetWarp", "scaleWarp", "rotateWarp"})
            EXPECT_EQ(control(name)->isEnabled(), c.warp) << name << c.mode;
        EXPECT_EQ(control("globalmask")->isEnabled(), c.globalMask) << c.mode;
        EXPECT_EQ(control("layerMode")->isEnabled(), c.modes) << c.mode;
        EXPECT_EQ(control("factor")->isEnabled(), c.factor) << c.mode;
        EXPECT_EQ(control("xOffset")->isEnabled(), c.offset) << c.mode;
        EXPECT_EQ(control("rotation")->isEnabled(), c.rotation) << c.mode;
    }
    EXPECT_FALSE(control("higher")->isEnabled()) << "it is on top";
    EXPECT_TRUE(control("lower")->isEnabled());
    two->layerMode = 6;
    dialog->selectLayer(two);
    setMode(5);
    EXPECT_EQ(two->layerMode, 6) << "a warp layer keeps its mode";
    EXPECT_EQ(control<QComboBox>("layerMode")->currentText(), "Warp");

    dialog->selectLayer(one);
    BoxAnswerer cancel("Layer Mode", "Cancel");
    setMode(6);
    EXPECT_EQ(cancel.answers, 1);
    EXPECT_EQ(one->layerMode, 0);
    EXPECT_EQ(control<QComboBox>("layerMode")->currentText(), "Normal");
}

TEST_F(LayersTest, ModesStandInTableOrderOrByName)
{
    auto *combo = control<QComboBox>("layerMode");
    ASSERT_EQ(combo->count(), 62);
    const auto &table = layerModeTable();
    for (int i = 0; i < combo->count(); ++i)
        EXPECT_EQ(combo->itemData(i).toInt(), table[size_t(i)].id);
    click("byName");
    ASSERT_EQ(combo->count(), 62);
    for (int i = 1; i < combo->count(); ++i)
        EXPECT_LE(combo->itemText(i - 1).compare(combo->itemText(i), Qt::CaseInsensitive), 0);
    setMode(54);
    EXPECT_EQ(two->layerMode, 54) << "the id counts, not the place";
}

TEST_F(LayersTest, OrderByMouseKeysAndButtons)
{
    const QList<image *> start = {one, two}, turned = {two, one};
    dialog->show();
    dragRow(1, rowCentre(0) - QPoint(0, 12));
    EXPECT_EQ(master->layers, turned);
    EXPECT_TRUE(marked());
    EXPECT_EQ(list()->item(0)->text(), "one.png");
    EXPECT_EQ(dialog->selected(), one) << "what was dragged stays selected";
    dragRow(0, rowCentre(1) - QPoint(0, 8)); // above the middle of the next row
    EXPECT_EQ(master->layers, turned);
    QTest::keyClick(list(), Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(master->layers, start);
    QTest::keyClick(list(), Qt::Key_Down, Qt::ControlModifier);
    EXPECT_EQ(master->layers, start) << "there is nothing below";
    click("higher");
    EXPECT_EQ(master->layers, turned);
    click("lower");
    EXPECT_EQ(master->layers, start);
    EXPECT_EQ(dialog->getLayerIndex(two), 1);
    EXPECT_EQ(dialog->getLayerIndex(master), -1);
}

TEST_F(LayersTest, TargetIsShownToTheLetter)
{
    const QString none = "Target: <font color=\"#FF0000\"><i>None</i></font>";
    auto *line = control<QLabel>("targetLabel");
    EXPECT_EQ(line->text(), none);
    EXPECT_FALSE(control("clearTarget")->isEnabled());
    two->name = "a<b";
    click("assignTarget");
    EXPECT_EQ(master->target, two);
    EXPECT_EQ(line->text(), "Target: <font color=\"#008800\"><b>a&lt;b</b></font>");
    EXPECT_FALSE(control("assignTarget")->isEnabled());
    click("clearTarget");
    EXPECT_EQ(master->target, nullptr);
    click("assignTarget");
    click("detach");
    EXPECT_EQ(line->text(), none);
    EXPECT_EQ(two->kind, 0);
    EXPECT_NE(main->findWindow(two), nullptr);
    EXPECT_FALSE(control("detach")->isEnabled()) << "the last layer stays";
}

TEST_F(LayersTest, OperatorsAndUndoOfTheMasterGoToTheTarget)
{
    useOperator(*main, "negative");
    main->showPart(master);
    one->fillGmask(65535);
    const ImagePtr before = copyOf(*one);
    main->on_operate_clicked();
    EXPECT_TRUE(sameColors(*one, *before)) << "no target: told in the status line";
    dialog->selectLayer(one);
    click("assignTarget");
    main->on_operate_clicked();
    EXPECT_EQ(one->red[0], 65535 - before->red[0]);
    EXPECT_TRUE(marked());
    EXPECT_EQ(main->validCurrent()->img, master);
    main->on_actionUndo_triggered();
    EXPECT_TRUE(sameColors(*one, *before));
    EXPECT_TRUE(master->needsRebuild);
}

TEST_F(LayersTest, NewLayersAreSelectedAndStandBesideTheirSource)
{
    click("create");
    image *made = dialog->selected();
    EXPECT_EQ(made->name, "new layer");
    EXPECT_EQ(master->layers, (QList<image *>{one, two, made}));
    EXPECT_NE(main->findWindow(made), nullptr);
    {
        BoxAnswerer keep("Destroy", "Cancel");
        click("destroy");
        EXPECT_EQ(master->layers.size(), 3);
    }
    BoxAnswerer destroy("Destroy", "Destroy");
    click("destroy");
    EXPECT_EQ(destroy.answers, 1);
    EXPECT_EQ(master->layers, (QList<image *>{one, two}));

    dialog->selectLayer(one);
    DialogAccepter accepter([](QDialog *shown) {
        if (auto *radius = shown->findChild<QDoubleSpinBox *>("radius"))
            radius->setValue(3);
    });
    click("shadowEffect");
    EXPECT_EQ(master->layers.indexOf(dialog->selected()), 0) << "a shadow lies below";
    EXPECT_EQ(dialog->selected()->layerMode, int(kMultiplyMode));
    dialog->selectLayer(one);
    click("embossEffect");
    EXPECT_EQ(master->layers.indexOf(dialog->selected()), 2) << "relief lies above";
    click("gentext");
    EXPECT_EQ(dialog->selected()->name, "Text");
    EXPECT_EQ(dialog->selected()->xOffset, (master->width - dialog->selected()->width) / 2);
    EXPECT_EQ(accepter.accepted, 3);
    EXPECT_TRUE(marked());
}

/// An effect that comes between the layers of a local stack must not take it apart.
TEST_F(LayersTest, EffectsJoinTheLocalStackAroundThem)
{
    image *base = createLayer(master), *member = createLayer(master);
    base->xOffset = 7;
    member->localStack = true;
    DialogAccepter accepter([](QDialog *) {});
    dialog->selectLayer(base);
    click("embossEffect");
    const image *relief = dialog->selected();
    EXPECT_TRUE(relief->localStack);
    EXPECT_EQ(relief->xOffset, 0) << "places in the stack count from its base";
    dialog->selectLayer(member);
    click("shadowEffect");
    EXPECT_TRUE(dialog->selected()->localStack);
    dialog->selectLayer(base);
    click("shadowEffect");
    EXPECT_FALSE(dialog->selected()->localStack) << "below the base is outside";
    EXPECT_EQ(accepter.accepted, 3);
}

TEST_F(LayersTest, SplitsShowThePictureAgain)
{
    two->opacity = 0.6;
    two->xOffset = 5;
    for (const bool locked : {false, true}) {
        two->lockStep = locked;
        master->needsRebuild = true;
        const std::unique_ptr<image> before(flattened(master));
        for (const char *name : {"toChans", "rgbToCMY", "rgbToCMYK", "rgbToHSV"}) {
            dialog->selectLayer(two);
            click(name);
            EXPECT_FALSE(two->visible) << name;
            EXPECT_GE(master->layers.size(), 5) << name;
            const std::unique_ptr<image> after(flattened(master));
            for (int64_t i = 0; i < after->sampleCount(); i += 7)
                for (int c = 0; c < 3; ++c)
                    ASSERT_NEAR(after->colorPlanes()[c][i], before->colorPlanes()[c][i], 40)
                        << name << locked;
            while (master->layers.size() > 2)
                destroyLayer(master->layers.constLast());
            two->visible = true;
        }
    }
}

TEST_F(LayersTest, DebugFlagNamesTheCalls)
{
    takeDebugLines();
    dialog->selectLayer(one);
    EXPECT_TRUE(takeDebugLines().isEmpty());
    dialog->debugFlag = true;
    dialog->addLayer(master, nullptr);
    dialog->on_higher_clicked();
    const QStringList lines = takeDebugLines();
    EXPECT_EQ(lines.value(0), "addLayer(master,layer)");
    for (const char *expected :
         {"on_higher_clicked", "getLayerIndex(lay)", "selectLayer(lay)", "setLayerList()",
          "setLayerMode(layer)", "setWorkingLayerModes()", "enabledWidgets()"})
        EXPECT_TRUE(lines.contains(QLatin1String(expected))) << expected;
}

TEST_F(LayersTest, DialogLeavesAMasterThatGoes)
{
    image *third = main->loadFile(picture("third.png"));
    ASSERT_FALSE(dialog->setMaster(third)) << "not a master";
    ASSERT_TRUE(dialog->makeMaster(third));
    EXPECT_EQ(dialog->master(), third);
    EXPECT_EQ(dialog->selected(), nullptr);
    EXPECT_FALSE(control("clone")->isEnabled());
    const auto takeDown = [this](image *doomed) {
        main->pendingDiscardImage = doomed;
        main->pendingDiscard = true;
        for (int i = 0; i < 20; ++i)
            main->OnTimer();
    };
    takeDown(third);
    EXPECT_EQ(main->layersDialog, dialog) << "another master is left";
    EXPECT_EQ(dialog->master(), master);
    takeDown(two); // a layer's last view takes its stack along
    EXPECT_EQ(main->layersDialog, nullptr);
    EXPECT_TRUE(main->images.isEmpty());
    action("actionLayers")->trigger(); // with nothing to show
    ASSERT_NE(main->layersDialog, nullptr);
    EXPECT_EQ(main->layersDialog->master(), nullptr);
    main->layersDialog->on_opacity_valueChanged(50);
    main->layersDialog->on_create_clicked();
    main->layersDialog->on_higher_clicked();
    main->layersDialog->drawPictures();
}

TEST_F(LayersTest, AnimationShowsEachVisibleLayerAlone)
{
    image *hidden = cloneLayer(two);
    hidden->visible = false;
    two->layerMode = kMultiplyMode; // which would be black with nothing below
    two->localStack = true;
    const QString path = folder.filePath("frames.gif");
    QString error;
    ASSERT_TRUE(writeLayerAnimation(master, GifAnimation(), path, &error)) << error.toStdString();
    QImageReader reader(path);
    EXPECT_EQ(reader.imageCount(), 2);
    EXPECT_EQ(reader.read().pixel(0, 0), 0xFF804020U);
    const QImage second = reader.read();
    EXPECT_EQ(second.pixel(0, 0), 0xFF2040C0U);
    EXPECT_EQ(second.size(), QSize(40, 30)) << "frames are of the master's size";
    EXPECT_TRUE(two->visible && two->localStack && !hidden->visible && one->visible);
    EXPECT_EQ(two->layerMode, int(kMultiplyMode));
    EXPECT_TRUE(master->needsRebuild);
}

TEST_F(LayersTest, FlattenedCopyIsComposedAndLeavesTheStackUnsaved)
{
    two->visible = false;
    master->needsRebuild = master->changed = true; // not painted since
    main->showPart(two);                           // the copy is of the stack all the same
    int sightings = 0;
    QTimer poller;
    QObject::connect(&poller, &QTimer::timeout, [&sightings]() {
        auto *files = qobject_cast<filePicker *>(QApplication::activeModalWidget());
        // Its first events complete the name by themselves and would undo what is typed.
        if (!files || ++sightings != 3)
            return;
        auto *edit = files->findChild<QLineEdit *>("nameLine");
        edit->selectAll();
        QTest::keyClicks(edit, "flat.png");
        QTest::keyClick(edit, Qt::Key_Return);
    });
    poller.start(10);
    action("actionSave_Flattened")->trigger();
    EXPECT_EQ(QImage(folder.filePath("flat.png")).pixel(5, 5), 0xFF804020U);
    EXPECT_TRUE(master->hasUnsavedChanges());
    EXPECT_EQ(MainWindow::fileNameFor(master->name), "one");
}

TEST_F(LayersTest, SavedStackOpensWithAWindowForEachLayer)
{
    two->opacity = 0.25;
    master->fullPath = folder.filePath("stack.elx");
    click("saveAll"); // it has a file of its form: no dialog
    EXPECT_TRUE(QFile::exists(master->fullPath));
    EXPECT_FALSE(master->hasUnsavedChanges());

    image *again = main->loadFile(master->fullPath);
    ASSERT_NE(again, nullptr);
    ASSERT_EQ(again->layers.size(), 2);
    EXPECT_EQ(again->layers.at(1)->opacity, 0.25);
    EXPECT_TRUE(main->images.contains(again));
    for (image *layer : qAsConst(again->layers)) {
        EXPECT_FALSE(main->images.contains(layer));
        EXPECT_NE(main->findWindow(layer), nullptr);
        EXPECT_EQ(layer->viewCount, 1);
    }
    EXPECT_EQ(main->validCurrent()->img, again) << "the master is in front";
    EXPECT_EQ(dialog->master(), again);
}
