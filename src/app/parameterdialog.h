// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>

#include <cstdint>
#include <functional>
#include <vector>

class QDoubleSpinBox;
class QFormLayout;
class QPushButton;

/// A small modal dialog made of the fields that it is given. Each field shows a variable
/// and writes it when the person presses the button that goes on; until then nothing is
/// written. Fields are named for what they show, in camel case, so that tests find them.
class ParameterDialog : public QDialog
{
    Q_OBJECT
public:
    /// `goOn` is the text of the button that goes on.
    ParameterDialog(const QString &title, const QString &explanation, const QString &goOn,
                    QWidget *parent);

    struct Range {
        double low, high;
        int decimals = 0;
        QString suffix;
        double scale = 1.0; ///< of what is shown to the variable: 100 for percentages
        double reach = 0;   ///< the slider goes this far from 0, the field all the way; 0: both
        QString lowText = QString(); ///< shown instead of the lowest number
    };
    /// A slider and a field for the number.
    void number(const char *name, const QString &caption, double *value, const Range &range,
                const QString &tip);
    void whole(const char *name, const QString &caption, int *value, const Range &range,
               const QString &tip);
    void check(const char *name, const QString &caption, bool *value, const QString &tip);
    void choice(const char *name, const QString &caption, int *value, const QStringList &texts);
    /// 16-bit components; the top bytes are shown and written back 257 times.
    void colour(const char *name, const QString &caption, uint16_t *red, uint16_t *green,
                uint16_t *blue);
    /// Several lines; the dialog goes on only with a text that is more than blanks.
    void text(const char *name, const QString &caption, QString *value);
    void fontFamily(const char *name, const QString &caption, QString *value);

    /// Shows the dialog; true, with the variables written, if the person went on.
    bool ask();

private:
    /// `set` is called with the number when the person went on.
    void addNumber(const char *name, const QString &caption, double shown, const Range &range,
                   const QString &tip, const std::function<void(double)> &set);
    void addRow(const char *name, const QString &caption, QWidget *field, QWidget *row = nullptr);

    QFormLayout *form;
    QPushButton *goOnButton;
    std::vector<std::function<void()>> writers;
    std::vector<QDoubleSpinBox *> spins;
    std::vector<QWidget *> fields; ///< in the order that Tab takes
};
