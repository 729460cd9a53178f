// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/dialog/oppreview.h"

#include "operators/base/operatortable.h"
#include "operators/filter/yrbconvert.h"
#include "support/pictures.h"
#include "support/recordingworkspace.h"

#include <gtest/gtest.h>

TEST(OpPreview, ShowsTheTrueColoursOfAYrbPicture)
{
    RecordingWorkspace space;
    OperatorTable table;
    yrbConvert convert(&table);
    const ImagePtr img = plainImage(100, 100, 200 * 257, 90 * 257, 30 * 257);
    convert.apply(img.get(), nullptr);
    OpPreview view;
    view.setPicture(img.get(), false);
    const QRgb shown = view.shown().pixel(50, 50);
    EXPECT_NEAR(qRed(shown), 200, 1);
    EXPECT_NEAR(qGreen(shown), 90, 1);
    EXPECT_NEAR(qBlue(shown), 30, 1);
}
