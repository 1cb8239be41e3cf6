#pragma once

#include "cli/CliOptions.h"
#include "cli/Output.h"
#include "firmware/FirmwareLibrary.h"
#include "firmware/PackageDownload.h"
#include "platform/QuitSignals.h"

#include <QCoreApplication>

namespace vorn {

// The command "download": fetches and installs the latest package. Main thread only.
class Download final : public QuitSignalsObserver,
                       private PackageObserver,
                       private FirmwareLibraryObserver
{
    Q_DECLARE_TR_FUNCTIONS(Download)
public:
    // The output outlives the object.
    Download(const CliOptions &options, Output &output);

    // Looks for the installed package. The exit code when there is no server.
    std::optional<ExitCode> prepare();
    // Starts it; it ends the event loop with its exit code.
    void start();

private:
    bool quitSignalDidArrive(int signal) override;

    void packageResponseDidArrive(qint64 total) override;
    void packageDidProgress(qint64 received, qint64 total) override;
    void packageWillUnpack() override;
    void packageIsUpToDate() override;
    void packageDidFail(const PackageProblem &problem, bool showsInStatus) override;
    void packageWasInstalled() override;
    void firmwareFolderDidChange() override;
    void firmwareListDidChange(const QStringList &files) override;

    ExitCode fail(const Explanation &why);

    const bool m_hasServer;
    Output &m_output;
    FirmwareLibrary m_library;
    PackageDownload m_download;
    bool m_isUnpacking = false;
    bool m_wasAsked = false; // to end while it unpacks
    int m_percent = -1;      // as shown last
};

} // namespace vorn
