#include "firmware/PackageDownload.h"

#include "firmware/PackageLog.h"
#include "firmware/PackageStore.h"
#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"

#include <QTimer>

#include <algorithm>

namespace vorn {

namespace {

using Kind = PackageProblem::Kind;
using Outcome = PackageObserver::Outcome;
using Phase = PackageObserver::Phase;

constexpr QLatin1StringView kFailed("Prompt:Failed to download the latest firmware");

// A value that is absent equals nothing, and neither does a stored one that is.
bool isStoredDate(const std::optional<QString> &lastModified)
{
    const QString stored = UserDefaults::stringForKey(PackageDownload::KEY_LAST_MODIFIED);
    return lastModified && !stored.isNull() && *lastModified == stored;
}

} // namespace

const QString PackageDownload::KEY_LAST_MODIFIED = QStringLiteral("KEY_LAST_MODIFIED");

struct PackageDownload::Download
{
    std::unique_ptr<UrlSession> session; // none when it has ended
    std::shared_ptr<PackageState> state; // none before the response
    int statusCode = 0;
    bool isUpToDate = false;
    PackageProblem refusal; // why its package was not wanted
    std::unique_ptr<PackageStore> store;
};

PackageDownload::PackageDownload(PackageLocation location, FirmwareLibrary &library,
                                 std::function<qint32()> targetVersion, PackageObserver &observer)
    : PackageDownload(std::move(location), library, std::move(targetVersion), observer, Limits())
{
}

PackageDownload::PackageDownload(PackageLocation location, FirmwareLibrary &library,
                                 std::function<qint32()> targetVersion, PackageObserver &observer,
                                 Limits limits)
    : m_location(std::move(location)), m_library(library),
      m_targetVersion(std::move(targetVersion)), m_observer(observer), m_limits(limits)
{
}

PackageDownload::~PackageDownload() = default;

void PackageDownload::sendRequest()
{
    const auto download = std::make_shared<Download>();
    download->session = std::make_unique<UrlSession>(static_cast<UrlSessionDelegate &>(*this),
                                                     m_limits.transferTimeout);
    m_downloads.push_back(download);
    m_observer.packageProgress(Phase::Connecting, 0, 0);
    download->session->resume(m_network, m_location);
}

UrlSessionDelegate::Disposition
PackageDownload::URLSessionDataTaskDidReceiveResponse(UrlSession &session,
                                                      const UrlResponse &response)
{
    qCDebug(packagesLog, "receive response.");
    const DownloadPtr download = downloadOf(session);
    const QString folderBefore = m_state->curDirName;
    m_state = std::make_shared<PackageState>();
    download->state = m_state;
    download->statusCode = response.statusCode;
    m_observer.showText(QStringLiteral("0"));

    m_state->totalNum = expectedLength(response.contentLength);
    m_state->lastModifiedString = lastModifiedValue(response.lastModified);
    m_state->suggestedFilename = suggestedFilename(response);
    m_state->curDirName = folderNameFor(m_state->suggestedFilename);
    if (m_state->curDirName.isEmpty()) {
        m_state->curDirName = folderBefore; // the update goes on finding its files
        return refuse(
            *download,
            {Kind::UnusableName,
             QStringLiteral("\"%1\" is no name for a package").arg(m_state->suggestedFilename)});
    }
    if (m_library.allFileArray() && isStoredDate(m_state->lastModifiedString)) {
        download->isUpToDate = true;
        m_observer.showText(
            QStringLiteral("Prompt:Currently it is the latest firmware,no need to download"));
        return Disposition::Cancel;
    }
    if (m_state->totalNum > m_limits.packageBytes)
        return refuse(
            *download,
            {Kind::TooLarge, QStringLiteral("the package has %1 bytes").arg(m_state->totalNum)});
    m_state->mIsCancel = 0;
    m_observer.packageProgress(Phase::Receiving, 0, m_state->totalNum);
    return Disposition::Allow;
}

UrlSessionDelegate::Disposition PackageDownload::refuse(Download &download,
                                                        const PackageProblem &reason)
{
    download.refusal = reason;
    m_observer.showText(kFailed);
    return Disposition::Cancel;
}

void PackageDownload::URLSessionDataTaskDidReceiveData(UrlSession &session, const QByteArray &piece)
{
    qCDebug(packagesLog, "receive data.");
    const DownloadPtr download = downloadOf(session);
    PackageState &state = *download->state;
    if (piece.size() > m_limits.packageBytes - state.data.size()) {
        state.data = {};
        refuse(*download, {Kind::TooLarge, QStringLiteral("the package does not end")});
        session.cancel();
        return;
    }
    state.data.append(piece);
    updateProgress(state);
}

void PackageDownload::updateProgress(const PackageState &state)
{
    const float percentage =
        100.0F * static_cast<float>(state.data.size()) / static_cast<float>(state.totalNum);
    // Of an unknown length there is no percentage.
    const QString figure =
        state.totalNum > 0 ? QString::asprintf("%.0f", double{percentage}) : QStringLiteral("--");
    m_observer.showText(QStringLiteral("Prompt:Progress%1%").arg(figure));
    m_observer.packageProgress(Phase::Receiving, state.data.size(), state.totalNum);
}

void PackageDownload::URLSessionTaskDidCompleteWithError(UrlSession &session,
                                                         const PackageProblem &error)
{
    const DownloadPtr download = downloadOf(session);
    download->session.release()->deleteLater(); // it is the caller
    // Without a response of its own, a download judges by what the last one left.
    PackageState &state = download->state ? *download->state : *m_state;
    const bool isInstalled = isStoredDate(state.lastModifiedString);
    if (error)
        qCInfo(packagesLog).noquote() << "download ended:" << error.text;

    if (state.mIsCancel == 1 && error && !isInstalled)
        m_observer.showText(kFailed);
    if (download->refusal)
        return end(download, Outcome::Failed, download->refusal);
    if (error || (state.mIsCancel != 0 && isInstalled)) {
        // An error after the package was accepted leaves the last progress figure standing.
        if (download->state)
            download->state->data = {};
        if (download->isUpToDate)
            return end(download, Outcome::UpToDate);
        return end(download, Outcome::Failed, error);
    }
    savePackage(download, state);
}

void PackageDownload::savePackage(const DownloadPtr &download, PackageState &state)
{
    m_observer.packageProgress(Phase::Unpacking, 0, 0);
    download->store = std::make_unique<PackageStore>(state.suggestedFilename, state.curDirName);
    inBackground(
        [download, data = std::exchange(state.data, {})] { return download->store->save(data); },
        [this, download](const PackageProblem &problem) { unpackLater(download, problem); });
}

void PackageDownload::unpackLater(const DownloadPtr &download, const PackageProblem &saving)
{
    // A package that could not be saved fails like one that cannot be unpacked, and no earlier.
    QTimer::singleShot(m_limits.delayBeforeUnpacking, &m_network, [this, download, saving] {
        inBackground([download, saving] { return saving ? saving : download->store->install(); },
                     [this, download](const PackageProblem &problem) {
                         finishUnpacking(download, problem);
                     });
    });
}

void PackageDownload::finishUnpacking(const DownloadPtr &download, const PackageProblem &problem)
{
    if (!problem) {
        m_observer.showText(QStringLiteral("Prompt:Successfully downloaded the latest firmware"));
        UserDefaults::setStringForKey(download->state->lastModifiedString.value_or(QString()),
                                      KEY_LAST_MODIFIED);
        UserDefaults::synchronize();
        m_library.readFirmWare(m_targetVersion());
        return end(download, Outcome::Installed);
    }
    qCWarning(packagesLog).noquote() << "package not installed:" << problem.text;
    m_observer.showText(kFailed);
    const bool isErrorPage = download->statusCode >= 400 && problem.kind == Kind::NotAnArchive;
    end(download, Outcome::Failed,
        isErrorPage ? PackageProblem{Kind::HttpStatus,
                                     QStringLiteral("the server answered with HTTP status %1")
                                         .arg(download->statusCode),
                                     download->statusCode}
                    : problem);
}

void PackageDownload::end(const DownloadPtr &download, Outcome outcome,
                          const PackageProblem &problem)
{
    m_downloads.erase(std::find(m_downloads.begin(), m_downloads.end(), download));
    m_observer.packageEnded(outcome, problem);
}

PackageDownload::DownloadPtr PackageDownload::downloadOf(const UrlSession &session) const
{
    return *std::find_if(m_downloads.begin(), m_downloads.end(), [&](const DownloadPtr &download) {
        return download->session.get() == &session;
    });
}

// `then` runs on the main thread, unless this object is gone by then.
void PackageDownload::inBackground(std::function<PackageProblem()> work,
                                   std::function<void(const PackageProblem &)> then)
{
    m_queue.post(
        [work = std::move(work), then = std::move(then), alive = std::weak_ptr<char>(m_alive)] {
            const PackageProblem problem = work();
            MainQueue::instance().post([problem, then, alive] {
                if (!alive.expired())
                    then(problem);
            });
        });
}

} // namespace vorn
