// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/session.h"

#include "batch/messages.h"
#include "core/compose.h"
#include "core/undo.h"
#include "formats/load.h"
#include "formats/save.h"
#include "operators/table/allops.h"
#include "script/run/script.h"

#include <QFileInfo>
#include <QSettings>

#include <memory>

namespace
{
/// Why a file could not be read, where the file itself tells; else what the reader said.
QString readFailure(const QString &path, const QString &said)
{
    const QFileInfo info(path);
    if (!info.exists())
        return QStringLiteral("no such file");
    if (info.isDir())
        return QStringLiteral("is a folder");
    if (!info.isReadable())
        return QStringLiteral("may not be read");
    return said.isEmpty() ? QStringLiteral("not a picture that can be read") : said;
}

constexpr int kScriptOperator = 82;

const QString kNotLayered = QStringLiteral("not a layered picture");

Script *scriptOperator(const OperatorTable &table)
{
    return dynamic_cast<Script *>(table.byId(kScriptOperator));
}

QString writeFailure(const QString &path, const QString &said)
{
    const QFileInfo info(path), folder(info.path());
    if (!folder.isDir())
        return QStringLiteral("there is no folder of that name");
    if (info.isDir())
        return QStringLiteral("is a folder");
    if (!folder.isWritable() || (info.exists() && !info.isWritable()))
        return QStringLiteral("may not be written");
    return said.isEmpty() ? QStringLiteral("could not be written") : said;
}
} // namespace

Session::Session(Messages *sink) : messages(sink), space(sink), runner(&language, &table)
{
    table.blending = &blending;
    language.blending = &blending;
    addAllOperators(&table);
    if (Script *script = scriptOperator(table))
        script->runner = &runner;
}

Session::~Session()
{
    drop();
    for (image **held : {&originImage, &brushImage})
        end(held);
}

void Session::readStoredSettings()
{
    QSettings store(QStringLiteral("Zolvine"), QStringLiteral("Kestrane"));
    for (const Workspace::Setting &setting : space.settings()) {
        const QString key = QLatin1String(setting.key);
        QString reason;
        if (setting.stored && store.contains(key) &&
            !space.setSetting(key, store.value(key).toString(), &reason))
            messages->warning(QStringLiteral("stored setting passed over: ") + reason);
    }
    table.store = &store;
    table.settings(false);
    table.store = nullptr;
}

bool Session::set(const QString &key, const QString &value, QString *error)
{
    if (table.parameterText(key).isNull())
        return space.setSetting(key, value, error);
    if (table.setParameter(key, value))
        return true;
    *error = QStringLiteral("\"%1\" is no value of %2").arg(value, key);
    return false;
}

bool Session::configure(const Options &options, QString *error)
{
    for (const auto &[key, value] : options.settings)
        if (!set(key, value, error))
            return false;
    if (options.rgbaDepth)
        space.rgbaDepth = options.rgbaDepth;
    if (options.quality)
        space.jpegImageQuality = options.quality;
    return true;
}

image *Session::read(const QString &input, QString *error)
{
    bool isNew = false;
    int width = 0, height = 0;
    QString reason;
    std::unique_ptr<image> result;
    messages->takeNotice();
    if (!parseNewImage(input, &isNew, &width, &height, &reason)) {
        // The reason is set.
    } else if (isNew) {
        result = std::make_unique<image>();
        space.giveSerial(result.get()); // its name is made of it
        if (!result->allocate(width, height, QString())) {
            result.reset();
            reason = QStringLiteral("not enough memory");
        }
    } else {
        const FileRecord record = FileRecord::fromPath(input);
        result.reset(loadImageFile(record.fullPath, record.name, &record, false));
        if (!result)
            reason = readFailure(input, messages->takeNotice());
    }
    if (!result)
        *error = input + QStringLiteral(": ") + reason;
    return result.release();
}

bool Session::replace(image **held, const QString &input, QString *error)
{
    image *fresh = read(input, error);
    if (!fresh)
        return false;
    end(held);
    *held = fresh;
    space.images.append(fresh);
    if (fresh->serial == 0)
        space.giveSerial(fresh);
    fresh->rebuildTitle();
    return true;
}

void Session::end(image **held)
{
    if (!*held)
        return;
    space.images.removeAll(*held);
    destroyTree(held);
    *held = nullptr;
}

bool Session::load(const QString &input, QString *error)
{
    if (!replace(&currentImage, input, error))
        return false;
    currentLayer = nullptr;
    inputName = input;
    return true;
}

image *Session::current()
{
    if (!currentLayer && currentImage && currentImage->needsRebuild)
        compose(currentImage, false);
    return currentLayer ? currentLayer : currentImage;
}

QList<image *> Session::layers() const
{
    return currentImage ? currentImage->layers : QList<image *>();
}

bool Session::chooseLayer(int number, QString *error)
{
    const int count = int(layers().size());
    if (number < 0 || number > count || count == 0) {
        *error = count == 0 ? inputName + QStringLiteral(": ") + kNotLayered
                            : QStringLiteral("%1: the layers are 1 to %2, not %3")
                                  .arg(inputName)
                                  .arg(count)
                                  .arg(number);
        return false;
    }
    currentLayer = number == 0 ? nullptr : layers().at(count - number);
    return true;
}

bool Session::composeCurrent(QString *error)
{
    if (layers().isEmpty()) {
        *error = kNotLayered;
        return false;
    }
    compose(currentImage, false);
    return true;
}

bool Session::runScript(const QString &text)
{
    image *target = current();
    Script *script = scriptOperator(table);
    if (!target || !script)
        return false;
    script->text = text;
    if (target->kind != 1) {
        table.currentOp = kScriptOperator;
        table.prepareAndApply(target, true);
    } else {
        // Apply leaves a master alone, whose samples are composed of its layers. A script may
        // do more than change samples: it selects, calculates, reads and names.
        beginAct(target);
        target->changed = true;
        runner.run(target, script->presetsOn ? script->presets : QString(), text);
        target->stampModification();
    }
    return runner.lastEnd() == ScriptEnd::Done && runner.failedStatements() == 0;
}

void Session::drop()
{
    currentLayer = nullptr;
    end(&currentImage);
    // What a script loaded or assigned for this image is none of the next one's.
    space.assignOrigin(originImage);
    for (image *loaded : QList<image *>(space.images))
        if (loaded != originImage && loaded != brushImage)
            end(&loaded);
}

bool Session::save(const QString &path, QString *error)
{
    const bool flat = !path.endsWith(QLatin1String(".elx"), Qt::CaseInsensitive);
    messages->takeNotice();
    if (saveImageFile(FileRecord::fromPath(path), current(), flat))
        return true;
    *error = path + QStringLiteral(": ") + writeFailure(path, messages->takeNotice());
    return false;
}

bool Session::assignOrigin(const QString &input, QString *error)
{
    if (!input.isEmpty() && !replace(&originImage, input, error))
        return false;
    if (input.isEmpty())
        end(&originImage);
    space.assignOrigin(originImage);
    return true;
}

bool Session::assignBrush(const QString &input, QString *error)
{
    if (!input.isEmpty() && !replace(&brushImage, input, error))
        return false;
    if (input.isEmpty())
        end(&brushImage);
    space.assignBrush(brushImage);
    return true;
}
