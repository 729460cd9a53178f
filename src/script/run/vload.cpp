// SPDX-License-Identifier: GPL-3.0-or-later
// The verb that reads a picture from a file, to be looked at or as origin image.
#include "script/run/scriptrunner.h"

#include "core/image.h"
#include "core/workspace.h"
#include "formats/load.h"
#include "script/engine/exparser.h"
#include "script/engine/expression.h"
#include "script/engine/textexpression.h"
#include "script/run/scriptdefaults.h"

#include <QFileInfo>

#include <utility>

namespace
{
/// An open picture that was read from that file, or null.
image *openPicture(const QString &path)
{
    const QString wanted = QFileInfo(path).canonicalFilePath();
    for (image *picture : workspace()->images)
        if (Workspace::validImage(picture) && !wanted.isEmpty() &&
            QFileInfo(picture->fullPath).canonicalFilePath() == wanted)
            return picture;
    return nullptr;
}

/// The file as it is written: a word, a variable, or a text in quotes that may hold blanks.
bool fileSpec(const exParser &parser, const QStringList &words, QString *path)
{
    const QString written = words.join(QLatin1Char(' '));
    const QString inner = unquoted(written);
    if (inner != written) {
        *path = inner;
        return true;
    }
    return words.size() == 1 && textOperand(parser, written, path);
}
} // namespace

/// A picture that is open already serves as it is, unless it is to be read again. As origin
/// image it is not shown, and goes when another origin image is assigned.
bool ScriptRunner::vloadVerb(const QStringList &tokens)
{
    const int count = tokens.size();
    int asOrigin = 0, reload = 0;
    QString path;
    if (!intParam(tokens[count - 2], 0, 1, &asOrigin) ||
        !intParam(tokens[count - 1], 0, 1, &reload) ||
        !fileSpec(*parser, tokens.mid(1, count - 3), &path) || path.isEmpty())
        return false;
    if (internal || !workspace())
        return true;
    image *picture = reload ? nullptr : openPicture(path);
    const bool isOpen = picture != nullptr;
    if (!isOpen) {
        const FileRecord record = FileRecord::fromPath(path);
        picture = loadImageFile(record.fullPath, record.name, &record, !asOrigin);
        followEvents(); // a long load lets them in
    }
    if (!picture) {
        parser->report(QStringLiteral("e: cannot load \"%1\"").arg(path));
    } else if (asOrigin) {
        takeOrigin(picture, !isOpen);
    }
    return true;
}

void ScriptRunner::takeOrigin(image *picture, bool owned)
{
    workspace()->assignOrigin(picture);
    dropOldOrigin();
    if (owned)
        loadedOrigin = picture;
    followImages();
    setImageVariables(parser, target, parser->images.origin);
}

/// An origin image of our own lives as long as it is assigned.
void ScriptRunner::dropOldOrigin()
{
    if (!loadedOrigin || (workspace() && workspace()->originImage == loadedOrigin))
        return;
    destroyTree(&loadedOrigin);
}
