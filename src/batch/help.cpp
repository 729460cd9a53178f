// SPDX-License-Identifier: GPL-3.0-or-later
#include "batch/options.h"

QString helpText()
{
    return QStringLiteral(R"help(Usage: kestrane-batch [options] [--] IMAGE...

Loads images, works on them as the editor does, and saves the results, without a window.

IMAGE is a file, or new:WxH for a fresh image of that size (a file whose name begins
that way is written ./new:...).

Results
  -o, --output PATH     save each result here; {name} stands for the input's file name
                        up to its last dot, {n} for its position from 1. The ending
                        decides the format: .png .jpg .jpeg .rgba .ato .mcai, and .elx
                        for a layered picture; under other names that is saved flat
      --depth 32|64     bits a pixel of a .rgba result (64)
      --quality 1..100  quality of a JPEG result

Script
  -s, --script FILE     run this script, a text file in UTF-8, on each image
  -e, --execute TEXT    run this script text on each image; may be repeated: the texts
                        are lines that follow --script
      --strict          an image whose script reports an error, or does not come to its
                        end, is not saved and fails the run

What is worked with
      --layer N         of a layered picture, the layer to work on, counted from the top
                        from 1; without it the master
      --origin IMAGE    the assigned origin image
      --brush IMAGE     the assigned brush image
      --set KEY=VALUE   one setting, or one parameter of an operator, for this run, by its
                        settings key; may be repeated
      --settings        start from the settings that the editor has stored; without it
                        the store is not touched. It is never written.

The run
      --keep-going      go on with the next image after a failure
  -i, --interactive     read commands from standard input, on the image if one is given,
                        after its script
      --version         print the version
      --help            print this text

Not available in this version
      --gerber DIR      --gerber-set KEY=VALUE

Commands of -i, each answered on standard output
  .text EXPR            the value of a text expression
  .value EXPR           a number as the language writes it into a text
  .tokens EXPR          one line a token: its text, its operator code and name
  .vars                 every variable
  .rich on|off          reports of the language with their mark-up, after "rich: "
  .load IMAGE           load and make it the current image
  .save PATH            save it, as --output does
  .size                 W H
  .pixel X Y            R G B A M: four 16-bit samples and the area mask
  .fill R G B A         set every pixel; no undo
  .poke X Y R G B A     set one pixel; no undo
  .mask X Y V           set one sample of the area mask
  .rect L T R B         select a rectangle; of inclusive corners, in any order
  .ellipse XC YC XR YR  select an ellipse by its centre and radii
  .rellipse L T R B     select the ellipse in that rectangle
  .entire               select everything
  .wand X Y TOL         select what has the colour of that sample, within a tolerance of
                        0 to 100
  .polygon X1 Y1 X2 Y2...
                        select a polygon
  .spline X1 Y1 X2 Y2...
                        select what a curve through these points encloses
  .smooth RADIUS AMOUNT smooth the selection's edge: 1 to 200 samples, amount 1 for all
  .origin [IMAGE]       assign the origin image, or clear it
  .brush [IMAGE]        assign the brush image, or clear it
  .set KEY VALUE        as --set
  .layers               one line a layer, from the bottom: its number from the top, mode
                        id, opacity and name
  .layer N              make that layer the current image; 0: the master
  .compose              compose the master of the current image
  .apply NAME ARGS...   what the Apply button does with that operator
  .scriptline NAME      the script line of the operator's present parameters
  .snapshot             make an undo record
  .undo, .redo          one step; answers "nothing" if there was none
  .memory               the memory report with details
  .quit                 end
Other lines are script text: "hypo(3,4)" answers its value, "x=5" assigns, "exposure 25 0"
runs an operator under the mask as it stands, without an undo record. Variables, arrays
and open "if" and "loop" stay from line to line; a loop that is to repeat stands on one
line, its statements parted by ":". Reports of the language come first, as "error: " and
"warning: ". What cannot be done answers "failed: " and why.

Messages go to standard error as "error: ", "warning: " and "notice: " lines.
Those of a script name its line. Exit status: 0 all well, 1 an image could not be loaded
or saved, 2 wrong usage, 3 a script failed under --strict (1 if both happened).
)help");
}
