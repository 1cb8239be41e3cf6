#pragma once

#include "app/Causes.h"
#include "app/LogSection.h"
#include "app/ProgressTexts.h"
#include "app/TaggedControls.h"
#include "platform/DesktopNotifications.h"
#include "platform/SleepBlock.h"
#include "update/DeviceSession.h"
#include "window/MainWindow.h"

#include <QObject>
#include <QSet>
#include <QTimer>

#include <optional>

namespace vorn {

// The window's update card: shows a run from its start to its end, writes it down, and keeps the
// machine awake meanwhile. Main thread only.
class UpdateSection final : public QObject
{
    Q_OBJECT

public:
    // All outlive the object.
    UpdateSection(MainWindow &window, const TaggedControls &controls, LogSection &log,
                  DesktopNotifications &notifications);

    // The device of this name became current. What was said of another one goes.
    void setDevice(const QString &name);
    // At the start: shown until there is anything else to say here; the log keeps it.
    void warn(const Explanation &why);
    // A file was chosen or the device opened: instead of what was said of a press that could not
    // start an update, or of a query, the end of the last update is shown.
    void forgetRefusal();
    // Said while a press's image is checked; empty when the press was given up.
    void showCheck(const QString &text);
    // A press that cannot start an update.
    void refuse(const QString &text, const Explanation &why);
    // An update with the file begins; the session lives until the end() that follows.
    void begin(const DeviceSession &session, const QString &imagePath);
    void showProgress(const UpdateProgress &progress);
    void end(const UpdateResult &result);

    // The query for the device's model, which opening starts, begins and has ended.
    void queryDidBegin();
    void queryDidEnd(const DeviceSession &session, const UpdateResult &result);

private:
    void supersedeEnd();
    void showDetails();
    void endStep();
    void announce(const UpdateResult &result);

    MainWindow &m_window;
    const TaggedControls &m_controls;
    LogSection &m_log;
    DesktopNotifications &m_notifications;
    const DeviceSession *m_session = nullptr; // of the running update
    RunProgress m_progress;
    QTimer m_refresh; // of the details while an update runs
    std::optional<SleepBlock> m_sleepBlock;
    int m_percent = 0;
    bool m_hasUpdateTranscript = false; // in the log
    QString m_device;                   // the current or last device's name
    QString m_endText;                  // how its last update ended
    QString m_checkText;                // empty unless an image is checked
    QSet<QString> m_unfinished;         // devices that an update may have left without firmware
    // The step whose answer is awaited, and since when.
    std::optional<UpdateStep> m_step;
    SteadyTime m_stepBegan{};
};

} // namespace vorn
