// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>

/// Fixed texts under which a part of a text is held while another rule runs over the rest.
/// They are part of the language: such a text written in a script means what it holds.

/// "+" inside of quotes, while a text expression is split at "+".
const QLatin1String kHeldPlus("cftvg84530");
/// ",," in the arguments of a text function.
const QLatin1String kHeldComma("t429h2u4gt");
/// "++" in the text operand of an operator.
const QLatin1String kHeldDoublePlus("u7864jfg83");

/// What the colouring of the script editor holds while other colours are put in.
const QLatin1String kHeldColours[] = {QLatin1String("zxcvb13524"), QLatin1String("adsfw68792"),
                                      QLatin1String("ovwhy74901"), QLatin1String("wsfvk64738"),
                                      QLatin1String("poiuy57681"), QLatin1String("8tokototk8")};

/// Kept free: no step holds anything under them.
const QLatin1String kHeldNothing[] = {QLatin1String("dwpfu90437"), QLatin1String("7tokototk7")};
