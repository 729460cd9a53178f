// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/scriptdebug.h"

#include "app/filebag.h"
#include "app/filepicker.h"
#include "core/workspace.h"
#include "formats/writers.h"

#include "ui_scriptdebug.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QRegularExpression>
#include <QSaveFile>
#include <QScreen>
#include <QScrollBar>
#include <QShowEvent>
#include <QUrl>

namespace
{
constexpr int kFlushMs = 60;
constexpr int kGap = 16;          ///< to the corner of the desktop, and for the frame
constexpr int kMostWaiting = 400; ///< messages of one flush; a loop can make any number
constexpr int kMostBlocks = 10000;
constexpr int kWidthInLetters = 84, kHeightInLines = 20;
constexpr char kScriptLink[] = "script", kPresetsLink[] = "presets";

/// Of remarks: quiet, and still read with ease.
QString greyOf(const QPalette &palette)
{
    const QColor text = palette.color(QPalette::Text), base = palette.color(QPalette::Base);
    return QColor((3 * text.red() + 2 * base.red()) / 5, (3 * text.green() + 2 * base.green()) / 5,
                  (3 * text.blue() + 2 * base.blue()) / 5)
        .name();
}

/// The colours of messages are made for a light ground; on a dark one they stand for these.
constexpr struct {
    const char *light, *dark;
} kDarkColours[] = {
    {"#ff0000", "#ff8080"}, {"#cc6600", "#ffb366"}, {"#008800", "#7fdc7f"},
    {"#0000ff", "#8fb4ff"}, {"#000088", "#a9b9ff"}, {"#dddddd", "#444444"},
};
} // namespace

ScriptDebug::ScriptDebug(FileBag *bag, QWidget *parent)
    : QDialog(parent), ui(std::make_unique<Ui::ScriptDebug>()), fileBag(bag)
{
    ui->setupUi(this);
    setWindowFlag(Qt::WindowContextHelpButtonHint, false);
    // A run that goes on keeps the keyboard in the editor, where Escape stops it.
    setAttribute(Qt::WA_ShowWithoutActivating);
    ui->log->document()->setMaximumBlockCount(kMostBlocks);
    ui->log->setOpenLinks(false);
    resize(fontMetrics().averageCharWidth() * kWidthInLetters,
           fontMetrics().lineSpacing() * kHeightInLines);
    flushTimer.setSingleShot(true);
    flushTimer.setInterval(kFlushMs);
    connect(&flushTimer, &QTimer::timeout, this, &ScriptDebug::flush);
}

ScriptDebug::~ScriptDebug() = default;

void ScriptDebug::beginRun(const QString &title)
{
    errors = 0;
    runTitle = title;
    ui->log->ensurePolished(); // a style sheet's ground is not in the palette before
}

QString ScriptDebug::placeLink(const QString &text, bool inPresets, int line) const
{
    const bool dark = ui->log->palette().color(QPalette::Base).lightness() < 128;
    return QStringLiteral("<a href=\"%1:%2\" style=\"color:%4\">%3</a>")
        .arg(QLatin1String(inPresets ? kPresetsLink : kScriptLink))
        .arg(line)
        .arg(text, QLatin1String(dark ? "#8fb4ff" : "#1a4fb0"));
}

void ScriptDebug::append(const ScriptReport &report)
{
    if (report.kind == ScriptReport::Kind::Error)
        ++errors;
    QString html = report.rich;
    if (report.line > 0) {
        static const QRegularExpression step(
            QStringLiteral("^(<b>(?:Script|Preset)</b> step )(\\d+)(: )"));
        const auto match = step.match(html);
        const QString place = report.inPresets ? tr("line %1 of the presets").arg(report.line)
                                               : tr("line %1").arg(report.line);
        if (match.hasMatch())
            html.replace(0, match.capturedLength(),
                         match.captured(1) +
                             placeLink(match.captured(2), report.inPresets, report.line) +
                             match.captured(3));
        html += QStringLiteral("</b></i></font></tt> &nbsp;<small>(%1)</small>")
                    .arg(placeLink(place, report.inPresets, report.line));
    }
    add(html);
}

void ScriptDebug::appendHint(const QString &text, bool inPresets, int line)
{
    const QString grey = greyOf(ui->log->palette());
    QString html = QStringLiteral("<font color=\"%1\">%2</font>").arg(grey, text.toHtmlEscaped());
    if (line > 0)
        html += QStringLiteral(" &nbsp;<small>(%1)</small>")
                    .arg(placeLink(inPresets ? tr("line %1 of the presets").arg(line)
                                             : tr("line %1").arg(line),
                                   inPresets, line));
    add(html);
}

void ScriptDebug::add(const QString &html)
{
    if (!runTitle.isEmpty()) {
        waiting << QStringLiteral("<b><font color=\"%1\">%2</font></b>")
                       .arg(greyOf(ui->log->palette()), runTitle.toHtmlEscaped());
        runTitle.clear();
    }
    if (waiting.size() < kMostWaiting)
        waiting << html;
    else
        ++leftOut;
    if (!flushTimer.isActive())
        flushTimer.start();
}

void ScriptDebug::flush()
{
    flushTimer.stop();
    if (waiting.isEmpty())
        return;
    if (leftOut > 0)
        waiting << QStringLiteral("<i>%1</i>").arg(tr("… and more messages: %1").arg(leftOut));
    for (const QString &html : qAsConst(waiting))
        ui->log->append(shown(html));
    waiting.clear();
    leftOut = 0;
    ui->log->verticalScrollBar()->setValue(ui->log->verticalScrollBar()->maximum());
}

QString ScriptDebug::shown(QString html) const
{
    if (ui->log->palette().color(QPalette::Base).lightness() < 128)
        for (const auto &colour : kDarkColours)
            html.replace(QLatin1String(colour.light), QLatin1String(colour.dark),
                         Qt::CaseInsensitive);
    return html;
}

QString ScriptDebug::plainText() const
{
    return ui->log->toPlainText();
}

void ScriptDebug::showEvent(QShowEvent *event)
{
    if (!placed && !event->spontaneous()) {
        // At the corner where it hides least of the script.
        const QRect desk = QGuiApplication::primaryScreen()->availableGeometry();
        move(desk.right() - width() - kGap, desk.bottom() - height() - kGap);
        placed = true;
    }
    QDialog::showEvent(event);
    ui->log->verticalScrollBar()->setValue(ui->log->verticalScrollBar()->maximum());
}

void ScriptDebug::on_clear_clicked()
{
    waiting.clear();
    leftOut = 0;
    ui->log->clear();
}

void ScriptDebug::on_copy_clicked()
{
    flush();
    QGuiApplication::clipboard()->setText(plainText());
}

void ScriptDebug::on_save_clicked()
{
    flush();
    const QString path = filePicker::pick(this, fileBag, filePicker::PickFor::Save,
                                          tr("Save the Log"), QStringLiteral("script-log.txt"))
                             .value(0);
    if (path.isEmpty())
        return;
    QSaveFile file(path);
    if (file.open(QIODevice::WriteOnly))
        file.write(plainText().toUtf8() + '\n');
    if (!commitWhole(file))
        workspace()->messageBox(
            tr("Save the Log"),
            tr("The log could not be saved: %1").arg(file.errorString()).toHtmlEscaped());
}

void ScriptDebug::on_log_anchorClicked(const QUrl &link)
{
    const QString place = link.toString();
    const int line = place.section(QLatin1Char(':'), 1).toInt();
    const QString where = place.section(QLatin1Char(':'), 0, 0);
    if (line > 0 && (where == QLatin1String(kScriptLink) || where == QLatin1String(kPresetsLink)))
        emit placeRequested(where == QLatin1String(kPresetsLink), line);
}
