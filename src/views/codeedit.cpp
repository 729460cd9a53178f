// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/codeedit.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFontDatabase>
#include <QHelpEvent>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStringListModel>
#include <QTextBlock>
#include <QToolTip>

#include <algorithm>

namespace
{
constexpr int kShortestPrefix = 2; ///< letters before words are offered unasked
constexpr int kFollowMs = 250;
constexpr int kIndent = 2; ///< blanks of a step
constexpr int kMarginGap = 6;
constexpr int kMostOffered = 12;
constexpr int kMostMarkLetters = 400; ///< a line in a loop may fail often

/// What is wrong with a line; it stays with the line while others come and go.
class LineMark : public QTextBlockUserData
{
public:
    explicit LineMark(const QString &text) : message(text) {}
    QString message;
};

const LineMark *markOf(const QTextBlock &block)
{
    return static_cast<const LineMark *>(block.userData());
}

class Margin : public QWidget
{
public:
    explicit Margin(CodeEdit *owner) : QWidget(owner), edit(owner)
    {
        setObjectName(QStringLiteral("lineNumbers"));
    }
    QSize sizeHint() const override { return {edit->marginWidth(), 0}; }

protected:
    void paintEvent(QPaintEvent *event) override { edit->paintMargin(event); }
    bool event(QEvent *event) override
    {
        if (event->type() != QEvent::ToolTip)
            return QWidget::event(event);
        const auto *help = static_cast<QHelpEvent *>(event);
        QToolTip::showText(help->globalPos(), edit->marginTip(help->y()), this);
        return true;
    }

private:
    CodeEdit *edit;
};

QColor between(const QColor &a, const QColor &b, double part)
{
    return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * part,
                            a.greenF() + (b.greenF() - a.greenF()) * part,
                            a.blueF() + (b.blueF() - a.blueF()) * part);
}

bool isWordLetter(QChar c)
{
    return c.isLetterOrNumber() || c == QLatin1Char('_');
}
} // namespace

CodeEdit::CodeEdit(QWidget *parent)
    : QPlainTextEdit(parent), highlighter(new ScriptHighlighter(document())),
      margin(new Margin(this)), completer(new QCompleter(this)), model(new QStringListModel(this))
{
    QFont face = QFontDatabase::systemFont(QFontDatabase::FixedFont);
    face.setPointSizeF(std::max(font().pointSizeF(), 9.0));
    setFont(face);
    setLineWrapMode(NoWrap);
    setTabStopDistance(fontMetrics().horizontalAdvance(QLatin1Char(' ')) * kIndent);
    completer->setModel(model);
    completer->setWidget(this);
    completer->setCaseSensitivity(Qt::CaseInsensitive);
    completer->setMaxVisibleItems(kMostOffered);
    completer->popup()->setObjectName(QStringLiteral("completions"));
    completer->popup()->setFont(face);
    connect(completer, QOverload<const QString &>::of(&QCompleter::activated), this,
            &CodeEdit::insertCompletion);
    followTimer.setSingleShot(true);
    followTimer.setInterval(kFollowMs);
    connect(&followTimer, &QTimer::timeout, this, &CodeEdit::followText);
    connect(this, &QPlainTextEdit::textChanged, &followTimer, QOverload<>::of(&QTimer::start));
    connect(this, &QPlainTextEdit::blockCountChanged, this, &CodeEdit::placeMargin);
    connect(this, &QPlainTextEdit::cursorPositionChanged, this, &CodeEdit::markLines);
    connect(this, &QPlainTextEdit::updateRequest, this, [this](const QRect &rect, int dy) {
        if (dy)
            margin->scroll(0, dy);
        else
            margin->update(0, rect.y(), margin->width(), rect.height());
    });
    followPalette();
    placeMargin();
}

CodeEdit::~CodeEdit() = default;

void CodeEdit::setWords(const ScriptWords &languageWords)
{
    words = languageWords;
    highlighter->setWords(words);
    followText();
}

void CodeEdit::setMarginShown(bool shown)
{
    marginShown = shown;
    margin->setVisible(shown);
    placeMargin();
}

// --- Text and lines ---------------------------------------------------------------------

void CodeEdit::replaceText(const QString &text)
{
    if (text == toPlainText())
        return;
    QTextCursor cursor(document());
    cursor.select(QTextCursor::Document);
    cursor.insertText(text);
    moveCursor(QTextCursor::Start);
    followText();
}

void CodeEdit::goToLine(int line)
{
    const QTextBlock block =
        document()->findBlockByNumber(std::clamp(line, 1, std::max(1, blockCount())) - 1);
    setTextCursor(QTextCursor(block));
    centerCursor();
}

int CodeEdit::currentLine() const
{
    return textCursor().blockNumber() + 1;
}

void CodeEdit::markError(int line, const QString &message)
{
    QTextBlock block = document()->findBlockByNumber(line - 1);
    if (!block.isValid())
        return;
    const LineMark *before = markOf(block);
    if (before && before->message.size() > kMostMarkLetters)
        return;
    block.setUserData(
        new LineMark(before ? before->message + QLatin1Char('\n') + message : message));
    markLines();
    margin->update();
}

void CodeEdit::clearErrors()
{
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
        block.setUserData(nullptr);
    markLines();
    margin->update();
}

QMap<int, QString> CodeEdit::errors() const
{
    QMap<int, QString> found;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
        if (const LineMark *mark = markOf(block))
            found.insert(block.blockNumber() + 1, mark->message);
    return found;
}

void CodeEdit::toggleComment()
{
    QTextCursor cursor = textCursor();
    const QTextBlock first = document()->findBlock(cursor.selectionStart());
    QTextBlock last = document()->findBlock(cursor.selectionEnd());
    if (last != first && cursor.selectionEnd() == last.position())
        last = last.previous(); // nothing of that line is selected
    static const QRegularExpression code(QStringLiteral("^ *[^# ]"));
    bool anyCode = false;
    for (QTextBlock block = first; block.isValid() && block != last.next(); block = block.next())
        anyCode = anyCode || code.match(block.text()).hasMatch();
    cursor.beginEditBlock();
    for (QTextBlock block = first; block.isValid() && block != last.next(); block = block.next()) {
        QTextCursor at(block);
        if (anyCode && !block.text().trimmed().isEmpty()) {
            at.insertText(QStringLiteral("#"));
        } else if (!anyCode && block.text().contains(QLatin1Char('#'))) {
            at.setPosition(block.position() + block.text().indexOf(QLatin1Char('#')));
            at.deleteChar();
        }
    }
    cursor.endEditBlock();
}

void CodeEdit::followText()
{
    const QStringList assigned = assignedNames(toPlainText());
    QSet<QString> low;
    for (const QString &name : assigned)
        low.insert(name.toLower());
    highlighter->setVariables(low);
    QStringList offered = words.all() + assigned;
    offered.removeDuplicates();
    offered.sort(Qt::CaseInsensitive);
    if (offered != model->stringList() && !completer->popup()->isVisible())
        model->setStringList(offered);
}

// --- Looks ------------------------------------------------------------------------------

void CodeEdit::followPalette()
{
    highlighter->setDark(palette().color(QPalette::Base).lightness() < 128);
    markLines();
}

void CodeEdit::changeEvent(QEvent *event)
{
    QPlainTextEdit::changeEvent(event);
    if (event->type() == QEvent::PaletteChange || event->type() == QEvent::StyleChange)
        followPalette();
    if (event->type() == QEvent::FontChange)
        placeMargin();
}

/// The current line stands out a little, lines with an error more.
void CodeEdit::markLines()
{
    const QColor base = palette().color(QPalette::Base);
    QList<QTextEdit::ExtraSelection> marks;
    const auto mark = [&marks](const QTextCursor &at, const QColor &colour) {
        QTextEdit::ExtraSelection line;
        line.format.setBackground(colour);
        line.format.setProperty(QTextFormat::FullWidthSelection, true);
        line.cursor = at;
        line.cursor.clearSelection();
        marks.append(line);
    };
    if (marginShown && !document()->isEmpty()) // where the hint of an empty text stands
        mark(textCursor(), between(base, palette().color(QPalette::Highlight), 0.10));
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next())
        if (markOf(block))
            mark(QTextCursor(block), between(base, QColor(224, 40, 40), 0.22));
    setExtraSelections(marks);
    margin->update(); // the number of the current line is bold
}

int CodeEdit::marginWidth() const
{
    if (!marginShown)
        return 0;
    const int digits = std::max(3, int(QString::number(blockCount()).size()));
    const QFontMetrics metrics = fontMetrics();
    return metrics.horizontalAdvance(QLatin1Char('9')) * digits + metrics.height() + 2 * kMarginGap;
}

void CodeEdit::placeMargin()
{
    const int width = marginWidth();
    setViewportMargins(width, 0, 0, 0);
    const QRect inside = contentsRect();
    margin->setGeometry(inside.left(), inside.top(), width, inside.height());
}

void CodeEdit::resizeEvent(QResizeEvent *event)
{
    QPlainTextEdit::resizeEvent(event);
    placeMargin();
}

void CodeEdit::paintMargin(QPaintEvent *event)
{
    QPainter painter(margin);
    painter.setRenderHint(QPainter::Antialiasing);
    const QColor base = palette().color(QPalette::Base), text = palette().color(QPalette::Text);
    painter.fillRect(event->rect(), between(base, text, 0.06));
    painter.setFont(font());
    QFont bold = font();
    bold.setBold(true);
    const int line = fontMetrics().height(), current = textCursor().blockNumber();
    const int dot = line / 2;
    QTextBlock block = firstVisibleBlock();
    double top = blockBoundingGeometry(block).translated(contentOffset()).top();
    for (; block.isValid() && top <= event->rect().bottom(); block = block.next()) {
        const double height = blockBoundingRect(block).height();
        const bool isCurrent = block.blockNumber() == current;
        painter.setPen(between(base, text, isCurrent ? 1.0 : 0.62));
        painter.setFont(isCurrent ? bold : font());
        painter.drawText(QRectF(0, top, margin->width() - kMarginGap, line),
                         Qt::AlignRight | Qt::AlignVCenter,
                         QString::number(block.blockNumber() + 1));
        if (markOf(block)) {
            painter.setPen(Qt::NoPen);
            painter.setBrush(QColor(220, 50, 47));
            painter.drawEllipse(QRectF(kMarginGap, top + (line - dot) / 2.0, dot, dot));
        }
        top += height;
    }
}

QString CodeEdit::marginTip(int y) const
{
    const LineMark *mark = markOf(cursorForPosition(QPoint(0, y)).block());
    return mark ? mark->message : QString();
}

// --- Typing and completion ----------------------------------------------------------------

QString CodeEdit::wordBeforeCursor() const
{
    const QTextCursor cursor = textCursor();
    const QString line = cursor.block().text();
    int from = cursor.positionInBlock();
    const int end = from;
    while (from > 0 && isWordLetter(line.at(from - 1)))
        --from;
    return line.mid(from, end - from);
}

void CodeEdit::complete(bool evenShort)
{
    const QString word = wordBeforeCursor();
    QAbstractItemView *popup = completer->popup();
    const bool startsAsName = !word.isEmpty() && !word.at(0).isDigit();
    if (isReadOnly() || (!evenShort && (word.size() < kShortestPrefix || !startsAsName))) {
        popup->hide();
        return;
    }
    if (!popup->isVisible())
        followText();
    completer->setCompletionPrefix(word);
    const bool nothingNew =
        completer->completionCount() == 0 ||
        (completer->completionCount() == 1 && completer->currentCompletion().compare(word) == 0);
    if (nothingNew) {
        popup->hide();
        return;
    }
    QRect place = cursorRect();
    place.translate(viewport()->x() - fontMetrics().horizontalAdvance(word), 0);
    place.setWidth(popup->sizeHintForColumn(0) + 2 * popup->frameWidth() +
                   popup->verticalScrollBar()->sizeHint().width() + kMarginGap);
    completer->complete(place);
    // Unasked, nothing is chosen: Return then ends the line, as it should.
    popup->setCurrentIndex(evenShort ? completer->completionModel()->index(0, 0) : QModelIndex());
}

void CodeEdit::insertCompletion(const QString &word)
{
    QTextCursor cursor = textCursor();
    cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor, wordBeforeCursor().size());
    cursor.insertText(word);
    setTextCursor(cursor);
    completer->popup()->hide();
}

/// Keys that belong to the list of words while it is open; true if one was dealt with.
bool CodeEdit::completionKey(QKeyEvent *event)
{
    QAbstractItemView *popup = completer->popup();
    if (!popup->isVisible())
        return false;
    const bool chosen = popup->currentIndex().isValid();
    switch (event->key()) {
    case Qt::Key_Escape:
        popup->hide();
        return true;
    case Qt::Key_Tab:
        insertCompletion(chosen ? popup->currentIndex().data().toString()
                                : completer->completionModel()->index(0, 0).data().toString());
        return true;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (chosen)
            insertCompletion(popup->currentIndex().data().toString());
        else
            popup->hide();
        return chosen;
    default:
        return false;
    }
}

/// A new line begins where the one before began.
void CodeEdit::indentLike()
{
    const QString line = textCursor().block().text().left(textCursor().positionInBlock());
    int blanks = 0;
    while (blanks < line.size() && line.at(blanks) == QLatin1Char(' '))
        ++blanks;
    insertPlainText(QLatin1Char('\n') + QString(blanks, QLatin1Char(' ')));
    ensureCursorVisible();
}

void CodeEdit::keyPressEvent(QKeyEvent *event)
{
    if (completionKey(event))
        return;
    const Qt::KeyboardModifiers held = event->modifiers() & ~Qt::KeypadModifier;
    if (event->key() == Qt::Key_Space && held == Qt::ControlModifier) {
        complete(true);
        return;
    }
    const bool writes = !isReadOnly() && !tabChangesFocus();
    // Blanks separate the words of a statement, tabs do not.
    if (writes && event->key() == Qt::Key_Tab && held == Qt::NoModifier) {
        insertPlainText(QString(kIndent, QLatin1Char(' ')));
        return;
    }
    if (!isReadOnly() && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) &&
        (held == Qt::NoModifier || held == Qt::ShiftModifier)) {
        indentLike();
        return;
    }
    QPlainTextEdit::keyPressEvent(event);
    const bool typed = !event->text().isEmpty() && event->text().at(0).isPrint();
    const bool shortened = event->key() == Qt::Key_Backspace && completer->popup()->isVisible();
    if ((typed && isWordLetter(event->text().at(0))) || shortened)
        complete(false);
    else if (typed)
        completer->popup()->hide();
}

void CodeEdit::focusOutEvent(QFocusEvent *event)
{
    QPlainTextEdit::focusOutEvent(event);
    if (event->reason() != Qt::PopupFocusReason)
        completer->popup()->hide();
}

void CodeEdit::insertFromMimeData(const QMimeData *source)
{
    if (!source->hasText())
        return;
    QString text = source->text();
    // As when typed; and the blank that web pages use is none to the language.
    text.replace(QLatin1Char('\t'), QString(kIndent, QLatin1Char(' ')));
    text.replace(QChar(QChar::Nbsp), QLatin1Char(' '));
    insertPlainText(text);
    ensureCursorVisible();
}
