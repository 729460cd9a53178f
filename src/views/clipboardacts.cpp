// SPDX-License-Identifier: GPL-3.0-or-later
#include "views/clipboardacts.h"

bool clipboardHasPicture()
{
    return false;
}
bool copyToClipboard(image *)
{
    return false;
}
bool cutToClipboard(image *)
{
    return false;
}
bool pasteInto(image *, QPoint)
{
    return false;
}
bool pasteAsNew()
{
    return false;
}
bool pasteAsLayer(image *)
{
    return false;
}
