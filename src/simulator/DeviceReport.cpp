#include "simulator/DeviceReport.h"

#include <QCryptographicHash>
#include <QJsonArray>

#include <algorithm>

namespace vorn {

namespace {

double milliseconds(std::chrono::microseconds time)
{
    return static_cast<double>(time.count()) / 1000.0;
}

} // namespace

std::chrono::microseconds DownloadTimes::medianGap() const
{
    if (gaps.empty())
        return std::chrono::microseconds::zero();
    std::vector<std::chrono::microseconds> sorted = gaps;
    const auto middle = sorted.begin() + static_cast<std::ptrdiff_t>(sorted.size() / 2);
    std::nth_element(sorted.begin(), middle, sorted.end());
    return *middle;
}

std::chrono::microseconds DownloadTimes::longestGap() const
{
    return gaps.empty() ? std::chrono::microseconds::zero()
                        : *std::max_element(gaps.begin(), gaps.end());
}

QString DeviceReport::imageSha256() const
{
    if (updates == 0)
        return {};
    return QString::fromLatin1(QCryptographicHash::hash(image, QCryptographicHash::Sha256).toHex());
}

QJsonObject DeviceReport::toJson() const
{
    QJsonObject download{
        {QStringLiteral("declaredLength"), static_cast<qint64>(declaredLength)},
        {QStringLiteral("frames"), downloadFrames},
        {QStringLiteral("unfinishedLength"), static_cast<qint64>(partialImage.size())}};
    if (times.startedAt.isValid()) {
        download.insert(QStringLiteral("startedAt"), times.startedAt.toString(Qt::ISODateWithMs));
        download.insert(QStringLiteral("headerAfterMs"), milliseconds(times.toHeader));
        download.insert(QStringLiteral("dataReleasedAfterMs"), milliseconds(times.toRelease));
        download.insert(QStringLiteral("lastAnswerAfterMs"), milliseconds(times.toLastAnswer));
        download.insert(QStringLiteral("medianGapMs"), milliseconds(times.medianGap()));
        download.insert(QStringLiteral("longestGapMs"), milliseconds(times.longestGap()));
    }
    return {{QStringLiteral("path"), path},
            {QStringLiteral("terminal"), slavePath},
            {QStringLiteral("plugged"), plugged},
            {QStringLiteral("model"), modelCode},
            {QStringLiteral("opens"), opens},
            {QStringLiteral("inUse"), inUse},
            {QStringLiteral("exchanges"), exchanges},
            {QStringLiteral("updates"), updates},
            {QStringLiteral("imageSha256"), imageSha256()},
            {QStringLiteral("imageLength"), static_cast<qint64>(image.size())},
            {QStringLiteral("frames"), static_cast<qint64>(frames)},
            {QStringLiteral("refusals"), refusals},
            {QStringLiteral("errorCount"), errorCount},
            {QStringLiteral("errors"), QJsonArray::fromStringList(errors)},
            {QStringLiteral("download"), download}};
}

} // namespace vorn
