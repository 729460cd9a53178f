// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QString>
#include <QWidget>

#include <functional>
#include <vector>

class QCheckBox;
class QComboBox;
class QFormLayout;
class QLabel;
class QLineEdit;
class QPushButton;
class QSpinBox;

/// Settings by their keys, as text.
using PreferenceValues = QMap<QString, QString>;

/// One page of the preferences: rows of a caption and a field, each for the setting of one
/// key. The ranges of numbers are those of the workspace's table. A field is named for its
/// key, so that tests find it; an "&" in a caption makes the letter behind it the row's key.
class PreferencePage : public QWidget
{
    Q_OBJECT
public:
    PreferencePage(const QString &name, const QString &explanation);

    void heading(const QString &text);
    /// A remark below the row before.
    void note(const QString &text);
    QCheckBox *check(const char *key, const QString &caption, const QString &tip);
    /// `lowText` is shown instead of the lowest number.
    QSpinBox *number(const char *key, const QString &caption, const QString &tip,
                     const QString &suffix = {}, const QString &lowText = {});
    /// The setting is the index of a text.
    QComboBox *choice(const char *key, const QString &caption, const QString &tip,
                      const QStringList &texts);
    QLineEdit *line(const char *key, const QString &caption, const QString &tip);
    void lines(const char *key, const QString &caption, const QString &tip);
    /// A button for something that has a dialog of its own.
    QPushButton *button(const char *name, const QString &caption, const QString &tip);
    /// Anything else: beside a caption, or as wide as the page.
    void other(QWidget *widget, const QString &caption = {});

    /// Pages of one caption width have their fields in one line, from page to page.
    int captionWidth() const;
    void setCaptionWidth(int width);

    /// Shows the values of its keys.
    virtual void show(const PreferenceValues &values);
    /// Puts what is shown in place of the values of its keys.
    virtual void read(PreferenceValues *values) const;
    /// Shows the defaults of its keys.
    virtual void showDefaults();

    const QString title;

signals:
    void edited();

private:
    struct Field {
        QString key;
        std::function<QString()> read;
        std::function<void(const QString &)> show;
    };
    void addRow(const char *key, const QString &caption, const QString &tip, QWidget *field);
    template <class Widget, class Read, class Show>
    void addField(Widget *widget, const char *key, Read read, Show show);

    QFormLayout *form;
    std::vector<Field> fields;
    std::vector<QLabel *> captions;
};
