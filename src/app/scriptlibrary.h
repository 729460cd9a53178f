// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QObject>
#include <QString>

class QSettings;

/// A script that a person keeps under a name.
struct SavedScript {
    QString name;
    QString text;
    QString presets; ///< run before it; empty: none
    int key = 0;     ///< in the plain form of the key table, 0: none

    bool operator==(const SavedScript &other) const = default;
};

/// The saved scripts, by name.
class ScriptLibrary : public QObject
{
    Q_OBJECT
public:
    static constexpr int kMostScripts = 500;
    static constexpr int kMostLetters = 400000; ///< of one script with its presets
    static constexpr int kLongestName = 80;

    explicit ScriptLibrary(QObject *parent = nullptr);

    const QList<SavedScript> &scripts() const { return list; }
    /// Null if there is none of that name.
    const SavedScript *find(const QString &name) const;
    /// Null for 0.
    const SavedScript *findKey(int key) const;

    /// Keeps a script, in place of one of the same name, whose key it inherits. False with
    /// the reason.
    bool store(SavedScript script, QString *error);
    bool rename(const QString &from, const QString &to, QString *error);
    void remove(const QString &name);
    /// Gives a script a key, which others lose.
    void setKey(const QString &name, int key);

    void load(const QSettings &settings);
    void save(QSettings &settings) const;
    /// All scripts as a file for other people or another machine.
    QByteArray toJson() const;
    /// Adds the scripts of such a file; those of a name that is taken get another one. Returns
    /// how many, or -1 with the reason, and nothing taken.
    int addJson(const QByteArray &json, QString *error);

signals:
    void changed();

private:
    int indexOf(const QString &name) const;
    void insert(const SavedScript &script);

    QList<SavedScript> list;
};
