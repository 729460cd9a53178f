// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QList>
#include <QPair>
#include <QString>
#include <QStringList>

/// Exit statuses of kestrane-batch.
constexpr int kStatusDone = 0;
constexpr int kStatusImageFailed = 1;
constexpr int kStatusWrongUsage = 2;
constexpr int kStatusScriptFailed = 3; ///< under --strict

/// What the command line asks for.
struct Options {
    QStringList images;
    QString output; ///< pattern of the result names, empty: nothing is saved
    QString origin, brush;
    QString script;                          ///< file of the script, empty: none
    QStringList execute;                     ///< script texts that follow it
    QList<QPair<QString, QString>> settings; ///< of --set, in their order
    int rgbaDepth = 0;                       ///< 0: the setting's own value, 64
    int quality = 0;                         ///< 0: the setting's own value
    int layer = 0;                           ///< from the top from 1; 0: the master
    bool strict = false;
    bool keepGoing = false;
    bool interactive = false;
    bool storedSettings = false;
    bool help = false;
    bool version = false;
};

/// Reads the arguments after the program's name. False for wrong usage, with the one line
/// that says what is wrong in *error. Parsing ends at --help and at --version.
bool parseOptions(const QStringList &arguments, Options *options, QString *error);

/// Reads "new:WxH". `isNew` tells whether the text asks for a fresh image at all; false
/// with a reason if it does and its size is not two whole numbers from 1 to 32767.
bool parseNewImage(const QString &text, bool *isNew, int *width, int *height, QString *error);

/// The name of one result: {name} is the input's file name up to its last dot, {n} its
/// position from 1.
QString outputName(const QString &pattern, const QString &input, int position);

/// Refuses results that would overwrite one another, or the input of another image. An
/// image may replace its own input.
bool checkOutputs(const Options &options, QString *error);

/// The text of --help.
QString helpText();
