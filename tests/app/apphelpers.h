// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/mainwindow.h"
#include "core/image.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/dialog/operators.h"
#include "support/pictures.h"
#include "views/imgwindow.h"

#include <QAbstractButton>
#include <QAction>
#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QImage>
#include <QLabel>
#include <QMessageBox>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

/// Presses one button of every modal box with a title that contains `title`, and counts.
class BoxAnswerer
{
public:
    BoxAnswerer(const QString &title, const QString &button)
    {
        QObject::connect(&poller, &QTimer::timeout, [this, title, button]() {
            auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
            if (!box || !box->windowTitle().contains(title))
                return;
            for (QAbstractButton *candidate : box->buttons())
                if (candidate->text().remove(QLatin1Char('&')) == button) {
                    lastText = box->text();
                    ++answers;
                    candidate->click();
                    return;
                }
        });
        poller.start(10);
    }
    int answers = 0;
    QString lastText;

private:
    QTimer poller;
};

/// How long the button that clears a line fades in: Qt frees the animation only if the event
/// loop sees it end.
constexpr int kFadeMs = 250;

/// A free-standing copy to compare with.
inline ImagePtr copyOf(const image &img)
{
    auto copy = std::make_unique<image>();
    EXPECT_TRUE(copy->allocate(img.width, img.height, QStringLiteral("copy")));
    copy->copyWorkPlanes(img);
    return copy;
}

inline void useOperator(MainWindow &main, const char *scriptName)
{
    const OpWrapper *op = main.operatorTable()->byScriptName(QString::fromLatin1(scriptName));
    ASSERT_NE(op, nullptr);
    main.operatorDialog()->selectOperator(op->id);
}

/// A main window with pictures of its own to open.
class AppTest : public testing::Test
{
protected:
    void SetUp() override { main = std::make_unique<MainWindow>(); }

    /// Writes a PNG of one colour and returns its path.
    QString picture(const QString &name, QSize size = QSize(40, 30), QRgb colour = 0xFF804020U)
    {
        QImage img(size, QImage::Format_ARGB32);
        img.fill(colour);
        const QString path = folder.filePath(name);
        EXPECT_TRUE(img.save(path));
        return path;
    }
    QAction *action(const char *name)
    {
        auto *found = main->findChild<QAction *>(QString::fromLatin1(name));
        EXPECT_NE(found, nullptr) << name;
        return found;
    }
    /// The enabled state as the timer leaves it.
    bool enabled(const char *name)
    {
        main->OnTimer();
        return action(name)->isEnabled();
    }
    QString label(const char *name) { return main->findChild<QLabel *>(name)->text(); }

    QTemporaryDir folder;
    std::unique_ptr<MainWindow> main;
};
