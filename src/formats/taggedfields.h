// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/image.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <type_traits>
#include <variant>
#include <vector>

/// The fields of the native files, in the order in which they are written. Writer and
/// reader both follow these lists; docs/file-formats.md shows them as tables.

constexpr int kTagBytes = 8;
constexpr int kLengthBytes = 8;

using FieldValue = std::variant<QString, double, int32_t, bool>;

/// One field: the member that it keeps, and what a reader takes where there is none.
template <class Owner>
struct FieldRule {
    QByteArray tag;
    std::variant<QString Owner::*, double Owner::*, int32_t Owner::*, bool Owner::*> member;
    FieldValue fallback;
    bool zeroExtended = false; ///< an int that is written as an unsigned one
    bool restored = true;      ///< a reader sets the member
};

/// One kind of picture in a file: an atomic one, a master or a layer.
struct TaggedPart {
    QByteArray prefix;
    QByteArray keyMark;   ///< the picture has its size and can be made
    QByteArray buildMark; ///< the picture is complete; empty: there is no such mark
    const char *label;    ///< of its planes in tracked memory, behind the name
    QByteArray widthTag, heightTag;
    std::vector<FieldRule<image>> head;     ///< before the key mark
    std::vector<FieldRule<image>> settings; ///< after it
    std::vector<QByteArray> planes;         ///< red, green, blue, alpha
    QByteArray packedTag;                   ///< whether the planes are packed

    QByteArray noteText, pointX, pointY, noteMark;
    std::vector<FieldRule<Notation>> note; ///< between the text and the points
};
const TaggedPart &atomicPart();
const TaggedPart &masterPart();
const TaggedPart &layerPart();

/// What a file begins with.
struct TaggedHeader {
    QByteArray magic, versionTag, keyTag;
    uint64_t key; ///< the same in each file: a damaged one shows by it
};
const TaggedHeader &atomicHeader();
const TaggedHeader &masterHeader();
constexpr int kTaggedVersion = 1;

QByteArray encodeInt(uint64_t value);
QByteArray encodeField(const FieldValue &value, bool zeroExtended);
/// The value in these bytes, of the fallback's type; the fallback itself where they hold
/// none. A real has to be finite.
FieldValue decodeField(const QByteArray &data, const FieldValue &fallback);

template <class Owner>
FieldValue memberValue(const Owner &owner, const FieldRule<Owner> &rule)
{
    return std::visit([&owner](auto member) { return FieldValue(owner.*member); }, rule.member);
}

/// Sets the member to a value of its own type.
template <class Owner>
void setMember(Owner *owner, const FieldRule<Owner> &rule, const FieldValue &value)
{
    std::visit(
        [&](auto member) {
            using Type = std::remove_reference_t<decltype(owner->*member)>;
            owner->*member = std::get<Type>(value);
        },
        rule.member);
}
