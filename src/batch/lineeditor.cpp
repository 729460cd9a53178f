// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/lineeditor.h"

#include <QTextCodec>

#include <algorithm>
#include <ostream>

#include <sys/ioctl.h>

namespace
{
constexpr int kEntered = 200;
constexpr int kLongestEscape = 8;

constexpr char16_t control(char letter)
{
    return char16_t(letter - '@');
}
constexpr char16_t kEscape = 0x1B;
constexpr char16_t kDelete = 0x7F;
} // namespace

LineEditor::LineEditor(std::ostream &where, const QString &shown)
    : screen(where), prompt(shown),
      decoder(QTextCodec::codecForName("UTF-8")->makeDecoder(QTextCodec::IgnoreHeader))
{
}

void LineEditor::begin(int width)
{
    columns = std::max(width, 20);
    line.clear();
    escape.clear();
    cursor = 0;
    chosen = int(entered.size());
    draw();
}

LineEditor::Step LineEditor::feed(char byte)
{
    if (byte == '\r' || byte == '\n')
        return finish();
    if (byte == char(control('D')) && line.isEmpty()) {
        screen << "\r\n" << std::flush;
        return Step::End;
    }
    // A character of several bytes comes out with its last one.
    const QString keys = decoder->toUnicode(&byte, 1);
    for (const QChar key : keys)
        take(key);
    if (!keys.isEmpty())
        draw();
    return Step::More;
}

LineEditor::Step LineEditor::finish()
{
    screen << "\r\n" << std::flush;
    if (!line.isEmpty() && (entered.isEmpty() || entered.last() != line))
        entered += line;
    if (entered.size() > kEntered)
        entered.removeFirst();
    return Step::Line;
}

void LineEditor::take(QChar key)
{
    if (!escape.isEmpty() || key == QChar(kEscape))
        takeEscape(key);
    else if (key.unicode() < u' ' || key == QChar(kDelete))
        takeControl(key.unicode());
    else
        insert(key);
}

void LineEditor::insert(QChar key)
{
    line.insert(cursor++, key);
}

void LineEditor::erase(int from, int to)
{
    from = std::max(from, 0);
    to = std::min(to, int(line.size()));
    line.remove(from, to - from);
    cursor = from;
}

void LineEditor::browse(int step)
{
    chosen = std::clamp(chosen + step, 0, int(entered.size()));
    line = entered.value(chosen);
    cursor = int(line.size());
}

void LineEditor::takeControl(char16_t key)
{
    const int end = int(line.size());
    switch (key) {
    case control('A'):
        cursor = 0;
        break;
    case control('B'):
        cursor = std::max(cursor - 1, 0);
        break;
    case control('C'): // at the prompt there is nothing to stop but the line
        erase(0, end);
        break;
    case control('D'):
        erase(cursor, cursor + 1);
        break;
    case control('E'):
        cursor = end;
        break;
    case control('F'):
        cursor = std::min(cursor + 1, end);
        break;
    case control('H'):
    case kDelete:
        erase(cursor - 1, cursor);
        break;
    case control('I'):
        insert(QLatin1Char(' '));
        break;
    case control('K'):
        erase(cursor, end);
        break;
    case control('N'):
        browse(1);
        break;
    case control('P'):
        browse(-1);
        break;
    case control('U'):
        erase(0, cursor);
        break;
    case control('W'):
        erase(line.left(cursor).trimmed().lastIndexOf(QLatin1Char(' ')) + 1, cursor);
        break;
    default:
        break;
    }
}

void LineEditor::takeEscape(QChar key)
{
    static const struct {
        const char *sequence;
        char16_t same; ///< the control key that does this
    } kKeys[] = {{"[A", control('P')},  {"[B", control('N')}, {"[C", control('F')},
                 {"[D", control('B')},  {"[H", control('A')}, {"[F", control('E')},
                 {"OH", control('A')},  {"OF", control('E')}, {"[1~", control('A')},
                 {"[4~", control('E')}, {"[3~", control('D')}};
    escape += key;
    const bool opens = escape.size() < 3 && (key == QChar(kEscape) || key == QLatin1Char('[') ||
                                             key == QLatin1Char('O'));
    const bool last = !opens && (key.isLetter() || key == QLatin1Char('~'));
    if (!last && escape.size() < kLongestEscape)
        return;
    for (const auto &[sequence, same] : kKeys)
        if (escape.mid(1) == QLatin1String(sequence))
            takeControl(same);
    escape.clear();
}

void LineEditor::draw()
{
    // A line wider than the terminal shows the part around the cursor.
    const int room = columns - int(prompt.size()) - 1;
    const int first = std::max(cursor - room, 0);
    screen << "\r" << prompt.toStdString() << line.mid(first, room).toStdString() << "\033[K\r\033["
           << prompt.size() + cursor - first << "C" << std::flush;
}

RawTerminal::RawTerminal(int where) : file(where)
{
    if (tcgetattr(file, &before) != 0)
        return;
    termios raw = before;
    raw.c_lflag &= ~tcflag_t(ICANON | ECHO | ISIG | IEXTEN);
    raw.c_iflag &= ~tcflag_t(IXON | ICRNL);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    changed = tcsetattr(file, TCSADRAIN, &raw) == 0;
}

RawTerminal::~RawTerminal()
{
    if (changed)
        tcsetattr(file, TCSADRAIN, &before);
}

int RawTerminal::columns() const
{
    winsize size{};
    const bool known = changed && ioctl(file, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : 80;
}
