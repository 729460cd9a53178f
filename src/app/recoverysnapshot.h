// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <memory>

class image;

/// A number for all that a native file keeps of a picture, with the layers of a master: two
/// states that differ have different ones, for any practical purpose.
QByteArray fingerprintOf(const image &picture);

/// What a native file keeps of a picture, copied, so that a worker can write it while the
/// person goes on. Made and destroyed on the main thread.
class RecoverySnapshot
{
public:
    /// Null if memory does not allow the copy, or would be short with it.
    static std::unique_ptr<RecoverySnapshot> of(const image &picture);
    ~RecoverySnapshot();
    RecoverySnapshot(const RecoverySnapshot &) = delete;
    RecoverySnapshot &operator=(const RecoverySnapshot &) = delete;

    const image &picture() const { return *top; }

private:
    RecoverySnapshot() = default;
    image *top = nullptr;
};
