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
    m_isInsideLine = size > 0 && ::pread(m_file.get(), &last, 1, size - 1) == 1 && last != '\n';
    return 0;
}

int StationRecord::append(const Outcome &outcome)
{
    QByteArray line = lineOf(outcome);
    if (m_isInsideLine)
        line.prepend('\n');
    const off_t size = ::lseek(m_file.get(), 0, SEEK_END);
    ssize_t written = 0;
    do
        written = ::write(m_file.get(), line.constData(), static_cast<std::size_t>(line.size()));
    while (written < 0 && errno == EINTR);
    if (written < 0)
        return errno;
    if (written < line.size()) {
        // No half line stays behind.
        if (::ftruncate(m_file.get(), size) != 0)
            return errno;
        return ENOSPC;
    }
    m_isInsideLine = false;
    // Pipes cannot be synchronized, and need not.
    return ::fsync(m_file.get()) == 0 || errno == EINVAL ? 0 : errno;
}

} // namespace vorn
