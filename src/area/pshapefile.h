// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class PShape;

/// Writes the remembered shape, named for its file. False with a reason, and an old file as
/// it was, if there is no such shape or it could not be written.
bool savePShape(const QString &path, const PShape &shape, QString *error);
/// Reads a shape file and makes it the current shape. False with a reason, and the shape as
/// it was, for a file that cannot be read, is damaged or is no shape file.
bool loadPShape(const QString &path, PShape *shape, QString *error);
