#pragma once

#include <QString>

#include <optional>
#include <utility>

namespace vorn {

// A symbolic link to a terminal, under which a device directory lists the device. Removes itself,
// unless something else has taken its place.
class DeviceLink
{
public:
    // Appears at once and whole. A dangling link of that name (left by a simulator that was killed)
    // is replaced, anything else is not: then nothing, and the reason in *problem.
    static std::optional<DeviceLink> create(const QString &directory, const QString &name,
                                            const QString &target, QString *problem);

    DeviceLink(DeviceLink &&other) noexcept
        : m_path(std::exchange(other.m_path, {})), m_target(std::exchange(other.m_target, {}))
    {
    }
    DeviceLink &operator=(DeviceLink &&other) noexcept
    {
        std::swap(m_path, other.m_path);
        std::swap(m_target, other.m_target);
        return *this;
    }
    DeviceLink(const DeviceLink &) = delete;
    DeviceLink &operator=(const DeviceLink &) = delete;
    ~DeviceLink();

    const QString &path() const { return m_path; }

private:
    DeviceLink(QString path, QString target);

    QString m_path;
    QString m_target;
};

} // namespace vorn
