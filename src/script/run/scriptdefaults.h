// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QString>

class exParser;
class image;

/// Sets the constants and the defaults that a script starts with.
void setScriptDefaults(exParser *parser);
/// Sets the variables that tell of the image, of the origin image and of the present time.
/// Either image may be null.
void setImageVariables(exParser *parser, const image *target, const image *origin);

/// What a person reads when a run was ended: by the limit of operations, or because there was
/// no limit to be read.
QString limitPassedMessage(double limit);
QString limitBadMessage();
