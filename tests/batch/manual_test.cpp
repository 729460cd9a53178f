// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/toolrun.h"
#include "scriptentries.h"

#include "core/memory.h"
#include "script/engine/optable.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>

namespace
{
QStringList manualLines()
{
    QFile file(KESTRANE_SOURCE_DIR "/docs/language.md");
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return QString::fromUtf8(file.readAll()).split('\n');
}

/// One fenced block of the manual.
struct ConsoleSession {
    int line = 0;
    std::string input, answers;
};

QList<ConsoleSession> manualSessions()
{
    QList<ConsoleSession> sessions;
    bool inside = false;
    int number = 0;
    for (const QString &line : manualLines()) {
        ++number;
        if (line == "```console")
            sessions.append(ConsoleSession{number, {}, {}});
        if (line.startsWith("```"))
            inside = line == "```console";
        else if (inside && line.startsWith("> "))
            sessions.last().input += line.mid(2).toStdString() + '\n';
        else if (inside)
            sessions.last().answers += line.toStdString() + '\n';
    }
    return sessions;
}

TEST(Manual, EveryExampleIsAnsweredAsItSays)
{
    const QList<ConsoleSession> sessions = manualSessions();
    EXPECT_GE(sessions.size(), 40);
    for (const ConsoleSession &session : sessions) {
        SCOPED_TRACE("docs/language.md, line " + std::to_string(session.line));
        EXPECT_EQ(runInProcess({"-i", "new:4x3"}, session.input).out, session.answers);
    }
    EXPECT_EQ(memRecord.currentBlocks, 0) << "left in memory";
}

TEST(Manual, TheReferenceHasEveryWordOfTheTable)
{
    QStringList rows;
    for (const QString &line : manualLines())
        if (line.startsWith("| `") && line.count(" | ") == 2)
            rows << line;
    int words = 0;
    for (const OtDefinition &row : kOtDefinitions) {
        if (!*row.explanation)
            continue;
        ++words;
        EXPECT_EQ(rows.count(QStringLiteral("| `%1` | `%2` | %3 |")
                                 .arg(row.keyword, row.usage, row.explanation)),
                  1)
            << row.keyword;
    }
    EXPECT_EQ(words, 201);
}

/// What fuzzing the language found stays mended.
TEST(ScriptFuzz, FindingsStayMended)
{
    for (const FuzzEntry &entry : scriptFuzzEntries()) {
        entry.run(nullptr, 0);
        const QDir dir(QStringLiteral(KESTRANE_SOURCE_DIR "/fuzz/regressions/") + entry.name);
        for (const QString &name : dir.entryList(QDir::Files)) {
            SCOPED_TRACE(name.toStdString());
            QFile file(dir.filePath(name));
            ASSERT_TRUE(file.open(QIODevice::ReadOnly));
            const QByteArray bytes = file.readAll();
            entry.run(reinterpret_cast<const uint8_t *>(bytes.constData()), size_t(bytes.size()));
        }
    }
}
} // namespace
