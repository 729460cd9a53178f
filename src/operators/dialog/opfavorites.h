// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QDialog>
#include <QPointer>

#include <array>

class OperatorTable;
class QAction;
class QGridLayout;
class QPushButton;

/// A panel of fifteen buttons, each for an operator that the person put there. Operators are
/// kept by their names in the Operators menu, whose entries the buttons trigger.
class OpFavorites : public QDialog
{
    Q_OBJECT
public:
    static constexpr int kSlots = 15;

    /// `menuActions`: the entries of the Operators menu, which outlive the panel. Reads its
    /// settings (opfav01 to opfav15, opfavx, opfavy, opwide) from the table's store.
    OpFavorites(OperatorTable *operators, const QList<QAction *> &menuActions,
                QWidget *parent = nullptr);

    /// Writes them there; whether the panel is shown is a setting of the workspace.
    void save() const;

    /// The operator's name in a slot of 1 to 15; empty for one without, and for other numbers.
    QString favorite(int number) const;
    /// Puts a name into a slot of 1 to 15; an empty one clears it.
    void setFavorite(int number, const QString &name);
    /// The menu entry with this text, or null.
    QAction *resolve(const QString &name) const;

signals:
    /// The panel was shown or closed; the workspace's favoritesShown says so already.
    void shownChanged(bool shown);

protected:
    void showEvent(QShowEvent *event) override;
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void load();
    void restorePlace();
    void placeFirst();
    void press(int number);
    void showMenu(int number, const QPoint &place);
    void setWide(bool on);
    /// Lays the buttons out in the narrow or the wide form and names them.
    void arrange();
    QString currentName() const;

    OperatorTable *table;
    QList<QPointer<QAction>> entries;
    QGridLayout *grid;
    std::array<QPushButton *, kSlots> buttons{};
    std::array<QString, kSlots> names;
    bool wide = false;
    bool placed = false; ///< it was shown, or stands where the settings say
};
