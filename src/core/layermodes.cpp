// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/layermodes.h"

const std::vector<LayerModeEntry> &layerModeTable()
{
    // The order is that of the combo box; files and scripts use the ids.
    static const std::vector<LayerModeEntry> table = {
        {"Normal", 0, false, true},       {"Behind", 37, false, true},
        {"Add", 1, false, true},          {"AddGrey", 4, false, true},
        {"AbsSub.", 2, false, true},      {"Subtract", 3, false, true},
        {"Difference", 54, false, true},  {"Multiply", 5, false, true},
        {"Divide", 38, false, true},      {"Dodge", 8, false, true},
        {"Burn", 9, false, true},         {"Vivid", 22, false, true},
        {"Screen", 23, false, true},      {"Overlay", 36, false, true},
        {"Brighten", 41, false, true},    {"Maximum", 11, false, true},
        {"Dominate", 42, false, true},    {"Darken", 28, false, true},
        {"Minimum", 12, false, true},     {"Submit", 43, false, true},
        {"Brightness", 39, false, false}, {"Contrast", 40, false, false},
        {"Drive", 50, true, false},       {"Tint", 33, false, false},
        {"Saturate", 34, false, false},   {"Envalue", 35, false, false},
        {"Average", 13, false, true},     {"Luma", 14, false, true},
        {"Mask", 7, false, false},        {"InvMask", 10, false, false},
        {"GreyMask", 24, false, false},   {"+HCKey", 25, true, false},
        {"-HCKey", 26, true, false},      {"Match", 60, false, false},
        {"No Match", 61, false, false},   {"Red", 15, false, true},
        {"Green", 16, false, true},       {"Blue", 17, false, true},
        {"Cyan", 18, false, true},        {"Magenta", 19, false, true},
        {"Yellow", 20, false, true},      {"Black", 21, false, true},
        {"Hue", 30, false, false},        {"Saturation", 31, false, false},
        {"Value", 32, false, false},      {"H", 51, false, false},
        {"S", 52, false, false},          {"V", 53, false, false},
        {"Acc+Avg", 27, false, false},    {"Median", 29, false, false},
        {"Warp", 6, false, false},        {"AND", 44, false, false},
        {"NAND", 45, false, false},       {"OR", 46, false, false},
        {"NOR", 47, false, false},        {"XOR", 48, false, false},
        {"XNOR", 49, false, false},       {"PCB-Mask", 59, false, true},
        {"PCB-Copper", 55, false, true},  {"PCB-Drill", 57, false, true},
        {"PCB-Legend", 56, false, true},  {"PCB-Profile", 58, false, false},
    };
    return table;
}
