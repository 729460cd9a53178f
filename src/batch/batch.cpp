// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/batch.h"

#include "batch/console.h"
#include "batch/messages.h"
#include "batch/options.h"
#include "batch/scriptmessages.h"
#include "batch/scripttext.h"
#include "batch/session.h"

namespace
{
/// What a run works with beside its images.
struct Run {
    Session &session;
    const Options &options;
    const ScriptText &script;
    Messages &messages;
};

/// Loads the image, chooses its layer and runs the script on it.
int prepareImage(const Run &run, const QString &input)
{
    QString error;
    if (!run.session.load(input, &error) ||
        (run.options.layer != 0 && !run.session.chooseLayer(run.options.layer, &error))) {
        run.messages.error(error);
        return kStatusImageFailed;
    }
    if (!run.script.isGiven)
        return kStatusDone;
    ScriptMessages log(run.script, *run.session.parser(), &run.messages);
    run.session.parser()->log = &log;
    const bool through = run.session.runScript(run.script.text);
    run.session.parser()->log = nullptr;
    if (!run.options.strict || (through && !log.failed()))
        return kStatusDone;
    run.messages.error(input + (run.options.output.isEmpty()
                                    ? QStringLiteral(": its script failed")
                                    : QStringLiteral(": its script failed, so it is not saved")));
    return kStatusScriptFailed;
}

/// One image all the way. Nothing is written unless everything before the save went well.
int runImage(const Run &run, int index)
{
    const QString &input = run.options.images[index];
    int status = prepareImage(run, input);
    QString error;
    if (status == kStatusDone && !run.options.output.isEmpty() &&
        !run.session.save(outputName(run.options.output, input, index + 1), &error)) {
        run.messages.error(error);
        status = kStatusImageFailed;
    }
    run.session.drop();
    return status;
}

int runImages(const Run &run)
{
    int status = kStatusDone;
    const int count = int(run.options.images.size());
    for (int i = 0; i < count; ++i) {
        if (count > 1)
            run.messages.showProgress(QStringLiteral("%1/%2 ").arg(i + 1).arg(count) +
                                      run.options.images[i]);
        const int one = runImage(run, i);
        // A picture that is missing or was not written outweighs a script's error.
        if (status != kStatusImageFailed && one != kStatusDone)
            status = one;
        if (one != kStatusDone && !run.options.keepGoing)
            break;
    }
    return status;
}

int runConsole(const Run &run, const Streams &streams)
{
    if (!run.options.images.isEmpty()) {
        const int status = prepareImage(run, run.options.images.first());
        if (status != kStatusDone)
            return status;
    }
    if (run.options.images.size() > 1)
        run.messages.notice(QStringLiteral("the console works on the first image alone"));
    Console console(&run.session, &run.messages, streams);
    console.run();
    return kStatusDone;
}

int runSession(const Options &options, const ScriptText &script, const Streams &streams,
               Messages *messages)
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
    const Run run{session, options, script, *messages};
    return options.interactive ? runConsole(run, streams) : runImages(run);
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
    ScriptText script;
    if (!readScript(options, &script, &error)) {
        messages.error(error);
        return kStatusWrongUsage;
    }
    return runSession(options, script, streams, &messages);
}
