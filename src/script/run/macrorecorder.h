// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QMap>
#include <QString>
#include <QStringList>

#include <cstdint>
#include <functional>
#include <vector>

class OperatorTable;
class OpWrapper;
class Script;
class image;
struct ToolFigure;

/// How a figure joins the selection before it.
enum class AreaJoin { Replace, Add, Subtract };

/// Writes what a person does to a picture into the Script operator, as lines that do the same
/// to the untouched picture, to the bit: settings that differ from those the macro has given
/// so far, then the act. The one before is compared first: where a selection was made by
/// something that has no line, the selection itself is written, and other changes get a
/// remark. An undo takes the lines of its act out again.
///
/// While it is off all calls do nothing.
class MacroRecorder
{
public:
    /// Both are borrowed.
    MacroRecorder(OperatorTable *operators, Script *program) : table(operators), script(program) {}

    /// A macro begins, or ends: then what no act has used yet of a selection is written too.
    /// `current`: the picture that the person looks at, or null.
    void setOn(bool recording, const image *current);
    bool isOn() const { return on; }
    /// Called whenever the program's text has changed: what else shows it follows.
    std::function<void()> textChanged;

    // --- Area acts: the first call comes before, the other after a change that was made -----
    /// `usesSelection`: the act works on the selection as it is. `before`: the picture as an
    /// undo will give it back, where that is not how it is now.
    void areaBegins(const image &img, bool usesSelection, const image *before = nullptr);
    /// `listed`: points in the shared list, for the tools whose figures stand there.
    void figureDone(const image &img, const ToolFigure &figure, AreaJoin join, int listed);
    /// An act on the whole selection by its words behind `area`; where there are none the
    /// selection is written that it made.
    void areaDone(const image &img, const QString &words);
    /// Whether an act of these words works on the selection as it is.
    static bool usesSelection(const QString &words);

    // --- Applies ------------------------------------------------------------------------------
    /// Before and after OperatorTable::prepareAndApply, which shapes the selection first; an
    /// Apply outside of them takes it as it stands.
    void shapeBegins(const image &target);
    void shapeEnds() { shaping = false; }
    /// What OperatorTable::applyObserver hears.
    void applied(const image &target, int id, bool begins);

    // --- History ------------------------------------------------------------------------------
    /// The picture went back, or forth, by a step of its undo or redo list.
    void undone(const image &img);
    void redone(const image &img);

private:
    using Values = QMap<QString, QString>;

    /// What a picture is at one moment, by which two moments are told apart.
    struct PictureState {
        int width = 0, height = 0;
        uint64_t mask = 0, samples = 0;
        bool sameSamples(const PictureState &other) const
        {
            return width == other.width && height == other.height && samples == other.samples;
        }
        bool sameMask(const PictureState &other) const
        {
            return width == other.width && height == other.height && mask == other.mask;
        }
        bool operator==(const PictureState &other) const = default;
    };
    static PictureState stateOf(const image &img);

    /// One recorded act.
    struct Step {
        const image *picture = nullptr; ///< compared only
        PictureState before, after;
        Values wanted;     ///< settings that it needs
        Values heldBefore; ///< those that the macro had given before it
        QString head;      ///< lines that later steps count on: the start, settings
        QString body;
    };

    const PictureState *expected(const image &img) const;
    void openDraft(const image &img, const image &before, bool needsSelection);
    void closeDraft(const image &img, const PictureState &after, const Values &wanted,
                    const QString &line);
    void append(const image &img, Step step);
    void finishApply(const image &target, int id);
    void takeOut(size_t index);
    QString settingLines(const Values &wanted);
    void addParameters(const OpWrapper &op, bool lineless);
    void writePending(const image *current);
    void setText(const QString &text);

    OperatorTable *table;
    Script *script;
    bool on = false;
    const image *startPicture = nullptr; ///< compared only
    PictureState start;
    std::vector<Step> steps;    ///< of the present macro
    std::vector<Step> takenOut; ///< by undo, the next one to come back last
    Values held;                ///< what the macro has given so far

    // The act under way
    Step draft;
    bool shaping = false; ///< its Apply shapes the selection first
    bool shapes = false;  ///< which makes a difference, here or on another picture
    PictureState shaped;  ///< as the operator found it
    Values shapeValues, applyValues;
    QString applyLine; ///< empty: nothing that is recorded
    uint32_t seed = 0;
};
