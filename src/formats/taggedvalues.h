// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "formats/taggedfields.h"
#include "formats/taggedstream.h"

#include <algorithm>
#include <vector>

/// Lists of field rules written and read: the values of a picture, and its notations.

template <class Owner>
void writeRules(const std::vector<FieldRule<Owner>> &rules, const Owner &owner, FieldWriter *out)
{
    for (const FieldRule<Owner> &rule : rules)
        out->field(rule.tag, encodeField(memberValue(owner, rule), rule.zeroExtended));
}

void writeNotes(const TaggedPart &part, const image &img, FieldWriter *out);

/// The value of each rule of a list as read so far.
template <class Owner>
class FieldValues
{
public:
    explicit FieldValues(const std::vector<FieldRule<Owner>> &list) : rules(list) { reset(); }

    void reset()
    {
        values.clear();
        for (const FieldRule<Owner> &rule : rules)
            values.push_back(rule.fallback);
    }
    /// Takes the field if one of the rules is about it.
    bool take(FieldReader &field)
    {
        for (size_t i = 0; i < rules.size(); ++i)
            if (rules[i].tag == field.tag()) {
                values[i] = decodeField(field.data(), rules[i].fallback);
                return true;
            }
        return false;
    }
    void copyTo(Owner *owner) const
    {
        for (size_t i = 0; i < rules.size(); ++i)
            if (rules[i].restored)
                setMember(owner, rules[i], values[i]);
    }
    template <class Type>
    Type value(const QByteArray &tag) const
    {
        for (size_t i = 0; i < rules.size(); ++i)
            if (rules[i].tag == tag)
                return std::get<Type>(values[i]);
        return Type();
    }

private:
    const std::vector<FieldRule<Owner>> &rules;
    std::vector<FieldValue> values;
};

/// The notation at work and those that are complete.
class NoteReader
{
public:
    explicit NoteReader(const TaggedPart &kind) : part(kind), values(kind.note) {}

    void reset()
    {
        values.reset();
        note = Notation();
        lastX = 0;
    }
    /// Takes the field if it is one of a notation; a complete one joins the picture, if
    /// there is one already.
    bool take(FieldReader &field, image *owner)
    {
        if (field.tag() == part.noteText) {
            note.text = QString::fromUtf8(field.data());
            note.points.clear();
        } else if (field.tag() == part.pointX) {
            lastX = numberIn(field);
        } else if (field.tag() == part.pointY) {
            note.points.append({lastX, numberIn(field)});
        } else if (field.tag() == part.noteMark) {
            join(owner);
        } else {
            return values.take(field);
        }
        return true;
    }

private:
    static int32_t numberIn(FieldReader &field)
    {
        return std::get<int32_t>(decodeField(field.data(), FieldValue(0)));
    }
    void join(image *owner)
    {
        values.copyTo(&note);
        note.opacity = std::clamp(note.opacity, 0.0, 1.0);
        if (owner)
            owner->notations.append(note);
        // A list that grew on from one mark to the next would be copied each time.
        note.points.clear();
    }

    const TaggedPart &part;
    FieldValues<Notation> values;
    Notation note;
    int32_t lastX = 0;
};
