#include "cli/StationRecord.h"

#include <QDateTime>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace vorn {
namespace {

QJsonValue orNull(const QString &text)
{
    return text.isEmpty() ? QJsonValue() : QJsonValue(text);
}

QByteArray lineOf(const Outcome &outcome)
{
    const double seconds = std::chrono::duration<double>(outcome.elapsed).count();
    return QJsonDocument(
               QJsonObject{
                   {QStringLiteral("time"),
                    QDateTime::currentDateTimeUtc().toString(Qt::ISODateWithMs)},
                   {QStringLiteral("device"), outcome.device},
                   {QStringLiteral("model"),
                    outcome.model >= 0 ? QJsonValue(outcome.model) : QJsonValue()},
                   {QStringLiteral("file"), orNull(outcome.file)},
                   {QStringLiteral("sha256"), orNull(QString::fromLatin1(outcome.sha256))},
                   {QStringLiteral("result"),
                    outcome.succeeded() ? QStringLiteral("ok") : QStringLiteral("failed")},
                   {QStringLiteral("cause"), orNull(QLatin1StringView(outcome.why.word))},
                   {QStringLiteral("seconds"), seconds},
               })
               .toJson(QJsonDocument::Compact) +
           '\n';
}

} // namespace

int StationRecord::open(const QString &path)
{
    constexpr mode_t kMode = 0600;
    m_file = FileDescriptor(::open(QFile::encodeName(path).constData(),
                                   O_RDWR | O_APPEND | O_CREAT | O_CLOEXEC, kMode));
    if (!m_file.isValid())
        return errno;
    char last = '\n';
    const off_t size = ::lseek(m_file.get(), 0, SEEK_END);
    ssize_t count = 0;
    do
        count = size > 0 ? ::pread(m_file.get(), &last, 1, size - 1) : 0;
    while (count < 0 && errno == EINTR);
    m_isInsideLine = last != '\n';
    return count < 0 ? errno : 0;
}

int StationRecord::append(const Outcome &outcome)
{
    QByteArray line = lineOf(outcome);
    if (m_isInsideLine)
        line.prepend('\n');
    const off_t size = ::lseek(m_file.get(), 0, SEEK_END);
    // In one piece, unless the disk is full.
    for (QByteArrayView left = line; !left.isEmpty();) {
        const ssize_t written =
            ::write(m_file.get(), left.data(), static_cast<std::size_t>(left.size()));
        if (written >= 0) {
            left = left.sliced(written);
        } else if (errno != EINTR) {
            const int error = errno;
            // No half line stays behind.
            if (left.size() < line.size() && ::ftruncate(m_file.get(), size) != 0)
                return errno;
            return error;
        }
    }
    m_isInsideLine = false;
    // Pipes cannot be synchronized, and need not.
    return ::fsync(m_file.get()) == 0 || errno == EINVAL ? 0 : errno;
}

} // namespace vorn
