// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QLatin1String>

/// Fixed texts under which a part of a text is held while another rule runs over the rest.
/// They are part of the language: such a text written in a script means what it holds.
template <int N>
constexpr QLatin1String heldText(const char (&text)[N])
{
    return QLatin1String(text, N - 1);
}

/// "+" inside of quotes, while a text expression is split at "+".
constexpr QLatin1String kHeldPlus = heldText("cftvg84530");
/// ",," in the arguments of a text function.
constexpr QLatin1String kHeldComma = heldText("t429h2u4gt");
/// "++" in the text operand of an operator.
constexpr QLatin1String kHeldDoublePlus = heldText("u7864jfg83");

/// What the colouring of the script editor holds while other colours are put in.
constexpr QLatin1String kHeldColours[] = {heldText("zxcvb13524"), heldText("adsfw68792"),
                                          heldText("ovwhy74901"), heldText("wsfvk64738"),
                                          heldText("poiuy57681"), heldText("8tokototk8")};

/// Kept free: no step holds anything under them.
constexpr QLatin1String kHeldNothing[] = {heldText("dwpfu90437"), heldText("7tokototk7")};
