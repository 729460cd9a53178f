// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <cstdint>
#include <memory>
#include <vector>

class QIODevice;

/// Writes fields one behind the other and remembers whether all of them went out.
class FieldWriter
{
public:
    explicit FieldWriter(QIODevice *device) : out(device) {}
    void mark(const QByteArray &tag) { field(tag, QByteArray()); }
    void field(const QByteArray &tag, const QByteArray &data);
    /// A field whose data stands in several pieces.
    void field(const QByteArray &tag, const std::vector<QByteArray> &pieces);
    bool good() const { return whole; }

private:
    void put(const QByteArray &bytes);

    QIODevice *out;
    bool whole = true;
};

/// Walks over the fields of a file. Memory is taken only for data that is asked for, and
/// never more than what is left of the file.
class FieldReader
{
public:
    struct Block {
        std::unique_ptr<unsigned char[]> bytes;
        int64_t size = 0;
    };

    explicit FieldReader(QIODevice *device);
    /// Goes on to the next field, over what was not read of this one. False at the end of
    /// the file, or if it is cut within the next field; cut() tells which.
    bool next();
    /// Bytes that a field should have did not come.
    bool cut() const { return isCut; }

    const QByteArray &tag() const { return currentTag; }
    int64_t length() const { return currentLength; }
    /// Data of a field that is not a plane: none of it, if it is absurdly long.
    QByteArray data();
    /// The first bytes of the data, `most` at most. Where memory does not allow it the file
    /// counts as cut: a plane must not silently come out empty.
    Block block(int64_t most);
    int64_t position() const { return nextField; }

private:
    QIODevice *in;
    int64_t fileBytes;
    int64_t nextField = 0;
    int64_t currentLength = 0;
    QByteArray currentTag;
    bool isCut = false;
};
