#pragma once

#include "platform/Lifetime.h"
#include "platform/SerialDeviceRegistry.h"
#include "update/Transcript.h"
#include "window/MainWindow.h"

#include <QObject>
#include <QStringList>

#include <chrono>
#include <functional>
#include <memory>

namespace vorn {

// The window's log: what happened since the start, copied or saved whole with what support needs
// to know besides. Main thread only.
class LogSection final : public QObject
{
    Q_OBJECT

public:
    // The window outlives the object.
    explicit LogSection(MainWindow &window);

    // Adds an event, stamped with the time of day.
    void add(const QString &event);
    // A step of something: that it begins, or how it ended after which time.
    void addStart(const QString &what);
    void addOk(const QString &what, std::chrono::milliseconds after);
    void addFailed(const QString &what, std::chrono::milliseconds after, const QString &why = {});

    // The device and the exchange that the report describes.
    void setDevice(const SerialDeviceHandle &device) { m_device = device; }
    void setTranscript(std::shared_ptr<const Transcript> transcript);
    // One line about the settings that the program runs with.
    void addSetting(const QString &setting) { m_settings += setting; }

private:
    void copy();
    void save(const QString &path);
    std::function<QString()> report() const;

    MainWindow &m_window;
    QStringList m_events; // the last ones
    QStringList m_settings;
    SerialDeviceHandle m_device;
    std::shared_ptr<const Transcript> m_transcript;
    Lifetime m_lifetime;
};

// The text with the user's home folder as "~" and the user's name as "user": it may be sent to
// strangers.
QString withoutPersonalNames(QString text);

} // namespace vorn
