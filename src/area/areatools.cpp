// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/areatools.h"

#include "core/workspace.h"

bool Workspace::*smoothingSwitch(int tool)
{
    switch (tool) {
    case kToolRectangle:
        return &Workspace::rectaa;
    case kToolEllipse:
        return &Workspace::ellaa;
    case kToolPolygon:
        return &Workspace::polyaa;
    case kToolPencil:
        return &Workspace::pencilaa;
    case kToolWand:
        return &Workspace::wandaa;
    case kToolPolyspline:
        return &Workspace::splineaa;
    case kToolPShape:
        return &Workspace::pshapeaa;
    default:
        return nullptr;
    }
}
