#pragma once

#include "window/Tone.h"

#include <QBasicTimer>
#include <QMainWindow>

#include <memory>

namespace vorn {

namespace Ui {
class MainWindow;
}
class CloseQuestion;

// The program's one window: what a person sees and presses. It knows nothing of ports, files or
// servers.
//
// The controls are found below `centralWidget()` by their dynamic integer property "tag" and are
// filled by whoever finds them: 2001 update button, 2002 download button, 1001 connection status,
// 1002 firmware list, 1010 device list, 1011 open/close button, 1012 firmware status, 1015 update
// status. What has no tag is shown through the operations here. All of them belong to the main
// thread.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    // The status lines, for `setStatusTone`.
    enum class Line { Connection, Firmware, Update };

    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // Shows how much of the update is done, 0 to 100. A value below one already shown since the
    // last reset is not shown: the bar never walks back.
    void showUpdateProgress(int percent);
    // Shows that the update goes on for an unknown time (the device erases its memory). The next
    // `showUpdateProgress` ends it.
    void showUpdateBusy();
    // Empties the update's bar: call it when a run starts, and when one has failed.
    void resetUpdateProgress();

    // While an update runs, closing the window asks first.
    void setUpdateRuns(bool runs);

    // Shows how much of the package has arrived, 0 to 100, never walking back.
    void showDownloadProgress(int percent);
    // Shows that a package of unknown length arrives, or that it is being unpacked.
    void showDownloadBusy();
    // Empties and hides the download's bar; its place stays.
    void hideDownloadProgress();

    // Lets the download button be pressed or not; `tooltip` says why not (or what it does).
    void setDownloadAvailable(bool available, const QString &tooltip);

    // Marks what `line` says as a success or a failure. The mark stays until the next call, so
    // it is set along with the text.
    void setStatusTone(Line line, Tone tone);

protected:
    bool event(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void alignControls();

    // Runs while a frame has been drawn that is still new.
    QBasicTimer m_frame;
    bool m_frameWaits = false;

    bool m_updateRuns = false;
    CloseQuestion *const m_closeQuestion;

    const std::unique_ptr<Ui::MainWindow> m_ui;
};

} // namespace vorn
