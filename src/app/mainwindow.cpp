// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/mainwindow.h"

#include "app/appsettings.h"
#include "app/assigns.h"
#include "app/downloadmanager.h"
#include "app/layers.h"
#include "app/recovery.h"
#include "app/scriptdesk.h"
#include "core/memory.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/operators.h"
#include "operators/dialog/opfavorites.h"
#include "operators/table/allops.h"
#include "script/run/macrorecorder.h"
#include "ui_mainwindow.h"
#include "views/clipboardacts.h"
#include "views/imgwindow.h"
#include "views/keyfile.h"
#include "views/keytable.h"

#include <QApplication>
#include <QCloseEvent>
#include <QMenuBar>
#include <QProgressDialog>
#include <QScreen>
#include <QSettings>
#include <QSysInfo>
#include <QVersionNumber>

#include <algorithm>

namespace
{
constexpr size_t kPolyPoints = 256032;
constexpr int kTimerOneMs = 50;
constexpr int kTimerTwoMs = 5;
constexpr int kGuessedTitleBar = 32; ///< until the window manager has placed a window
} // namespace

/// Resources of a static library are linked only if they are asked for, and the macro
/// has to stand outside of any namespace.
static void initResources()
{
    Q_INIT_RESOURCE(kestrane);
}

/// A fixed-width face, even where there is none of that name.
static QFont fixedFont(int pointSize)
{
    QFont font(QStringLiteral("Courier"), pointSize);
    font.setStyleHint(QFont::Monospace);
    return font;
}

MainWindow::MainWindow()
{
    initResources();
    allocateTables();
    platform =
        QStringList{QSysInfo::productType(), QSysInfo::productVersion(), QSysInfo::kernelVersion()}
            .join(QLatin1Char(' '));

    ui = std::make_unique<Ui::MainWindow>();
    ui->setupUi(this);
    statusBar()->setFont(fixedFont(12));
    statusBar()->setSizeGripEnabled(false);
    resize(std::max(width(), menuBar()->sizeHint().width()), height()); // every menu in sight

    blendState = std::make_unique<colorblending>();
    table = std::make_unique<OperatorTable>();
    table->prefix = QStringLiteral("operator");
    table->blending = blendState.get();
    addAllOperators(table.get());
    createScripts();

    store = std::make_unique<QSettings>(QStringLiteral("Zolvine"), QStringLiteral("Kestrane"));
    table->store = store.get();
    nameFileBags();
    for (FileBag *bag : fileBags())
        bag->load(*store);
    loadSettings();
    buildMenus();

    setWindowTitle(QStringLiteral("Kestrane"));
    QCoreApplication::setOrganizationName(QStringLiteral("Zolvine"));
    QCoreApplication::setOrganizationDomain(QStringLiteral("zolvine.invalid"));
    QCoreApplication::setApplicationName(QStringLiteral("Kestrane"));

    restorePosition();
    createOperators();
    createRecorder();

    for (QLabel *label : {ui->brushLabel, ui->originLabel, ui->areaLabel, ui->positionLabel})
        label->setFont(fixedFont(10));
    ui->originLabel->setText(QStringLiteral("O: (<i>unset</i>)"));
    showWells();

    statusText(tr("Ready"));
    setAcceptDrops(true);

    connect(&timerOne, &QTimer::timeout, this, &MainWindow::OnTimer);
    timerOne.start(kTimerOneMs);
    connect(&timerTwo, &QTimer::timeout, this, &MainWindow::OnTimerTwo);
    timerTwo.start(kTimerTwoMs);

    recovery = new Recovery(this, this);
    recovery->setBusyDepth(&busy);
    recovery->setMinutes(recoveryMinutes);

    assignBrush(nullptr);
    runStartupSequence(QCoreApplication::applicationDirPath() +
                       QStringLiteral("/~ke-startup-sequence.txt"));
    markRunInProgress();
    startVersionCheck();

    loadKeys();
    customIcons = storedTexts(*store, QStringLiteral("customIcons"));
    applyToolIcons();

    ensureColorSpace();
    updateMenus();
}

MainWindow::~MainWindow()
{
    timerOne.stop();
    timerTwo.stop();
    shuttingDown = true;
    currentWindow = nullptr;
    const QList<imgWindow *> open = windows;
    windows.clear();
    for (imgWindow *window : open)
        delete window;
    delete layersDialog;
    delete recovery;
    recovery = nullptr;
    delete favorites;
    delete operators;
    operators = nullptr;
    scripts.reset();
    while (!images.isEmpty()) {
        image *tree = images.takeFirst();
        destroyTree(&tree);
    }
    table.reset();
    blendState.reset();
    upfree(&inotePolyList);
}

void MainWindow::allocateTables()
{
    ucalloc(&inotePolyList, kPolyPoints, 8, "inote poly list");
}

void MainWindow::loadSettings()
{
    loadWorkspaceSettings(*store, *this);
    recentFiles.load(*store);
    recentFiles.setLimit(recentLimit);
    recentFolders().load(*store);
    assigns().load(*store);
    // A store without the value belongs to a first start, which follows no bad end.
    appWasOkay = store->value(QStringLiteral("appWasOkay"), true).toBool();
    successOnAsk = store->value(QStringLiteral("successOnAsk"), false).toBool();
    serialNumber = storedText(*store, QStringLiteral("serialNumber"));
    versionHost = storedText(*store, QStringLiteral("versionHost"));
    table->settings(false);
    scripts->load(*store);
}

void MainWindow::saveSettings()
{
    saveWorkspaceSettings(*store, *this);
    store->setValue(QStringLiteral("appWasOkay"), appWasOkay);
    store->setValue(QStringLiteral("successOnAsk"), successOnAsk);
    store->setValue(QStringLiteral("windowPosition"), geometry().topLeft());
    store->setValue(QStringLiteral("serialNumber"), serialNumber);
    store->setValue(QStringLiteral("versionHost"), versionHost);
    store->setValue(QStringLiteral("customIcons"), customIcons);
    store->setValue(QStringLiteral("keyBindings"), QString::fromUtf8(keysToText(keyTable())));
    for (const FileBag *bag : fileBags())
        bag->save(*store);
    recentFiles.save(*store);
    recentFolders().save(*store);
    assigns().save(*store);
    table->settings(true);
    scripts->save(*store);
    operators->settings(true);
    favorites->save();
    store->sync();
}

void MainWindow::createOperators()
{
    operators = new Operators(table.get(), this);
    connectScripts();
    connectOperators();
    placeOperators();
    operators->settings(false);
    operators->show();
    // The operator of the last run, or the first one.
    const OpWrapper *last = table->byId(mainOpIndex);
    operators->selectOperator(last && last->self ? mainOpIndex : operators->firstOperator());
}

void MainWindow::markRunInProgress()
{
    // Only the store tells of the run that goes on; the member keeps how the last ended.
    successOnAsk = false;
    store->setValue(QStringLiteral("successOnAsk"), false);
    store->setValue(QStringLiteral("appWasOkay"), false);
    store->sync();
}

void MainWindow::startVersionCheck()
{
    downloadManager = new DownloadManager(this);
    downloadManager->host = versionHost;
    downloadManager->pathAndQuery = DownloadManager::query(
        KESTRANE_VERSION_MAJOR, KESTRANE_VERSION_MINOR, serialNumber, KeyTable::kVersion);
    connect(downloadManager, &DownloadManager::answered, this, [this]() {
        const QVersionNumber newest = QVersionNumber::fromString(downloadManager->versionText);
        if (newest > QVersionNumber(KESTRANE_VERSION_MAJOR, KESTRANE_VERSION_MINOR))
            statusText(tr("Kestrane %1 is available").arg(downloadManager->versionText));
    });
    QTimer::singleShot(0, downloadManager, SLOT(execute()));
}

void MainWindow::restorePosition()
{
    const QRect desk = QGuiApplication::primaryScreen()->availableGeometry();
    // Large enough for all that is still to come: a window that its layout enlarges between
    // its making and its showing is placed without regard to its frame.
    resize(size().expandedTo(minimumSizeHint() + QSize(0, fontMetrics().height())));
    move(desk.topLeft() + QPoint(12, 12));
    const QVariant saved = store->value(QStringLiteral("windowPosition"));
    if (!rememberPosition || saved.type() != QVariant::Point)
        return;
    // The place of the content, not of the frame: a window manager that gives its frame
    // another size than it announces would move the window a little at each start.
    // A screen may be gone: a corner to drag or click has to stay within reach.
    const QPoint grip = saved.toPoint() + QPoint(60, 10);
    const auto screens = QGuiApplication::screens();
    if (std::any_of(screens.begin(), screens.end(), [grip](const QScreen *screen) {
            return screen->availableGeometry().contains(grip);
        }))
        setGeometry(QRect(saved.toPoint(), size()));
}

void MainWindow::placeOperators()
{
    operators->adjustSize();
    const QRect desk = QGuiApplication::primaryScreen()->availableGeometry();
    const int below = y() + height() + kGuessedTitleBar + 8;
    if (below + kGuessedTitleBar + operators->height() <= desk.bottom())
        operators->move(x(), below);
    else
        operators->move(x() + width() + 12, y());
}

bool MainWindow::mayQuit()
{
    const auto changed = [](const image *img) { return img->hasUnsavedChanges(); };
    if (std::none_of(images.begin(), images.end(), changed))
        return true;
    const int answer =
        question(tr("Important"),
                 tr("Some images have unsaved changes. If you quit now, those changes will be "
                    "lost.<br><br><i>Are you sure you want to do that?</i>"),
                 {tr("Cancel and don't lose changes"), tr("Proceed and lose any changes")}, 1, 0);
    return answer == 1;
}

void MainWindow::closeEvent(QCloseEvent *event)
{
    if (shuttingDown) {
        event->accept();
        return;
    }
    // Work that is going on still holds the images.
    if (busy > 0 || !mayQuit()) {
        event->ignore();
        return;
    }
    shuttingDown = true;
    timerOne.stop();
    timerTwo.stop();
    appWasOkay = true;
    closeHelpers();
    saveSettings();
    recovery->endInOrder();
    releaseClipboard();
    operators->close();
    const QList<imgWindow *> open = windows;
    for (imgWindow *window : open)
        window->close();
    event->accept();
}
