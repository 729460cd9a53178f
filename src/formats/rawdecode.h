// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>

/// What a decoding of a camera RAW file came to. Plain data: it crosses from the process
/// that decodes to the one that asked.
struct RawOutcome {
    enum Stage : int32_t { Done, OpenFailed, UnpackFailed, NoPicture };
    int32_t stage;
    int32_t code; ///< LibRaw's, where a call failed
    int32_t width, height;
    int32_t orientation; ///< as recorded by the camera, EXIF 1 to 8
    int32_t damaged;     ///< LibRaw met data that it could not make sense of
    float shutter, aperture, focalLength, iso;
    float latitude[3], longitude[3]; ///< degrees, minutes, seconds
    float altitude;
    char description[512], artist[64], software[64]; ///< may be full to the last byte
};

/// Decodes a camera RAW file through LibRaw in a process of its own. Files from outside
/// can bring the library down, and a person's unsaved pictures must not go down with it:
/// a crash, a hang or a hunger for memory there is a failed load here.
class RawDecoding
{
public:
    /// `path` in the local 8-bit encoding; `fileBytes` bounds what the file may claim.
    RawDecoding(const QByteArray &path, int64_t fileBytes);
    ~RawDecoding();
    RawDecoding(const RawDecoding &) = delete;
    RawDecoding &operator=(const RawDecoding &) = delete;

    const RawOutcome &outcome() const { return result; }
    /// width x height pixels of red, green, blue and a fourth sample, if the stage is Done.
    const uint16_t (*pixels() const)[4];

private:
    bool decodeApart(const QByteArray &path, int64_t fileBytes);
    bool takeResult();

    RawOutcome result = {};
    int memory = -1; ///< a file in memory: the outcome, then the pixels
    void *mapped = nullptr;
    size_t mappedBytes = 0;
};
