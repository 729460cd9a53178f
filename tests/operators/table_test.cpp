// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/table/allops.h"

#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <QFile>
#include <QSet>

#include <gtest/gtest.h>

namespace
{
/// Operators that stand in the lists and wait for their arithmetic. A name may only go.
const QSet<QString> kWaiting{
    "annotation",   "author",      "bend",        "brushstroke",  "camera",    "caricature",
    "centerdefine", "chromanoise", "colormap",    "convolve",     "creduce",   "copyright",
    "crop",         "dome",        "dpi",         "edgedetect",   "emboss",    "flip",
    "fractals",     "frame",       "gaussian",    "gps",          "gchord",    "halftone",
    "hremove",      "infill",      "jumble",      "kaleidoscope", "keystone",  "layerclear",
    "legendlabel",  "loccontrast", "math",        "maximum",      "measure",   "median",
    "merge",        "minimum",     "mirror",      "monofix",      "notations", "notchf",
    "pads",         "perlin",      "perspective", "pixelize",     "place",     "plane",
    "radwave",      "random",      "rangefill",   "ris",          "rip",       "roll",
    "rotate",       "rot90",       "sharpen",     "skew",         "software",  "spherize",
    "stretch",      "swirl",       "time",        "tunnel",       "valves",    "vignette",
    "vremove"};

/// Lines of id, group, script name, menu name, usage line ("%1": the script name; in it \n
/// stands for a line break).
QList<QStringList> rowsOfFile()
{
    QFile file(QStringLiteral(KESTRANE_SOURCE_DIR "/tests/operators/rows.txt"));
    QList<QStringList> rows;
    if (file.open(QIODevice::ReadOnly))
        for (const QByteArray &line : file.readAll().split('\n'))
            if (!line.isEmpty())
                rows << QString::fromUtf8(line).split('\t');
    return rows;
}
QString sorted(const QSet<QString> &names)
{
    QStringList list = names.values();
    list.sort();
    return list.join(' ');
}
} // namespace

TEST(OperatorRows, EachHasItsIdNamesGroupAndUsageLine)
{
    RecordingWorkspace space;
    OperatorTable table;
    addAllOperators(&table);
    const auto rows = rowsOfFile();
    ASSERT_EQ(rows.size(), 96);
    ASSERT_EQ(table.operators().size(), 96U);
    QSet<QString> waiting;
    for (int i = 0; i < 96; ++i) {
        const OpWrapper &op = *table.operators()[size_t(i)];
        const QStringList &row = rows[i];
        EXPECT_EQ(op.id, row[0].toInt());
        EXPECT_EQ(op.id, i + 1);
        EXPECT_EQ(op.group, row[1].toInt()) << qPrintable(row[2]);
        EXPECT_EQ(op.scriptName, row[2]);
        EXPECT_EQ(op.menuName, row[3]);
        QString usage = row[4];
        usage.replace("\\n", "\n").replace("%1", row[2]);
        EXPECT_EQ(op.usage(), usage);
        EXPECT_TRUE(op.helpPage.startsWith("op") && op.helpPage.endsWith(".html"));
        if (!op.self)
            waiting << op.scriptName;
    }
    EXPECT_TRUE((waiting - kWaiting).isEmpty()) << qPrintable(sorted(waiting - kWaiting));
    EXPECT_TRUE((kWaiting - waiting).isEmpty()) << qPrintable(sorted(kWaiting - waiting));
}

/// What an operator announces is what its script call asks for: without numbers, or with too
/// many, it answers with that line and changes nothing.
TEST(OperatorRows, ScriptCallsAnswerWrongNumbersOfValuesWithTheUsageLine)
{
    RecordingWorkspace space;
    OperatorTable table;
    addAllOperators(&table);
    for (OpWrapper *op : table.operators()) {
        const auto img = randomImage(6, 5, 1), before = randomImage(6, 5, 1);
        img->fillGmask(65535);
        before->fillGmask(65535);
        QString usage, lineBefore, lineAfter;
        op->scriptLine(&lineBefore);
        QStringList many;
        for (int i = 0; i < 30; ++i)
            many << "1";
        const int result = op->scriptCall(int(many.size()), &many, img.get(), &usage);
        EXPECT_EQ(result, op->self && op->scriptable ? 0 : -1) << qPrintable(op->scriptName);
        if (result == 0) {
            EXPECT_EQ(usage, op->usage());
        }
        for (const char *word : {"1e300", "nosuchword", "\"text\"", "-99999999999", "("}) {
            QStringList bad;
            for (int i = lineBefore.count(' '); i > 0; --i)
                bad << word;
            if (bad.isEmpty() || !op->scriptable || !op->self)
                continue;
            EXPECT_EQ(op->scriptCall(int(bad.size()), &bad, img.get(), &usage), 0)
                << qPrintable(op->scriptName) << ' ' << word;
        }
        op->scriptLine(&lineAfter);
        EXPECT_EQ(lineBefore, lineAfter);
        EXPECT_TRUE(samePlanes(*img, *before)) << qPrintable(op->scriptName);
        if (!op->self || !op->scriptable) {
            EXPECT_TRUE(lineAfter ==
                            QStringLiteral("# No script operator for \"%1\"\n").arg(op->menuName) ||
                        op->id == 82);
            continue;
        }
        // The line that an operator writes is one that it takes.
        QStringList own = lineAfter.trimmed().split(' ').mid(1);
        EXPECT_EQ(op->scriptCall(int(own.size()), &own, nullptr, &usage), 1)
            << qPrintable(lineAfter);
    }
}
