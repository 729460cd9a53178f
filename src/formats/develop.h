// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

class image;

/// Makes a picture to look at of the linear, unturned samples of a camera RAW, as one
/// undoable act: brings them to a suitable brightness, bends them for a screen, and turns
/// the picture by the orientation that the camera recorded. The image is no RAW any more
/// (cameraOrientation 0) until the act is undone. False, with nothing changed, if it is no
/// RAW or memory is short.
bool developRaw(image *img);

/// The curve of developRaw, for both arguments and the result 0 to 1: linear light as a part
/// of the sensor's range to a screen value, where `white` is the light that the brightest
/// half of a percent of the pixels reaches.
///
/// The light is multiplied by 0.9 / white, limited to 0.9 to 16. Up to 0.7 it stays so. Above,
/// with t = (light - 0.7) / 0.3 and T the t of the sensor's end, a shoulder
/// 0.7 + 0.3 t (1 + t / T^2) / (1 + t) begins as steep as the straight part, keeps detail in
/// the highlights and ends at exactly 1. The sRGB transfer function follows.
double developCurve(double light, double white);
