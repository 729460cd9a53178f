// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "views/scripthighlighter.h"

#include <QMap>
#include <QPlainTextEdit>
#include <QTimer>

class QCompleter;
class QStringListModel;

/// A text editor for scripts: colours, line numbers, the current line, marks at lines with
/// errors, and completion of words.
class CodeEdit : public QPlainTextEdit
{
    Q_OBJECT
public:
    explicit CodeEdit(QWidget *parent = nullptr);
    ~CodeEdit() override;

    void setWords(const ScriptWords &languageWords);
    /// Whether line numbers and marks are shown, which a small editor has no room for.
    void setMarginShown(bool shown);

    /// Puts another text in place of the present one, which undo brings back.
    void replaceText(const QString &text);
    /// Puts the cursor into this line, from 1, and scrolls to it.
    void goToLine(int line);
    int currentLine() const;

    /// Marks a line, from 1, with what is wrong there, beside what was wrong before; the mark
    /// moves along with its line.
    void markError(int line, const QString &message);
    void clearErrors();
    /// The marked lines and their messages.
    QMap<int, QString> errors() const;

    /// Makes comments of the selected lines, or of the current one; or takes the signs away
    /// if all of them are comments.
    void toggleComment();
    /// Offers words that begin with what stands before the cursor.
    void complete(bool evenShort);

    // Of the margin, which is a widget of its own.
    int marginWidth() const;
    void paintMargin(QPaintEvent *event);
    QString marginTip(int y) const;

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void changeEvent(QEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;
    void insertFromMimeData(const QMimeData *source) override;

private:
    void placeMargin();
    void markLines();
    void followText();
    void followPalette();
    void insertCompletion(const QString &word);
    bool completionKey(QKeyEvent *event);
    void indentLike();
    QString wordBeforeCursor() const;

    ScriptHighlighter *highlighter;
    QWidget *margin;
    bool marginShown = true;
    ScriptWords words;
    QCompleter *completer;
    QStringListModel *model;
    QTimer followTimer; ///< names of variables are looked for when the typing pauses
};
