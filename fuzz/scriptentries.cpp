// SPDX-License-Identifier: GPL-3.0-or-later
#include "scriptentries.h"

#include "area/areastate.h"
#include "core/image.h"
#include "core/memory.h"
#include "core/undo.h"
#include "core/workspace.h"
#include "formats/readers.h"
#include "operators/adjustment/tonecurve.h"
#include "operators/base/operatortable.h"
#include "operators/pipeline/colorblending.h"
#include "operators/table/allops.h"
#include "script/engine/exparser.h"
#include "script/engine/textexpression.h"
#include "script/run/scriptrunner.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <vector>

namespace
{
/// A person's patience: a run asks in between whether it is to stop.
constexpr auto kPatience = std::chrono::seconds(1);
/// Longer texts only repeat what shorter ones do, more slowly.
constexpr size_t kLongestInput = 1 << 16;

void require(bool condition, const char *what)
{
    if (condition)
        return;
    std::fprintf(stderr, "fuzz entry: %s\n", what);
    std::abort();
}

/// A person who loses patience, which also tries that a run of any script can be stopped.
class ImpatientWorkspace : public Workspace
{
public:
    bool cancelRequested() override { return std::chrono::steady_clock::now() > end; }

private:
    const std::chrono::steady_clock::time_point end = std::chrono::steady_clock::now() + kPatience;
};

QString inputText(const uint8_t *data, size_t size)
{
    return QString::fromUtf8(reinterpret_cast<const char *>(data),
                             int(std::min(size, kLongestInput)));
}

/// Takes every message, so that their making is tried too.
class SilentLog : public ScriptLog
{
public:
    void scriptReport(const ScriptReport &report) override
    {
        require(!report.rich.isEmpty(), "a message without its step");
    }
};

/// A parser that knows a few names of each kind.
void prepare(exParser *parser, ScriptLog *log)
{
    require(parser->ready(), "no operator table");
    parser->log = log;
    parser->debug = true;
    parser->setNumber(QStringLiteral("x"), QStringLiteral("3"));
    parser->setNumber(QStringLiteral("both"), QStringLiteral("2*3"));
    parser->setText(QStringLiteral("both"), QStringLiteral("text"));
    parser->setText(QStringLiteral("t"), QStringLiteral("a+\"b\",c"));
    bool ok = false;
    parser->evaluate(QStringLiteral("array(a,1,0-2,3.5,4)"), &ok);
    parser->evaluate(QStringLiteral("dim(a,2,2)"), &ok);
}

/// Calls `work` with a prepared parser and the input as text; nothing may stay in memory.
template <class Work>
void withParser(const uint8_t *data, size_t size, const Work &work)
{
    const int64_t before = memRecord.currentBlocks;
    {
        const ImpatientWorkspace space;
        SilentLog log;
        exParser parser;
        prepare(&parser, &log);
        work(parser, inputText(data, size));
    }
    require(memRecord.currentBlocks == before, "tracked memory was lost");
}

/// Tokens and value of one expression; evaluated again as a kept program it is the same.
void fuzzExparser(const uint8_t *data, size_t size)
{
    withParser(data, size, [](exParser &parser, const QString &text) {
        QStringList tokens;
        QList<int32_t> codes;
        parser.tokenize(text, &tokens, &codes);
        require(tokens.size() == codes.size(), "token lists of different lengths");
        for (const int32_t code : qAsConst(codes))
            require(code >= 0 && code < kOtRows, "a code beyond the table");
        bool ok = false;
        parser.evaluate(text, &ok);
        parser.setNumbers(QStringLiteral("y"), text);
        parser.setNumber(text.left(20), text);
        ExpressionProgram program(text);
        parser.evaluate(&program, &ok);
        parser.evaluate(&program, &ok);
    });
}

/// The text evaluator, the operand rule and the tokeniser behind the editor's colours.
void fuzzScriptText(const uint8_t *data, size_t size)
{
    withParser(data, size, [](exParser &parser, const QString &text) {
        QStringList tokens;
        QList<int> types;
        tokenizeText(parser, text, {QStringLiteral("exposure")}, &tokens, &types);
        require(tokens.size() == types.size(), "token lists of different lengths");
        evaluateText(parser, text);
        QString result;
        textOperand(parser, text, &result);
        result.clear();
        if (callTextFunction(parser, text, &result))
            require(result.size() <= 80, "too long a result of a text function");
        fetchText(parser, text, &result);
        namedParameter(parser, text);
    });
}

/// A whole script with presets on a small picture with an undo record. It neither reads files
/// nor waits: the words for these do nothing here.
void fuzzScriptRun(const uint8_t *data, size_t size)
{
    const int64_t before = memRecord.currentBlocks;
    {
        QString script = inputText(data, size);
        for (const char *verb : {"vload", "pause"})
            script.replace(QLatin1String(verb), QStringLiteral("testscripting"));
        const ImpatientWorkspace space;
        const AreaState area; // figures have their points in it
        OperatorTable table;
        addAllOperators(&table);
        colorblending blending;
        table.blending = &blending;
        SilentLog log;
        exParser parser;
        parser.log = &log;
        parser.blending = &blending;
        const ImageHolder picture{new image};
        require(picture->allocate(13, 7, QStringLiteral("picture")), "no memory for a picture");
        picture->fillGmask(40000);
        saveUndo(picture.get(), true);
        ScriptRunner runner(&parser, &table);
        runner.run(picture.get(), QStringLiteral("m_maxops=2000\nfont~\"Courier\"\n"), script);
        require(!runner.isRunning(), "a run that did not end");
        require(runner.lastEnd() != ScriptEnd::NoMemory, "memory was refused to a small run");
        require(parser.arrays.count() == 0, "arrays outlive the run");
        require(picture->valid() && picture->width > 0 && picture->height > 0,
                "an invalid picture");
    }
    require(memRecord.currentBlocks == before, "tracked memory was lost");
}

/// A curve from its file, which begins with a brace, or from its text. One that was taken is
/// whole, and comes back from its text and from its own file.
void fuzzCurve(const uint8_t *data, size_t size)
{
    const int64_t before = memRecord.currentBlocks;
    {
        const ImpatientWorkspace space;
        ToneCurve curve, again;
        QString error;
        const bool isFile = size > 0 && data[0] == '{';
        if (isFile ? curve.load(inputFile(".json", data, size), &error)
                   : curve.setText(inputText(data, size))) {
            require(curve.count() >= ToneCurve::kLeastKnots &&
                        curve.count() <= ToneCurve::kMostKnots,
                    "a wrong count");
            std::vector<uint16_t> table(65536);
            curve.fillTable(table.data());
            require(again.setText(curve.text()) && again.text() == curve.text(),
                    "a curve that its text does not give back");
            const QString path = inputFile(".saved", data, 0);
            require(curve.save(path, &error) && again.load(path, &error) &&
                        again.text() == curve.text(),
                    "a curve that cannot be saved and read again");
        } else {
            require(!isFile || !error.isEmpty(), "a refusal without a reason");
            require(curve.text() == again.text(), "a refusal that left a rest");
        }
    }
    require(memRecord.currentBlocks == before, "tracked memory was lost");
}
} // namespace

const std::vector<FuzzEntry> &scriptFuzzEntries()
{
    static const std::vector<FuzzEntry> entries = {{"exparser", fuzzExparser},
                                                   {"scripttext", fuzzScriptText},
                                                   {"scriptrun", fuzzScriptRun},
                                                   {"curve", fuzzCurve}};
    return entries;
}
