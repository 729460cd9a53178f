// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch.h"

#include "batch/console.h"
#include "batch/messages.h"
#include "batch/options.h"
#include "batch/session.h"

namespace
{
/// One image all the way. Nothing is written unless everything before the save went well.
bool runImage(Session *session, const Options &options, int index, QString *error)
{
    const QString &input = options.images[index];
    const bool done = session->load(input, error) &&
                      (options.layer == 0 || session->chooseLayer(options.layer, error)) &&
                      (options.output.isEmpty() ||
                       session->save(outputName(options.output, input, index + 1), error));
    session->drop();
    return done;
}

int runImages(Session *session, const Options &options, Messages *messages)
{
    int status = kStatusDone;
    const int count = int(options.images.size());
    for (int i = 0; i < count; ++i) {
        if (count > 1)
            messages->showProgress(QStringLiteral("%1/%2 ").arg(i + 1).arg(count) +
                                   options.images[i]);
        QString error;
        if (runImage(session, options, i, &error))
            continue;
        messages->error(error);
        status = kStatusImageFailed;
        if (!options.keepGoing)
            break;
    }
    return status;
}

int runConsole(Session *session, const Options &options, const Streams &streams, Messages *messages)
{
    QString error;
    if (!options.images.isEmpty() &&
        (!session->load(options.images.first(), &error) ||
         (options.layer != 0 && !session->chooseLayer(options.layer, &error)))) {
        messages->error(error);
        return kStatusImageFailed;
    }
    if (options.images.size() > 1)
        messages->notice(QStringLiteral("the console works on the first image alone"));
    Console console(session, streams);
    console.run();
    return kStatusDone;
}

int run(const Options &options, const Streams &streams, Messages *messages)
{
    Session session(messages);
    QString error;
    if (options.storedSettings)
        session.readStoredSettings();
    if (!session.configure(options, &error)) {
        messages->error(QStringLiteral("--set: ") + error);
        return kStatusWrongUsage;
    }
    if (!session.assignOrigin(options.origin, &error) ||
        !session.assignBrush(options.brush, &error)) {
        messages->error(error);
        return kStatusImageFailed;
    }
    return options.interactive ? runConsole(&session, options, streams, messages)
                               : runImages(&session, options, messages);
}
} // namespace

int runTool(const QStringList &arguments, const Streams &streams)
{
    Messages messages(streams.messages, streams.messagesAreTerminal);
    Options options;
    QString error;
    if (!parseOptions(arguments, &options, &error)) {
        messages.error(error);
        return kStatusWrongUsage;
    }
    if (options.help) {
        writeLine(streams.out, helpText().chopped(1));
        return kStatusDone;
    }
    if (options.version) {
        writeLine(streams.out, QStringLiteral("kestrane-batch " KESTRANE_VERSION));
        return kStatusDone;
    }
    return run(options, streams, &messages);
}
