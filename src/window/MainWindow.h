#pragma once

#include <QBasicTimer>
#include <QMainWindow>

#include <memory>

namespace vorn {

namespace Ui {
class MainWindow;
}
class CloseQuestion;

// The program's one window. It knows nothing of ports, files or servers.
//
// Its controller finds the controls below `centralWidget()` by their dynamic integer property "tag"
// and fills them: 2001 update button, 2002 download button, 1001 connection status, 1002 firmware
// list, 1010 device list, 1011 open/close button, 1012 firmware status, 1015 update status. The
// status texts are `StatusLine`s. Everything without a tag is shown by the methods here. Main
// thread only.
class MainWindow : public QMainWindow
{
    Q_OBJECT

public:
    explicit MainWindow(QWidget *parent = nullptr);
    ~MainWindow() override;

    // Shows how much of the update is done, in percent (0 to 100). The bar never goes back between
    // two resets.
    void showUpdateProgress(int percent);
    // Shows activity of unknown duration (the device erases its memory), until the next
    // `showUpdateProgress`.
    void showUpdateBusy();
    // Empties the update's bar, for a new run.
    void resetUpdateProgress();

    // Under a status line: the cause and the cure of its last failure, or the progress of a run.
    // Empty for nothing. Nothing moves when a text comes or goes.
    void showConnectionDetails(const QString &text);
    void showFirmwareDetails(const QString &text);
    void showUpdateDetails(const QString &text);

    // While an update runs, closing the window asks first, and the controls that cannot be used
    // meanwhile are disabled.
    void setUpdateRuns(bool runs);
    // Asks whether the port may be closed although an update runs, and returns at once;
    // `closePortAnyway` follows if the user says so. Only one question is shown at a time.
    void askToClosePort();

    // Shows how much of the package has arrived, in percent (0 to 100). The bar never goes back.
    void showDownloadProgress(int percent);
    // Shows that a package of unknown length is arriving, or that a package is being unpacked.
    void showDownloadBusy();
    // Empties and hides the download's bar. Nothing else moves.
    void hideDownloadProgress();

    // Enables or disables the download button; `toolTip` says what it does, or why it is disabled.
    void setDownloadAvailable(bool available, const QString &toolTip);

    // Adds a line to the log panel, which keeps the last 5000.
    void appendLog(const QString &line);
    // Says beside the log's buttons what has become of the log.
    void showLogNotice(const QString &text);

signals:
    // The first picture has been drawn. What the window can do without may begin now.
    void didAppear();
    // The user wants the log in the clipboard, or in the file.
    void logCopyRequested();
    void logSaveRequested(const QString &path);
    // The user wants the port closed, whether the update still runs or has ended meanwhile.
    void closePortAnyway();

protected:
    bool event(QEvent *event) override;
    void timerEvent(QTimerEvent *event) override;
    void changeEvent(QEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    // Fits the controls' sizes to the current font and style.
    void fitSizes();
    CloseQuestion &closeQuestion();
    void showLog(bool shown);
    void askWhereToSaveLog();

    // Runs for one frame's time after each repaint; a repaint that is due meanwhile waits for it.
    QBasicTimer m_frame;
    bool m_repaintIsDue = false;
    bool m_hasAppeared = false;

    bool m_updateRuns = false;
    bool m_refocusUpdateButton = false;       // it had the focus when it was disabled
    int m_grownForLog = 0;                    // by how many pixels, when the log was shown
    CloseQuestion *m_closeQuestion = nullptr; // null before the first question

    const std::unique_ptr<Ui::MainWindow> m_ui;
};

} // namespace vorn
