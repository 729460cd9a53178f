// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/memory.h"
#include "support/recordingworkspace.h"
#include "support/stack.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <random>

class WithWorkspace : public testing::Test
{
protected:
    RecordingWorkspace ws;
};
