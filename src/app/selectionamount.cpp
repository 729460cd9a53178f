// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/selectionamount.h"

#include "app/parameterdialog.h"

#include <QCoreApplication>

namespace
{
/// What the dialog says and takes for one change.
struct Question {
    const char *title, *explanation, *goOn, *tip;
    int most;
    int answer; ///< the last one
};

Question &questionFor(SelectionChange change)
{
    static Question questions[] = {
        {QT_TRANSLATE_NOOP("SelectionAmount", "Grow Selection"),
         QT_TRANSLATE_NOOP("SelectionAmount", "Moves the edge of the selection outwards."),
         QT_TRANSLATE_NOOP("SelectionAmount", "Grow"),
         QT_TRANSLATE_NOOP("SelectionAmount", "How far the edge moves"), 500, 4},
        {QT_TRANSLATE_NOOP("SelectionAmount", "Shrink Selection"),
         QT_TRANSLATE_NOOP("SelectionAmount", "Moves the edge of the selection inwards, also "
                                              "away from the edges of the image."),
         QT_TRANSLATE_NOOP("SelectionAmount", "Shrink"),
         QT_TRANSLATE_NOOP("SelectionAmount", "How far the edge moves"), 500, 4},
        {QT_TRANSLATE_NOOP("SelectionAmount", "Feather Selection"),
         QT_TRANSLATE_NOOP("SelectionAmount", "Makes the edge of the selection soft, inwards "
                                              "and outwards."),
         QT_TRANSLATE_NOOP("SelectionAmount", "Feather"),
         QT_TRANSLATE_NOOP("SelectionAmount", "How far the smoothing reaches to either side"), 200,
         10},
    };
    return questions[int(change)];
}

QString translated(const char *text)
{
    return QCoreApplication::translate("SelectionAmount", text);
}
} // namespace

int askSelectionAmount(SelectionChange change, QWidget *parent)
{
    Question &question = questionFor(change);
    ParameterDialog dialog(translated(question.title), translated(question.explanation),
                           translated(question.goOn), parent);
    ParameterDialog::Range range{1, double(question.most)};
    range.suffix = QCoreApplication::translate("SelectionAmount", " px");
    dialog.whole("amount", QCoreApplication::translate("SelectionAmount", "Radius"),
                 &question.answer, range, translated(question.tip));
    return dialog.ask() ? question.answer : 0;
}
