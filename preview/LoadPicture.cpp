#include "preview/LoadPicture.h"

#include <QFile>
#include <QImageReader>

#include <cmath>
#include <stdexcept>
#include <utility>

namespace wagemill {

namespace {

constexpr int largestPictureMegabytes = 2048; // 14000 x 5000 units at ratio 2 take 1068
constexpr double inchesInMetre = 39.3701;
constexpr double dotsInchOfRatioOne = 96;

double devicePixelRatio(const QImage& picture)
{
    const double dotsInch = std::round(picture.dotsPerMeterX() / inchesInMetre);
    const double ratio = dotsInch / dotsInchOfRatioOne;
    return ratio >= 1 && ratio <= 4 ? ratio : 1;
}

/// Lets one reader read more than all others may.
class AllocationLimit {
public:
    explicit AllocationLimit(int megabytes) : m_before(QImageReader::allocationLimit())
    {
        QImageReader::setAllocationLimit(megabytes);
    }
    AllocationLimit(const AllocationLimit&) = delete;
    AllocationLimit& operator=(const AllocationLimit&) = delete;
    ~AllocationLimit() { QImageReader::setAllocationLimit(m_before); }

private:
    int m_before;
};

} // namespace

QPixmap loadPicture(const std::filesystem::path& file)
{
    const AllocationLimit limit(largestPictureMegabytes);
    QFile bytes(file);
    if (!bytes.open(QIODevice::ReadOnly))
        throw std::runtime_error("Cannot read the picture \"" + file.string() +
                                 "\": " + bytes.errorString().toStdString() + ".");
    QImageReader reader(&bytes);
    QImage picture = reader.read();
    if (picture.isNull())
        throw std::runtime_error("Cannot read the picture \"" + file.string() +
                                 "\": " + reader.errorString().toStdString() + ".");
    picture.setDevicePixelRatio(devicePixelRatio(picture));
    return QPixmap::fromImage(std::move(picture));
}

} // namespace wagemill
