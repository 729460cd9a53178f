// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/options.h"

#include "core/image.h"

#include <QDir>
#include <QFileInfo>
#include <QHash>
#include <QRegularExpression>
#include <QSet>

namespace
{
/// Stores one option's value; the text returned says what is wrong with it, or is empty.
using Store = QString (*)(Options *options, const QString &value);

struct OptionRow {
    char shortName; ///< 0: none
    const char *longName;
    bool takesValue;
    Store store; ///< null: known, with nothing in this version that could do it
};

QString storeText(QString *field, const QString &value)
{
    if (value.isEmpty())
        return QStringLiteral("the value is empty");
    *field = value;
    return {};
}

QString storeImage(QString *field, const QString &value)
{
    bool isNew = false;
    int width = 0, height = 0;
    QString reason;
    if (!parseNewImage(value, &isNew, &width, &height, &reason))
        return reason;
    return storeText(field, value);
}

QString storeDepth(Options *options, const QString &value)
{
    if (value != QLatin1String("32") && value != QLatin1String("64"))
        return QStringLiteral("the depth is 32 or 64");
    options->rgbaDepth = value.toInt();
    return {};
}

QString storeQuality(Options *options, const QString &value)
{
    bool ok = false;
    const int quality = value.toInt(&ok);
    if (!ok || quality < 1 || quality > 100)
        return QStringLiteral("the quality is a whole number from 1 to 100");
    options->quality = quality;
    return {};
}

QString storeLayer(Options *options, const QString &value)
{
    bool ok = false;
    const int layer = value.toInt(&ok);
    if (!ok || layer < 1)
        return QStringLiteral("a layer is a whole number from 1, counted from the top");
    options->layer = layer;
    return {};
}

QString storeSetting(Options *options, const QString &value)
{
    const int equals = value.indexOf(QLatin1Char('='));
    if (equals < 1)
        return QStringLiteral("a setting is given as KEY=VALUE");
    options->settings.append({value.left(equals), value.mid(equals + 1)});
    return {};
}

template <bool Options::*Flag>
QString storeFlag(Options *options, const QString &)
{
    options->*Flag = true;
    return {};
}

template <QString Options::*Field>
QString storeImageOption(Options *options, const QString &value)
{
    return storeImage(&(options->*Field), value);
}

QString storeOutput(Options *options, const QString &value)
{
    return storeText(&options->output, value);
}

QString storeScript(Options *options, const QString &value)
{
    return storeText(&options->script, value);
}

QString storeExecute(Options *options, const QString &value)
{
    options->execute.append(value);
    return {};
}

const OptionRow kOptions[] = {
    {'s', "script", true, storeScript},
    {'e', "execute", true, storeExecute},
    {'o', "output", true, storeOutput},
    {0, "origin", true, storeImageOption<&Options::origin>},
    {0, "brush", true, storeImageOption<&Options::brush>},
    {0, "layer", true, storeLayer},
    {0, "depth", true, storeDepth},
    {0, "quality", true, storeQuality},
    {0, "set", true, storeSetting},
    {0, "settings", false, storeFlag<&Options::storedSettings>},
    {0, "gerber", true, nullptr},
    {0, "gerber-set", true, nullptr},
    {0, "strict", false, storeFlag<&Options::strict>},
    {0, "keep-going", false, storeFlag<&Options::keepGoing>},
    {'i', "interactive", false, storeFlag<&Options::interactive>},
    {0, "version", false, storeFlag<&Options::version>},
    {0, "help", false, storeFlag<&Options::help>},
};

/// One argument taken apart: the option as it was written, its row and a value that came
/// with it in the same argument.
struct Written {
    QString name;
    const OptionRow *row = nullptr;
    QString value;
    bool hasValue = false;
};

Written takeApart(const QString &argument)
{
    Written written;
    const bool isLong = argument.startsWith(QLatin1String("--"));
    const int equals = isLong ? argument.indexOf(QLatin1Char('=')) : -1;
    if (isLong) {
        written.name = argument.left(equals);
        written.hasValue = equals >= 0;
        written.value = argument.mid(equals + 1);
    } else {
        written.name = argument.left(2);
        written.hasValue = argument.size() > 2;
        written.value = argument.mid(2);
    }
    for (const OptionRow &row : kOptions) {
        const bool same = isLong ? written.name.mid(2) == QLatin1String(row.longName)
                                 : row.shortName && written.name[1] == QLatin1Char(row.shortName);
        if (same)
            written.row = &row;
    }
    return written;
}

/// Reads the option at arguments[*index], and its value from the next one if need be.
/// Returns what is wrong, or an empty text.
QString readOption(const QStringList &arguments, int *index, Options *options)
{
    Written written = takeApart(arguments[*index]);
    if (!written.row)
        return QStringLiteral("unknown option %1").arg(written.name);
    if (!written.row->takesValue && written.hasValue)
        return QStringLiteral("%1 takes no value").arg(written.name);
    if (written.row->takesValue && !written.hasValue) {
        if (*index + 1 >= arguments.size())
            return QStringLiteral("%1 needs a value").arg(written.name);
        written.value = arguments[++*index];
    }
    if (!written.row->store)
        return QStringLiteral("%1 is not available in this version").arg(written.name);
    const QString wrong = written.row->store(options, written.value);
    return wrong.isEmpty() ? wrong
                           : QStringLiteral("%1 %2: %3").arg(written.name, written.value, wrong);
}

QString readImage(const QString &argument, Options *options)
{
    QString checked;
    const QString wrong = storeImage(&checked, argument);
    if (!wrong.isEmpty())
        return argument.isEmpty() ? QStringLiteral("the name of an image is empty")
                                  : QStringLiteral("%1: %2").arg(argument, wrong);
    options->images.append(checked);
    return {};
}

/// Returns what is wrong with the options taken together, or an empty text.
QString checkTogether(const Options &options)
{
    if (options.interactive && !options.output.isEmpty())
        return QStringLiteral("--output does not go with --interactive, which has .save");
    const bool needsImage =
        !options.interactive || !options.script.isEmpty() || !options.execute.isEmpty();
    if (needsImage && options.images.isEmpty())
        return QStringLiteral("no image is given");
    return {};
}

/// A path by which two names of one file, existing or not, are equal.
QString identity(const QString &path)
{
    const QFileInfo info(path);
    const QString real = info.canonicalFilePath();
    if (!real.isEmpty())
        return real;
    const QString folder = info.absoluteDir().canonicalPath();
    return folder.isEmpty() ? QDir::cleanPath(info.absoluteFilePath())
                            : folder + QLatin1Char('/') + info.fileName();
}

/// The identity of an image to be read, empty for a fresh one.
QString inputIdentity(const QString &input)
{
    return input.startsWith(QLatin1String("new:")) || input.isEmpty() ? QString() : identity(input);
}
} // namespace

bool parseOptions(const QStringList &arguments, Options *options, QString *error)
{
    bool onlyImages = false;
    for (int i = 0; i < arguments.size() && error->isEmpty(); ++i) {
        const QString &argument = arguments[i];
        if (!onlyImages && argument == QLatin1String("--"))
            onlyImages = true;
        else if (!onlyImages && argument.size() > 1 && argument.startsWith(QLatin1Char('-')))
            *error = readOption(arguments, &i, options);
        else
            *error = readImage(argument, options);
        if (options->help || options->version)
            return true;
    }
    if (error->isEmpty())
        *error = checkTogether(*options);
    return error->isEmpty() && checkOutputs(*options, error);
}

bool parseNewImage(const QString &text, bool *isNew, int *width, int *height, QString *error)
{
    *isNew = text.startsWith(QLatin1String("new:"));
    if (!*isNew)
        return true;
    static const QRegularExpression form(QStringLiteral("\\Anew:([0-9]+)x([0-9]+)\\z"));
    const QRegularExpressionMatch match = form.match(text);
    // A number too long for an int gives 0 here, which is out of range as well.
    *width = match.captured(1).toInt();
    *height = match.captured(2).toInt();
    if (*width >= 1 && *width <= kMaxImageSide && *height >= 1 && *height <= kMaxImageSide)
        return true;
    *error = QStringLiteral("a new image is new:WxH, each side from 1 to %1").arg(kMaxImageSide);
    return false;
}

QString outputName(const QString &pattern, const QString &input, int position)
{
    const QString file = input.mid(input.lastIndexOf(QLatin1Char('/')) + 1);
    const QString name = file.left(file.lastIndexOf(QLatin1Char('.')));
    static const QRegularExpression mark(QStringLiteral("\\{(name|n)\\}"));
    QString result;
    int done = 0;
    // One pass, so that a mark inside of an input's own name stays as it is.
    QRegularExpressionMatchIterator matches = mark.globalMatch(pattern);
    while (matches.hasNext()) {
        const QRegularExpressionMatch match = matches.next();
        result += pattern.mid(done, match.capturedStart() - done);
        result += match.capturedLength() == 3 ? QString::number(position) : name;
        done = match.capturedEnd();
    }
    return result + pattern.mid(done);
}

bool checkOutputs(const Options &options, QString *error)
{
    if (options.output.isEmpty())
        return true;
    QHash<QString, int> readers; // file -> images that are read from it
    for (const QString &input : options.images)
        ++readers[inputIdentity(input)];
    const QStringList assigned{inputIdentity(options.origin), inputIdentity(options.brush)};
    QSet<QString> written;
    for (int i = 0; i < options.images.size(); ++i) {
        const QString output = outputName(options.output, options.images[i], i + 1);
        const QString file = identity(output);
        const bool own = file == inputIdentity(options.images[i]);
        const bool readElsewhere =
            own ? readers.value(file) > 1 : readers.contains(file) || assigned.contains(file);
        if (written.contains(file))
            *error = QStringLiteral("%1 would be written twice; use {name} or {n} in --output")
                         .arg(output);
        else if (readElsewhere)
            *error =
                QStringLiteral("%1 is also read by this run and is not overwritten").arg(output);
        if (!error->isEmpty())
            return false;
        written.insert(file);
    }
    return true;
}
