#include "firmware/PackageDownload.h"

#include "firmware/EnvironmentProxy.h"
#include "firmware/FirmwareLibrary.h"
#include "firmware/PackageStore.h"
#include "platform/MainQueue.h"
#include "platform/UserDefaults.h"

#include <QLoggingCategory>
#include <QTimer>

#include <malloc.h>

#include <algorithm>

namespace vorn {

namespace {

Q_LOGGING_CATEGORY(logFirmware, "vorn.firmware")

using Kind = PackageProblemKind;

// Qt collects response headers, the sizes of chunks and a proxy's answer in memory without a limit,
// and gives no sign of them before they are complete; a server that never ends them was measured to
// fill 70 MB per second. So what is in memory besides the packages is limited. A package may take
// three times its size while its buffer grows.
constexpr std::size_t kMostOverhead = std::size_t{128} << 20;
constexpr std::size_t kMostPerByte = 3;
constexpr std::chrono::milliseconds kMemoryCheckInterval{100};

std::size_t memoryInUse()
{
    const struct mallinfo2 heap = ::mallinfo2();
    return heap.uordblks + heap.hblkhd;
}

// A missing value never matches.
bool isStoredDate(const std::optional<QString> &lastModified)
{
    const QString stored = UserDefaults::stringForKey(PackageDownload::KEY_LAST_MODIFIED);
    return lastModified && !stored.isNull() && *lastModified == stored;
}

} // namespace

const QString PackageDownload::KEY_LAST_MODIFIED = QStringLiteral("KEY_LAST_MODIFIED");

struct PackageDownload::Download
{
    std::unique_ptr<UrlSession> session; // null once it has ended
    std::shared_ptr<PackageState> state; // null before the response
    int statusCode = 0;
    bool isUpToDate = false;
    PackageProblem refusal; // why its package was not wanted
    std::unique_ptr<PackageStore> store;
};

PackageDownload::PackageDownload(PackageLocation location, const FirmwareLibrary &library,
                                 PackageObserver &observer, const PackageLimits &limits)
    : m_location(std::move(location)), m_library(library), m_observer(observer), m_limits(limits)
{
    m_memoryCheck.setInterval(kMemoryCheckInterval);
    m_memoryCheck.callOnTimeout([this] { checkMemory(); });
}

PackageDownload::~PackageDownload() = default;

bool PackageDownload::sendRequest()
{
    if (m_downloads.size() >= m_limits.downloads)
        return false;
    if (!m_network) {
        m_network = std::make_unique<QNetworkAccessManager>();
        m_network->setProxyFactory(std::make_unique<EnvironmentProxy>().release()); // which owns it
    }
    const auto download = std::make_shared<Download>();
    download->session =
        std::make_unique<UrlSession>(static_cast<UrlSessionDelegate &>(*this), m_limits.timeouts);
    m_downloads.push_back(download);
    if (!m_memoryCheck.isActive()) {
        m_memoryBefore = memoryInUse();
        m_received = 0;
        m_memoryCheck.start();
    }
    download->session->resume(*m_network, m_location);
    return true;
}

bool PackageDownload::URLSessionDataTaskDidReceiveResponse(UrlSession &session,
                                                           const UrlResponse &response)
{
    qCDebug(logFirmware, "receive response.");
    const DownloadPtr download = downloadOf(session);
    const QString previousFolder = m_state->curDirName;
    m_state = std::make_shared<PackageState>();
    download->state = m_state;
    download->statusCode = response.statusCode;
    m_state->totalNum = response.contentLength;
    m_state->lastModifiedString = response.lastModified;
    m_state->suggestedFilename = suggestedFilename(response);
    m_state->curDirName = folderNameFor(m_state->suggestedFilename);
    m_observer.packageResponseDidArrive(m_state->totalNum);

    if (m_state->curDirName.isEmpty()) {
        m_state->curDirName = previousFolder; // where the update still finds its files
        download->refusal = {Kind::UnusableName, 0, m_state->suggestedFilename};
        return false;
    }
    if (m_library.allFileArray() && isStoredDate(m_state->lastModifiedString)) {
        download->isUpToDate = true;
        return false;
    }
    if (m_state->totalNum > m_limits.packageBytes) {
        download->refusal = {Kind::TooLarge, 0, m_state->suggestedFilename};
        return false;
    }
    m_state->mIsCancel = 0;
    return true;
}

void PackageDownload::URLSessionDataTaskDidReceiveData(UrlSession &session, const QByteArray &piece)
{
    qCDebug(logFirmware, "receive data.");
    const DownloadPtr download = downloadOf(session);
    PackageState &state = *download->state;
    if (piece.size() > m_limits.packageBytes - state.data.size()) {
        download->refusal = {Kind::TooLarge, 0, state.suggestedFilename};
        session.cancel();
        return;
    }
    state.data.append(piece);
    m_received += static_cast<std::size_t>(piece.size());
    m_observer.packageDidProgress(state.data.size(), state.totalNum);
}

void PackageDownload::URLSessionTaskDidCompleteWithError(UrlSession &session,
                                                         const PackageProblem &error)
{
    const DownloadPtr download = downloadOf(session);
    download->session.release()->deleteLater(); // it is the caller
    if (download->isUpToDate) {
        remove(download);
        return m_observer.packageIsUpToDate();
    }
    if (download->refusal)
        return fail(download, download->refusal, true);
    if (!error)
        return savePackage(download);
    // Without a response of its own, a download is judged by the latest response.
    const PackageState &state = download->state ? *download->state : *m_state;
    fail(download, error, state.mIsCancel == 1 && !isStoredDate(state.lastModifiedString));
}

void PackageDownload::checkMemory()
{
    std::vector<DownloadPtr> arriving;
    for (const DownloadPtr &download : m_downloads)
        if (download->session)
            arriving.push_back(download);
    if (arriving.empty())
        return m_memoryCheck.stop();
    if (memoryInUse() <= m_memoryBefore + kMostOverhead + kMostPerByte * m_received)
        return;
    for (const DownloadPtr &download : arriving) {
        download->refusal = {Kind::Protocol, static_cast<int>(QNetworkReply::ProtocolFailure),
                             m_location.url().host()};
        download->session->cancel();
    }
}

void PackageDownload::savePackage(const DownloadPtr &download)
{
    PackageState &state = *download->state;
    m_observer.packageWillUnpack();
    download->store = std::make_unique<PackageStore>(state.suggestedFilename, state.curDirName);
    inBackground(
        [download, data = std::exchange(state.data, {})] { return download->store->save(data); },
        [this, download](const PackageProblem &problem) { unpackLater(download, problem); });
}

void PackageDownload::unpackLater(const DownloadPtr &download, const PackageProblem &saving)
{
    // A package that could not be saved fails like one that cannot be unpacked, and no earlier.
    QTimer::singleShot(m_limits.delayBeforeUnpacking, m_network.get(), [this, download, saving] {
        inBackground([download, saving] { return saving ? saving : download->store->install(); },
                     [this, download](const PackageProblem &problem) {
                         finishUnpacking(download, problem);
                     });
    });
}

void PackageDownload::finishUnpacking(const DownloadPtr &download, const PackageProblem &problem)
{
    if (problem) {
        const bool isErrorPage = download->statusCode >= 400 && problem.kind == Kind::NotAnArchive;
        const PackageProblem errorPage = {Kind::HttpStatus, download->statusCode,
                                          m_location.url().host()};
        PackageProblem named = isErrorPage ? errorPage : problem;
        if (named.text.isEmpty())
            named.text = download->state->suggestedFilename;
        return fail(download, named, true);
    }
    remove(download);
    m_observer.packageWasInstalled();
    UserDefaults::setStringForKey(download->state->lastModifiedString.value_or(QString()),
                                  KEY_LAST_MODIFIED);
    UserDefaults::synchronize();
    m_observer.firmwareFolderDidChange();
}

void PackageDownload::fail(const DownloadPtr &download, const PackageProblem &problem,
                           bool showsInStatus)
{
    remove(download);
    m_observer.packageDidFail(problem, showsInStatus);
}

void PackageDownload::remove(const DownloadPtr &download)
{
    if (download->state)
        download->state->data = {}; // the latest download's state lives on
    m_downloads.erase(std::find(m_downloads.begin(), m_downloads.end(), download));
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
    m_queue.post([work = std::move(work), then = std::move(then), token = m_lifetime.token()] {
        MainQueue::instance().post(token, [problem = work(), then] { then(problem); });
    });
}

} // namespace vorn
