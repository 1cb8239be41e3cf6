#pragma once

#include "firmware/FirmwareFolder.h"
#include "firmware/PackageLocation.h"
#include "firmware/PackageObserver.h"
#include "firmware/UrlSession.h"
#include "platform/Lifetime.h"
#include "platform/SerialQueue.h"

#include <QByteArray>
#include <QNetworkAccessManager>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

namespace vorn {

class FirmwareLibrary;
class PackageStore;

// What is known of a package from the response on; each response begins a new one.
struct PackageState
{
    QByteArray data;           // the body so far, until it is saved or dropped
    qint64 totalNum = 0;       // the body's expected length, 0 when unknown
    QString suggestedFilename; // the archive's name
    // The archive's name up to its first ".": the firmware folder, also for the update.
    QString curDirName = kFirmwareFolderName;
    std::optional<QString> lastModifiedString;
    // 1 while no download is accepted or after it was refused, 0 once one was accepted.
    qint8 mIsCancel = 1;
};

struct PackageLimits
{
    UrlSession::Timeouts timeouts{};
    std::chrono::milliseconds delayBeforeUnpacking{500};
    // A body is held in memory until it is saved: four times the largest known package (60 MB).
    qint64 packageBytes = qint64{256} << 20;
    // How many downloads may run at once, each with a body of its own.
    std::size_t downloads = 2;
};

// Downloads the latest firmware package, unless it is the one that was installed last, and installs
// it. Main thread only; files are written and unpacked in the background.
//
// Each sendRequest() is a download of its own, even while another one is running. state() is that
// of the latest response; but each download keeps its own body and installs only that, one after
// the other, so that what is installed is always one complete package.
class PackageDownload final : private UrlSessionDelegate
{
public:
    // The user defaults' key for the "Last-Modified" value of the package that was installed last.
    static const QString KEY_LAST_MODIFIED;

    // `library` and `observer` outlive the object.
    PackageDownload(PackageLocation location, const FirmwareLibrary &library,
                    PackageObserver &observer, const PackageLimits &limits = {});
    // Aborts transfers. A package that is being installed is installed completely or not at all.
    ~PackageDownload() override;
    PackageDownload(const PackageDownload &) = delete;
    PackageDownload &operator=(const PackageDownload &) = delete;

    // Starts a download, which the observer is told of later. False when too many are running; then
    // nothing happens.
    bool sendRequest();

    const PackageState &state() const { return *m_state; }
    // The folder that the latest package belongs to: where the update finds its file.
    const QString &curDirName() const { return m_state->curDirName; }
    bool isRunning() const { return !m_downloads.empty(); }

private:
    struct Download;
    using DownloadPtr = std::shared_ptr<Download>;

    bool URLSessionDataTaskDidReceiveResponse(UrlSession &session,
                                              const UrlResponse &response) override;
    void URLSessionDataTaskDidReceiveData(UrlSession &session, const QByteArray &piece) override;
    void URLSessionTaskDidCompleteWithError(UrlSession &session,
                                            const PackageProblem &error) override;

    void checkMemory();
    void savePackage(const DownloadPtr &download);
    void unpackLater(const DownloadPtr &download, const PackageProblem &saving);
    void finishUnpacking(const DownloadPtr &download, const PackageProblem &problem);
    void fail(const DownloadPtr &download, const PackageProblem &problem, bool showsInStatus);
    void remove(const DownloadPtr &download);
    DownloadPtr downloadOf(const UrlSession &session) const;
    void inBackground(std::function<PackageProblem()> work,
                      std::function<void(const PackageProblem &)> then);

    const PackageLocation m_location;
    const FirmwareLibrary &m_library;
    PackageObserver &m_observer;
    const PackageLimits m_limits;
    std::unique_ptr<QNetworkAccessManager> m_network; // null before the first download
    std::shared_ptr<PackageState> m_state = std::make_shared<PackageState>();
    std::vector<DownloadPtr> m_downloads;
    QTimer m_memoryCheck; // active while packages arrive
    std::size_t m_memoryBefore = 0;
    std::size_t m_received = 0; // of all packages since then
    SerialQueue m_queue;
    Lifetime m_lifetime;
};

} // namespace vorn
