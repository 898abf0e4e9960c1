#include "preview/Metafile.h"

#include "app/base/Bytes.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace wagemill {

namespace {

constexpr std::uint32_t headerRecord = 1;
constexpr std::uint32_t endRecord = 14;
constexpr std::uint32_t signature = 0x464D4520; // " EMF"
constexpr std::size_t signatureAt = 40;
constexpr std::size_t frameAt = 24;
constexpr std::size_t fileBytesAt = 48;
constexpr std::size_t minHeader = 88;
constexpr std::size_t minRecord = 8;
constexpr double frameUnitsInInch = 2540; // hundredths of a millimetre
constexpr double dotsInInch = 96;
constexpr double maxPixels = 1e6; // in either direction; a sheet of 3000 stubs has fewer

double frameEdge(std::span<const std::byte> file, std::size_t index)
{
    return static_cast<std::int32_t>(ByteReader(file, frameAt + 4 * index).u32());
}

double pixels(double frameLength)
{
    return std::max(1.0, std::round(frameLength * dotsInInch / frameUnitsInInch));
}

void checkRecords(std::span<const std::byte> file)
{
    std::size_t at = 0;
    for (std::uint32_t type = 0; type != endRecord;) {
        if (file.size() - at < minRecord)
            throw std::runtime_error("the metafile is cut off");
        type = ByteReader(file, at).u32();
        const std::size_t length = ByteReader(file, at + 4).u32();
        if (length < (at == 0 ? minHeader : minRecord) || length % 4 != 0 || length > file.size() - at)
            throw std::runtime_error("the metafile is damaged at byte " + std::to_string(at));
        at += length;
    }
    if (ByteReader(file, fileBytesAt).u32() != at)
        throw std::runtime_error("the metafile has another length than its header says");
}

} // namespace

bool isMetafile(std::span<const std::byte> file)
{
    return file.size() >= minHeader && ByteReader(file, 0).u32() == headerRecord &&
           ByteReader(file, signatureAt).u32() == signature;
}

QSizeF checkedMetafileSize(std::span<const std::byte> file)
{
    if (!isMetafile(file))
        throw std::runtime_error("it is not an enhanced metafile");
    checkRecords(file);
    const double width = frameEdge(file, 2) - frameEdge(file, 0);
    const double height = frameEdge(file, 3) - frameEdge(file, 1);
    if (width <= 0 || height <= 0)
        throw std::runtime_error("the metafile is empty");
    if (pixels(std::max(width, height)) > maxPixels)
        throw std::runtime_error("the metafile is too large to be shown");
    return {pixels(width), pixels(height)};
}

} // namespace wagemill
