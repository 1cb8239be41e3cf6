#pragma once

#include "app/Causes.h"
#include "app/LogSection.h"
#include "app/ProgressTexts.h"
#include "app/TaggedControls.h"
#include "firmware/FirmwareLibrary.h"
#include "firmware/PackageDownload.h"
#include "window/MainWindow.h"

#include <QObject>
#include <QString>
#include <QTimer>

namespace vorn {

// The window's firmware list and download button: offers the files for the device's model, keeps
// the choice, and fetches the latest package. Main thread only.
class FirmwareSection final : public QObject,
                              private PackageObserver,
                              private FirmwareLibraryObserver
{
    Q_OBJECT

public:
    // Window, controls and log outlive the object.
    FirmwareSection(MainWindow &window, const TaggedControls &controls, LogSection &log,
                    const PackageLocation &packages);

    // Fills the list for the first time.
    void begin();

    // The model code that a device reported last, -1 before the first did.
    qint32 targetVersion() const { return m_targetVersion; }
    void setTargetVersion(qint32 targetVersion) { m_targetVersion = targetVersion; }
    // The list follows the device half a second after its opening, and at the end of a query that
    // takes longer if that told another model. Nothing else takes a choice away.
    void deviceDidOpen() { m_refill.start(); }
    void versionQueryDidEnd();

    // Actions of the controls.
    void fileHandlePopBtn();
    void getFirmWare();

    // Whether the list shows a file as its current item.
    bool offersFile() const;
    // The chosen file; null when none was ever chosen.
    QString imagePath() const;

private:
    // PackageObserver
    void packageResponseDidArrive(qint64 total) override;
    void packageDidProgress(qint64 received, qint64 total) override;
    void packageWillUnpack() override;
    void packageIsUpToDate() override;
    void packageDidFail(const PackageProblem &problem, bool showsInStatus) override;
    void packageWasInstalled() override;
    void firmwareFolderDidChange() override;

    // FirmwareLibraryObserver
    void firmwareListDidChange(const QStringList &files) override;
    void firmwareFolderIsEmpty() override;

    void refill();
    void show(const QString &text);
    void showProgress(qint64 received, qint64 total);
    void endDownload(StatusTone tone, const QString &details);
    void showDetails(const QString &details, bool isHint);
    void leadToFiles(bool hasFiles);

    MainWindow &m_window;
    const TaggedControls &m_controls;
    LogSection &m_log;
    const bool m_hasPackageServer;
    FirmwareLibrary m_library{*this};
    PackageDownload m_download;
    qint32 m_targetVersion = -1;
    qint32 m_listedVersion = -1; // the model that the list was filled for last
    QTimer m_refill;
    DownloadProgress m_progress;    // of the latest download
    QString m_arrived;              // how long its package took to arrive
    QTimer m_refresh;               // of the details while a package arrives
    bool m_showsHint = false;       // the details line leads to firmware files
    std::optional<int> m_saidEmpty; // the errno, or 0, for which the folder was said to be empty
    QString m_fileName;             // null while none was chosen
    Lifetime m_lifetime;
};

} // namespace vorn
