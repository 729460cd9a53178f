// SPDX-License-Identifier: GPL-3.0-or-later
#include "script/run/statements.h"

namespace
{
/// Collects the pieces of a text and the lines on which they begin.
class Splitter
{
public:
    QList<ScriptStatement> split(const QString &text)
    {
        for (int i = 0; i < text.size(); ++i) {
            const QChar c = text[i];
            const QChar next = i + 1 < text.size() ? text[i + 1] : QChar();
            if (c == QLatin1Char(':') && next == QLatin1Char(':')) {
                piece += c;
                ++i;
            } else if (c == QLatin1Char(':')) {
                endPiece();
            } else if (c == QLatin1Char('\n') || c == QLatin1Char('\r')) {
                endPiece();
                ++line;
                if (c == QLatin1Char('\r') && next == QLatin1Char('\n'))
                    ++i; // one end of a line, not two
            } else {
                piece += c;
            }
        }
        endPiece();
        return pieces;
    }

private:
    void endPiece()
    {
        if (piece.isEmpty())
            return;
        const QString code = piece.trimmed();
        pieces.append({piece, line, !code.isEmpty() && !code.startsWith(QLatin1Char('#'))});
        piece.clear();
    }

    QList<ScriptStatement> pieces;
    QString piece;
    int line = 1;
};
} // namespace

QList<ScriptStatement> splitStatements(const QString &text)
{
    return Splitter().split(text);
}

QStringList statementTokens(const QString &statement)
{
    QString plain = statement;
    return plain.replace(QLatin1Char('\t'), QLatin1Char(' '))
        .split(QLatin1Char(' '), Qt::SkipEmptyParts);
}
