// SPDX-License-Identifier: GPL-3.0-or-later
#include "area/pshape.h"

PShape::PShape() = default;
PShape::~PShape() = default;
void PShape::remember(const AreaPoint *, int, const QString &, bool) {}
bool PShape::convert()
{
    return false;
}
ShapePoint PShape::placed(int) const
{
    return {0, 0};
}
int PShape::drawnCount() const
{
    return closed ? count - 1 : count;
}
bool PShape::rotateStep(int, uint64_t)
{
    return false;
}
void PShape::setRotation(double radians)
{
    rotation = radians;
}
