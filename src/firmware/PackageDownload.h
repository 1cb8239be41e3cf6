#pragma once

#include "firmware/PackageLocation.h"
#include "firmware/PackageObserver.h"
#include "firmware/PackageState.h"
#include "firmware/UrlSession.h"
#include "platform/SerialQueue.h"

#include <QNetworkAccessManager>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

namespace vorn {

class PackageStore;

// Fetches the latest firmware package unless it is the one installed last, installs it and has the
// firmware folder scanned again. Main thread only; files are written and unpacked in the
// background.
//
// Each sendRequest() is a download of its own, also while another runs. All show their texts in one
// line, and state() is that of the latest response; but each keeps the body it received and
// installs nothing but that, one after the other, so that what is installed is always one whole
// package.
class PackageDownload final : private UrlSessionDelegate
{
public:
    struct Limits
    {
        // How long a transfer may go without a byte: the usual limit of HTTP clients.
        std::chrono::milliseconds transferTimeout{60'000};
        std::chrono::milliseconds delayBeforeUnpacking{500};
        // A body is held in memory until it is saved: four times the largest package known (60 MB).
        qint64 packageBytes = qint64{256} << 20;
    };

    // The key of the user defaults under which the "Last-Modified" value of the package installed
    // last is kept.
    static const QString KEY_LAST_MODIFIED;

    // `targetVersion` tells the device's model code. `library` and `observer` outlive the object.
    PackageDownload(PackageLocation location, FirmwareLibrary &library,
                    std::function<qint32()> targetVersion, PackageObserver &observer);
    PackageDownload(PackageLocation location, FirmwareLibrary &library,
                    std::function<qint32()> targetVersion, PackageObserver &observer,
                    Limits limits);
    // Ends transfers. A package that is being unpacked is installed or not, but never by half.
    ~PackageDownload() override;
    PackageDownload(const PackageDownload &) = delete;
    PackageDownload &operator=(const PackageDownload &) = delete;

    // Starts a download. Everything else is told to the observer, later.
    void sendRequest();

    const PackageState &state() const { return *m_state; }
    // The folder of the package named last: where the update finds its file.
    const QString &curDirName() const { return m_state->curDirName; }
    bool isRunning() const { return !m_downloads.empty(); }

private:
    struct Download;
    using DownloadPtr = std::shared_ptr<Download>;

    Disposition URLSessionDataTaskDidReceiveResponse(UrlSession &session,
                                                     const UrlResponse &response) override;
    void URLSessionDataTaskDidReceiveData(UrlSession &session, const QByteArray &piece) override;
    void URLSessionTaskDidCompleteWithError(UrlSession &session,
                                            const PackageProblem &error) override;
    void updateProgress(const PackageState &state);

    Disposition refuse(Download &download, const PackageProblem &reason);
    void savePackage(const DownloadPtr &download, PackageState &state);
    void unpackLater(const DownloadPtr &download, const PackageProblem &saving);
    void finishUnpacking(const DownloadPtr &download, const PackageProblem &problem);
    void end(const DownloadPtr &download, PackageObserver::Outcome outcome,
             const PackageProblem &problem = {});
    DownloadPtr downloadOf(const UrlSession &session) const;
    void inBackground(std::function<PackageProblem()> work,
                      std::function<void(const PackageProblem &)> then);

    const PackageLocation m_location;
    FirmwareLibrary &m_library;
    const std::function<qint32()> m_targetVersion;
    PackageObserver &m_observer;
    const Limits m_limits;
    QNetworkAccessManager m_network;
    std::shared_ptr<PackageState> m_state = std::make_shared<PackageState>();
    std::vector<DownloadPtr> m_downloads;
    SerialQueue m_queue;
    // What comes back from the background finds out by it that the object is gone.
    const std::shared_ptr<char> m_alive = std::make_shared<char>();
};

} // namespace vorn
