// SPDX-License-Identifier: GPL-3.0-or-later
#include "formats/rawdecode.h"

#include "formats/bounds.h"

#include <libraw/libraw.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <memory>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace
{
constexpr int kOpenLimit = 0xFA00000;
constexpr unsigned kMemoryLimitMb = 2048;
constexpr rlim_t kSecondsOfWork = 120;
constexpr int kPatienceMs = 180 * 1000;
/// Sensor samples that a byte of file can stand for: the best predictor leaves a bit.
constexpr int kSamplesPerByte = 64;
/// Raw samples, the picture of four channels and a copy of it while it is developed.
constexpr int kReaderBytes = 2 + 8 + 8;

// --- In the process that decodes: nothing of Qt, no tracked memory ------------------------

void noteDataError(void *seen, const char *, int)
{
    *static_cast<int32_t *>(seen) = 1;
}

bool sizeAllowed(const libraw_image_sizes_t &sizes, int64_t fileBytes)
{
    const int64_t pixels =
        int64_t(std::max(sizes.raw_width, sizes.width)) * std::max(sizes.raw_height, sizes.height);
    return sidesInRange(sizes.raw_width, sizes.raw_height) &&
           sidesInRange(sizes.width, sizes.height) &&
           fileCanHold(pixels, fileBytes, kSamplesPerByte) && memoryCanHold(pixels, kReaderBytes);
}

template <size_t to, size_t from>
void copyText(char (&out)[to], const char (&text)[from])
{
    std::memcpy(out, text, std::min(to, from));
}

void takeMetadata(const libraw_data_t &data, RawOutcome *out)
{
    const libraw_gps_info_t &gps = data.other.parsed_gps;
    std::copy_n(gps.latitude, 3, out->latitude);
    std::copy_n(gps.longitude, 3, out->longitude);
    out->altitude = gps.altitude;
    out->shutter = data.other.shutter;
    out->aperture = data.other.aperture;
    out->focalLength = data.other.focal_len;
    out->iso = data.other.iso_speed;
    copyText(out->description, data.other.desc);
    copyText(out->artist, data.other.artist);
    copyText(out->software, data.idata.software);
}

/// LibRaw keeps a set of bits: mirrored left to right, top to bottom, sides swapped.
int exifOrientationOf(int flip)
{
    constexpr int exif[8] = {1, 2, 4, 3, 5, 8, 6, 7};
    return exif[flip & 7];
}

/// The calls in their order. Those after unpack give no result worth a test: lost data
/// shows in the picture alone.
void decode(LibRaw &processor, const char *path, int64_t fileBytes, RawOutcome *out)
{
    processor.set_dataerror_handler(noteDataError, &out->damaged);
    processor.imgdata.params.max_raw_memory_mb = kMemoryLimitMb;
    out->stage = RawOutcome::OpenFailed;
    out->code = processor.open_file(path, kOpenLimit);
    if (out->code != LIBRAW_SUCCESS)
        return;
    out->stage = RawOutcome::NoPicture;
    if (!sizeAllowed(processor.imgdata.sizes, fileBytes))
        return;
    out->stage = RawOutcome::UnpackFailed;
    out->code = processor.unpack();
    if (out->code != LIBRAW_SUCCESS)
        return;
    processor.raw2image();
    processor.imgdata.params.use_camera_wb = 1;
    processor.subtract_black();
    processor.dcraw_process();
    const libraw_data_t &data = processor.imgdata;
    out->stage = data.image ? RawOutcome::Done : RawOutcome::NoPicture;
    out->width = data.sizes.iwidth;
    out->height = data.sizes.iheight;
    out->orientation = exifOrientationOf(data.sizes.flip);
    takeMetadata(data, out);
}

bool writeAll(int to, const void *data, size_t bytes)
{
    const auto *at = static_cast<const char *>(data);
    while (bytes > 0) {
        const ssize_t written = write(to, at, bytes);
        if (written <= 0)
            return false;
        at += written;
        bytes -= size_t(written);
    }
    return true;
}

/// A crash here leaves no core file, no message and no handler of the program's own.
void prepareChild()
{
    for (const int number : {SIGABRT, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGXCPU, SIGTERM})
        std::signal(number, SIG_DFL);
    const rlimit none = {0, 0}, work = {kSecondsOfWork, kSecondsOfWork};
    setrlimit(RLIMIT_CORE, &none);
    setrlimit(RLIMIT_CPU, &work);
    const int quiet = open("/dev/null", O_WRONLY | O_CLOEXEC);
    if (quiet >= 0)
        dup2(quiet, STDERR_FILENO);
}

[[noreturn]] void decodeInChild(const char *path, int64_t fileBytes, int memory)
{
    prepareChild();
    bool written = false;
    try {
        // On the heap: the processor is far larger than a thread's stack likes.
        const auto processor = std::make_unique<LibRaw>(LIBRAW_OPTIONS_NONE);
        RawOutcome out = {};
        decode(*processor, path, fileBytes, &out);
        written = writeAll(memory, &out, sizeof out);
        if (written && out.stage == RawOutcome::Done)
            written = writeAll(memory, processor->imgdata.image,
                               size_t(out.width) * size_t(out.height) * 4 * sizeof(uint16_t));
        processor->recycle();
    } catch (...) {
        written = false;
    }
    _exit(written ? 0 : 1);
}

// --- In the process that asked ------------------------------------------------------------

/// Waits until the child has closed its end of the pipe, which it does by ending.
bool endsInTime(int pipeEnd)
{
    pollfd watch = {pipeEnd, POLLIN, 0};
    int ready = -1;
    do
        ready = poll(&watch, 1, kPatienceMs);
    while (ready < 0 && errno == EINTR);
    return ready > 0;
}

bool succeeded(pid_t child)
{
    int status = 0;
    pid_t ended = -1;
    do
        ended = waitpid(child, &status, 0);
    while (ended < 0 && errno == EINTR);
    return ended == child && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}
} // namespace

RawDecoding::RawDecoding(const QByteArray &path, int64_t fileBytes)
{
    result.stage = RawOutcome::NoPicture;
    if (decodeApart(path, fileBytes) && takeResult())
        return;
    result = {};
    result.stage = RawOutcome::NoPicture;
}

RawDecoding::~RawDecoding()
{
    if (mapped)
        munmap(mapped, mappedBytes);
    if (memory >= 0)
        close(memory);
}

bool RawDecoding::decodeApart(const QByteArray &path, int64_t fileBytes)
{
    memory = memfd_create("camera raw", MFD_CLOEXEC);
    int ends[2];
    if (memory < 0 || pipe2(ends, O_CLOEXEC) != 0)
        return false;
    const pid_t child = fork();
    if (child == 0)
        decodeInChild(path.constData(), fileBytes, memory);
    close(ends[1]);
    if (child > 0 && !endsInTime(ends[0]))
        kill(child, SIGKILL);
    close(ends[0]);
    return child > 0 && succeeded(child);
}

/// Maps what the child left, which is believed only as far as its sizes agree.
bool RawDecoding::takeResult()
{
    struct stat info = {};
    if (fstat(memory, &info) != 0 || info.st_size < off_t(sizeof(RawOutcome)))
        return false;
    mappedBytes = size_t(info.st_size);
    void *view = mmap(nullptr, mappedBytes, PROT_READ, MAP_SHARED, memory, 0);
    if (view == MAP_FAILED)
        return false;
    mapped = view;
    std::memcpy(&result, mapped, sizeof result);
    if (result.stage != RawOutcome::Done)
        return true;
    return sidesInRange(result.width, result.height) &&
           mappedBytes == sizeof(RawOutcome) +
                              size_t(result.width) * size_t(result.height) * 4 * sizeof(uint16_t);
}

const uint16_t (*RawDecoding::pixels() const)[4]
{
    if (!mapped || result.stage != RawOutcome::Done)
        return nullptr;
    return reinterpret_cast<const uint16_t(*)[4]>(static_cast<const char *>(mapped) +
                                                  sizeof(RawOutcome));
}
