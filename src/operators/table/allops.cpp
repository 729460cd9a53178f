// SPDX-License-Identifier: GPL-3.0-or-later
#include "operators/table/allops.h"

#include "operators/adjustment/burn.h"
#include "operators/adjustment/ceiling.h"
#include "operators/adjustment/colorize.h"
#include "operators/adjustment/contrastbrightness.h"
#include "operators/adjustment/curvesop.h"
#include "operators/adjustment/darken.h"
#include "operators/adjustment/darknessgain.h"
#include "operators/adjustment/dodge.h"
#include "operators/adjustment/floor.h"
#include "operators/adjustment/forcedynamic.h"
#include "operators/adjustment/gain.h"
#include "operators/adjustment/gamma.h"
#include "operators/adjustment/histeq.h"
#include "operators/adjustment/hue.h"
#include "operators/adjustment/levels.h"
#include "operators/adjustment/negative.h"
#include "operators/adjustment/sample.h"
#include "operators/adjustment/saturation.h"
#include "operators/adjustment/whitebalance.h"
#include "operators/adjustment/winlevel.h"
#include "operators/alpha/alphamod.h"
#include "operators/alpha/keyop.h"
#include "operators/base/operatortable.h"
#include "operators/base/opwrapper.h"
#include "operators/compose/colorfill.h"
#include "operators/filter/channelmove.h"
#include "operators/filter/exposure.h"
#include "operators/filter/monochrome.h"
#include "operators/filter/rgbrotate.h"
#include "operators/filter/yrbconvert.h"
#include "script/run/script.h"

#include <new>

namespace
{
/// Without memory the table gets a null operator, and says so.
template <class Operator>
std::unique_ptr<OpWrapper> make(OperatorTable *table)
{
    return std::unique_ptr<OpWrapper>(new (std::nothrow) Operator(table));
}

// Id, group, script name, menu name, page of the manual, usage line, and how the operator is
// made: null while there is none.
// clang-format off
const OperatorTable::Row kRows[] = {
    {1, kGroupAlpha, "alphamod", "Alpha Modify", "opalphamodify.html",
     "alphamod [Amount=0...255] [Mode=0...9]", make<AlphaMod>},
    {2, kGroupMeta, "annotation", "Annotation", "opannotation.html",
     "%1 [content]", nullptr},
    {3, kGroupMeta, "author", "Author", "opauthor.html",
     "%1 [content]", nullptr},
    {4, kGroupGeometry, "bend", "Bend - WARP", "opbend.html",
     "bend [Mode=0...1] [Amount=-100...100]", nullptr},
    {5, kGroupCompose, "brushstroke", "Brushstroke", "opbrushstroke.html",
     "", nullptr},
    {6, kGroupAdjustment, "burn", "Burn", "opburn.html",
     "burn [Amount=0...100]", make<Burn>},
    {7, kGroupMeta, "camera", "Camera", "opcamera.html",
     "%1 [shutter=0...50000] [aperture=.1...100] [focallength=.1...50000] [iso=1...1000000]", nullptr},
    {8, kGroupGeometry, "caricature", "Caricature - WARP", "opcaricature.html",
     "caricature [Amount=0...100]", nullptr},
    {9, kGroupAdjustment, "ceiling", "Ceiling", "opceiling.html",
     "ceiling [Sample=0...1] [Mode=0...2]", make<Ceiling>},
    {10, kGroupGeometry, "centerdefine", "Center Selection", "opcenter.html",
     "", nullptr},
    {11, kGroupFilter, "channelmove", "Channel Move", "opchannelmove.html",
     "channelmove [Select=0...4]", make<ChannelMove>},
    {12, kGroupFilter, "chromanoise", "Chroma Noise Reduction", "opchromanoise.html",
     "chromanoise [Degree=0...100] [radius=1...20] [threshold=0...100] [hue=0...1] [sat=0...1]", nullptr},
    {13, kGroupCompose, "colorfill", "Color Fill", "opcolorfill.html",
     "colorfill [Red=0...255] [Green=0...255] [Blue=0...255]", make<ColorFill>},
    {14, kGroupAdjustment, "colorize", "Colorize", "opcolorize.html",
     "colorize [Red=0...255] [Green=0...255] [Blue=0...255] [Mixture=0...100] [ApplySat=0...1]", make<Colorize>},
    {15, kGroupFilter, "colormap", "Color Map", "opcolormap.html",
     "", nullptr},
    {16, kGroupFilter, "convolve", "Convolve", "opconvolve.html",
     "convolve [Cell=-1000.0...1000.0] (x9) [Mono=0,...1] [Mix=0...100]", nullptr},
    {17, kGroupFilter, "creduce", "Color Reduction", "opcreduce.html",
     "creduce [Depth=3...7] [Dither=0...1] [Dithtype=0...2] [Save=0...1] [Fixed=0...1] [Force=0...1]", nullptr},
    {18, kGroupAdjustment, "contbrit", "Contrast and Brightness", "opcontrastbrightness.html",
     "contbrit [Contrast=-100...100] [Brightness=-100...100] [Center=-100...100] [R=0...1] [G=0...1] [B=0...1]", make<ContrastBrightness>},
    {19, kGroupMeta, "copyright", "Copyright", "opcopyright.html",
     "%1 [content]", nullptr},
    {20, kGroupCompose, "crop", "Crop", "opcrop.html",
     "crop [ToEdgeAlpha=0...1] [AlphaLevel 0...255] [makeTile=0...3]", nullptr},
    {21, kGroupAdjustment, "curves", "Curves", "opcurves.html",
     "", make<Curvesop>},
    {22, kGroupAdjustment, "darken", "Darken", "opdarken.html",
     "darken [Amount=0...200] [Limit=0...255]", make<Darken>},
    {23, kGroupAdjustment, "darknessgain", "Darkness Gain", "opdarknessgain.html",
     "darknessgain [Gain=0...100] [Hump=0...100] [Range=0...100]", make<DarknessGain>},
    {24, kGroupAdjustment, "dodge", "Dodge", "opdodge.html",
     "dodge [Amount=0...100]", make<Dodge>},
    {25, kGroupGeometry, "dome", "Dome - WARP", "opdome.html",
     "dome [Amount=0...500]", nullptr},
    {26, kGroupMeta, "dpi", "DPI", "opdpi.html",
     "dpi [xDPI=1...3200] [yDPI=1...3200]", nullptr},
    {27, kGroupFilter, "edgedetect", "Edge Detection", "opedgedetect.html",
     "edgedetect [Amount=-100...100]", nullptr},
    {28, kGroupFilter, "emboss", "Emboss", "opemboss.html",
     "emboss [Amount=-100...100] [Absolute=0...1] [Direction=0...7]", nullptr},
    {29, kGroupFilter, "exposure", "Exposure", "opexposure.html",
     "exposure [Amount=-100...100] [Mode=0...1]", make<Exposure>},
    {30, kGroupGeometry, "flip", "Flip - WARP", "opflip.html",
     "flip [Horizontal=0...1] [Vertical=0...1]", nullptr},
    {31, kGroupAdjustment, "floor", "Floor", "opfloor.html",
     "floor [Sample=0...1] [Mode=0...2]", make<Floor>},
    {32, kGroupAdjustment, "forcedynamic", "Force Dynamic", "opforcedynamic.html",
     "forcedynamic [Sample=0...1] [Exclude=0...1]", make<ForceDynamic>},
    {33, kGroupRender, "fractals", "Fractals", "opfractals.html",
     "%1 [Mode=0...3] [P1=-100...100] [P2=-100...100] [Z=1...100] [Px=-100...100] [Py=-100...100] [Po=0...255] [Sm=0...1]", nullptr},
    {34, kGroupCompose, "frame", "Frame", "opframe.html",
     "frame [Outer=0...50] [2nd=0...50] [3rd=0...50] [Inner=0...50]", nullptr},
    {35, kGroupAdjustment, "gain", "Gain", "opgain.html",
     "gain [Black=0...200] [Gain=0...200] [White=0...200]", make<Gain>},
    {36, kGroupAdjustment, "gamma", "Gamma", "opgamma.html",
     "gamma [Gamma=.25...4.0]", make<Gamma>},
    {37, kGroupFilter, "gaussian", "Gaussian Blur", "opgaussianblur.html",
     "gaussian [Radius=1...20] [mix=0...100]", nullptr},
    {38, kGroupMeta, "gps", "GPS", "opgps.html",
     "%1 [latitude=-90...90] [longtitude=-180...180] [altitude=meters]", nullptr},
    {39, kGroupCompose, "gchord", "Guitar Chord", "opgchord.html",
     "gchord []", nullptr},
    {40, kGroupFilter, "halftone", "Halftone", "ophalftone.html",
     "halftone [dither=0...1] [cropedge=0...1] [threshold=1...254] [gamma=0...100] [source=0...5] [dmode=0...7]", nullptr},
    {41, kGroupAdjustment, "histeq", "Histogram Equalize", "ophisteq.html",
     "histeq has no parameters", make<HistEq>},
    {42, kGroupFilter, "hremove", "Horizontal Remove", "ophorizontalremove.html",
     "%1 [red=0,...1] [green=0,...1] [blue=0,...1]", nullptr},
    {43, kGroupAdjustment, "hue", "Hue", "ophue.html",
     "hue [Hue=-100...100]", make<Hue>},
    {44, kGroupFilter, "infill", "Infill", "opinfill.html",
     "infill [method=0...1] [texture=0...1] [tx=0...50000] [ty=0...50000] [mix=0...100]", nullptr},
    {45, kGroupFilter, "jumble", "Jumble", "opjumble.html",
     "%1 [Horizontal=0...1] [keyword(s)]", nullptr},
    {46, kGroupRender, "kaleidoscope", "Kaleidoscope - WARP", "opkaleidoscope.html",
     "kaleidoscope [Degrees=0.0...360.0] [Mirrors=2...100] [Rotational=0...1] [Center=0...1]", nullptr},
    {47, kGroupAlpha, "keyop", "Key to Colorspace", "opkeyop.html",
     "keyop has no parameters", make<keyOp>},
    {48, kGroupGeometry, "keystone", "Keystone - WARP", "opkeystone.html",
     "keystone [Mode=0...3] [Amount=-100...100]", nullptr},
    {49, kGroupPcb, "layerclear", "Layer Clear", "oplayerclear.html",
     "crop [Copper=0...1] [Drill=0...1] [Mask=0...1] [Legend=0...1]", nullptr},
    {50, kGroupPcb, "legendlabel", "Legend Label", "oplegendlabel.html",
     "legendlabel [Vertical=0...1] [Spacing=1...n] [Mode=0...5] [Justify=0...2] [Points=5...100] [Start=1...1000] [Count=1...1000] [Red=0...255] [Green=0...255] [Blue=0...255] [Stutter=1...100] [Font=FontName] [Prefix=text] [Postfix=text]", nullptr},
    {51, kGroupAdjustment, "levels", "Levels", "oplevels.html",
     "levels [blk=-100...100] [shad=-0...100] [mid=0...100] [high=0...100] [whit=-100...100]", make<Levels>},
    {52, kGroupAdjustment, "loccontrast", "Local Contrast", "oploccontrast.html",
     "loccontrast [Amount=0...100] [Direction=0...9]", nullptr},
    {53, kGroupCompose, "math", "Math", "opmath.html",
     "math [mode=%1...%2]", nullptr},
    {54, kGroupFilter, "maximum", "Maximum", "opmaximum.html",
     "maximum [Mode=0...5]", nullptr},
    {55, kGroupMeta, "measure", "Measure", "opmeasure.html",
     "perlin [pixelX=0...10m] [pixelY=0...10m]", nullptr},
    {56, kGroupFilter, "median", "Median", "opmedian.html",
     "median [size=0...4] [mode=0...8] [take=0...3] [r=0...1] [g=0...1] [b=0...1] [thresh=0...254]", nullptr},
    {57, kGroupCompose, "merge", "Merge", "opmerge.html",
     "merge [Xoff=-100...100] [Yoff=-100...100] [Tile=0...1]", nullptr},
    {58, kGroupFilter, "minimum", "Minimum", "opminimum.html",
     "minimum [Mode=0...5]", nullptr},
    {59, kGroupGeometry, "mirror", "Mirror - WARP", "opmirror.html",
     "mirror [Degrees=-360...360] [Center=0...1]", nullptr},
    {60, kGroupFilter, "monochrome", "Monochrome", "opmonochrome.html",
     "monochrome [Preset=0...7]\n#: or:\n#: monochrome [Red=0...255] [Green=0...255] [Blue=0...255] ", make<Monochrome>},
    {61, kGroupFilter, "monofix", "Monofix", "opmonofix.html",
     "monofix has no parameters", nullptr},
    {62, kGroupAdjustment, "negative", "Negative", "opnegative.html",
     "negative has no parameters", make<Negative>},
    {63, kGroupMeta, "notations", "Notations", "opnotations.html",
     "", nullptr},
    {64, kGroupFilter, "notchf", "Notch Filter", "opnotchf.html",
     "notchf [Bandwidth=0...100] [Frequency=0...100] [Depth=0...100] [Skirts=0...100]", nullptr},
    {65, kGroupPcb, "pads", "Pads", "oppad.html",
     "", nullptr},
    {66, kGroupCompose, "perlin", "Perlin Noise", "opperlin.html",
     "perlin [Density=0...100] [Seed=1...9999] [Offset=0...255] [Turb=0...7] [Gain=0...200] [Contrast=0...200] [Floor = 0...100] [Smooth=0...1]", nullptr},
    {67, kGroupGeometry, "perspective", "Perspective - WARP", "opperspective.html",
     "perspective [Xr=-90...90] [Yr=-90...90] [Zr=-90...90] [Center=0...1]", nullptr},
    {68, kGroupFilter, "pixelize", "Pixelize", "oppixelize.html",
     "pixelize [Size=2...200] [Offset=0...200]", nullptr},
    {69, kGroupCompose, "place", "Place", "opplace.html",
     "place [mode=0...9] [under=0...1] [aspectcorrect=0...1] [alphalevel=0...255] [move=0...1] [mover=0...1] [moveg=0...1] [moveb=0...1] [movea=0...1] [autoalpha=0...1] [stampalpha=0...1]", nullptr},
    {70, kGroupPcb, "plane", "Plane", "opplane.html",
     "", nullptr},
    {71, kGroupGeometry, "radwave", "Radial Wave - WARP", "opradwave.html",
     "radwave [dst=0...100] [fr=0...100] [hw=0...100] [rad=0...100] [ph=0...100]", nullptr},
    {72, kGroupRender, "random", "Random", "oprandom.html",
     "random [Monochrome=0...1] [Shapemask=0...1] [Additive=0...1] [Amount=0..100] [Key=word(s) [or the word randomize]]", nullptr},
    {73, kGroupCompose, "rangefill", "Range Fill", "oprangefill.html",
     "", nullptr},
    {74, kGroupFilter, "ris", "Remove Isolated Streaks", "opremoveisolatedstreaks.html",
     "ris [Intensity=0...100] [Threshold=0...100]", nullptr},
    {75, kGroupFilter, "rip", "Remove Isolated Pixels", "oprip.html",
     "rip [Intensity=0...100] [Mode=0...3]", nullptr},
    {76, kGroupFilter, "rgbshift", "RGB Shift", "oprgbshift.html",
     "rgbshift [Shift=1...200] [Channel=0...2] [right=0...1]", make<RgbRotate>},
    {77, kGroupGeometry, "roll", "Roll - WARP", "oproll.html",
     "roll [Xroll=-100...100] [Yroll=-100...100]", nullptr},
    {78, kGroupGeometry, "rotate", "Rotate - WARP", "oprotation.html",
     "rotate [Degrees=-360.0...360.0] [Center=0...1]", nullptr},
    {79, kGroupGeometry, "rot90", "Rotate 90º", "oprotate90.html",
     "rot90 [Mode=0...2]", nullptr},
    {80, kGroupAdjustment, "sample", "Sample", "opsample.html",
     "sample [Accumulate=0...1] [subtract=0...1]", make<Sample>},
    {81, kGroupAdjustment, "saturation", "Saturation", "opsaturation.html",
     "saturation [Saturation=-100...100]", make<Saturation>},
    {82, kGroupMacros, "script", "Script", "opscript.html",
     "", make<Script>},
    {83, kGroupFilter, "sharpen", "Sharpen", "opsharpen.html",
     "sharpen [Radius=1...10] [Threshold=0...100] [Amount=0...100]", nullptr},
    {84, kGroupGeometry, "skew", "Skew - WARP", "opskew.html",
     "skew [Xskew=-100...100] [Yskew=-100...100]", nullptr},
    {85, kGroupMeta, "software", "Software", "opsoftware.html",
     "%1 [content]", nullptr},
    {86, kGroupRender, "spherize", "Spherize", "opspherize.html",
     "spherize [width] [height] [maptofront=0~1] [material=0~4] [ambient=0~1.0] [scale=.1~1.5] [assign=0~1] [xtranslate=-100~100] [ytranslate=-100~100] [rotation=-100~100] [threads=1...]", nullptr},
    {87, kGroupGeometry, "stretch", "Stretch - WARP", "opstretch.html",
     "stretch [Hamount=-100...100] [Vamount=-100...100]", nullptr},
    {88, kGroupGeometry, "swirl", "Swirl - WARP", "opswirl.html",
     "swirl [Amount=1...620]", nullptr},
    {89, kGroupMeta, "time", "Time", "optime.html",
     "%1 [ctime=\"YYYYMMDD::HHMMSS\"] [mtime=\"YYYYMMDD::HHMMSS\"]", nullptr},
    {90, kGroupCompose, "tunnel", "Tunnel", "optunnel.html",
     "tunnel [Top=0...1] [Left=0...1] [Right=0...1] [Bottom=0...1] [Percent=0...100] [Indents=1...10] [Alpha=0...1]", nullptr},
    {91, kGroupPcb, "valves", "Valves", "opvalve.html",
     "", nullptr},
    {92, kGroupFilter, "vignette", "Vignette", "opvignette.html",
     "vignette [Contrast=-100...100] [Brit=-100...100] [Rad=0...100] [Cmult=0...9]", nullptr},
    {93, kGroupFilter, "vremove", "Vertical Remove", "opverticalremove.html",
     "%1 [red=0,...1] [green=0,...1] [blue=0,...1]", nullptr},
    {94, kGroupAdjustment, "whitebalance", "White Balance", "opwhitebalance.html",
     "whitebalance has no parameters", make<WhiteBalance>},
    {95, kGroupAdjustment, "windowlevel", "Window and Level", "opwindowandlevel.html",
     "windowlevel [Window=0...255] [Level=0...255] [Clip=0...1]", make<WinLevel>},
    {96, kGroupFilter, "yrbconvert", "YRB Conversion", "opyrbconvert.html",
     "yrbconvert [mode=-0...1]", make<yrbConvert>},
};
// clang-format on
} // namespace

void addAllOperators(OperatorTable *table)
{
    for (const OperatorTable::Row &row : kRows)
        table->add(row);
}
