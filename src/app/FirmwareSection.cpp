#include "app/FirmwareSection.h"

#include "app/StatusTexts.h"
#include "firmware/StagingFolder.h"
#include "platform/Directories.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

#include <QDir>
#include <QLoggingCategory>

#include <algorithm>
#include <utility>

using namespace std::chrono_literals;

namespace vorn {
namespace {

Q_LOGGING_CATEGORY(logFirmwareSection, "vorn.app")

// What a device needs, with some room, to tell its model after the port was opened.
constexpr auto kRefillDelay = 500ms;
constexpr auto kRefresh = 250ms;

using Clock = std::chrono::steady_clock;

} // namespace

FirmwareSection::FirmwareSection(MainWindow &window, const TaggedControls &controls,
                                 LogSection &log, const PackageLocation &packages)
    : m_window(window), m_controls(controls), m_log(log),
      m_hasPackageServer(packages.isConfigured()), m_download(packages, m_library, *this)
{
    m_refill.setSingleShot(true);
    m_refill.setTimerType(Qt::PreciseTimer);
    m_refill.setInterval(kRefillDelay);
    connect(&m_refill, &QTimer::timeout, this, &FirmwareSection::refill);
    m_refresh.setInterval(kRefresh);
    m_refresh.callOnTimeout(this, [this] { showDetails(m_progress.text(Clock::now()), false); });
}

void FirmwareSection::begin()
{
    m_window.setDownloadAvailable(m_hasPackageServer, m_hasPackageServer
                                                          ? tr("Fetch the latest firmware package")
                                                          : tr("No package server is configured"));
    // In the background, like every use of the caches: a network file system may hang.
    GlobalQueue::instance().post([this, token = m_lifetime.token()] {
        StagingFolder::recoverInterruptedPublish();
        MainQueue::instance().post(token, [this] {
            if (!m_library.hasStartedScan())
                refill();
        });
    });
}

void FirmwareSection::versionQueryDidEnd()
{
    if (!m_refill.isActive() && m_targetVersion != m_listedVersion)
        refill();
}

void FirmwareSection::refill()
{
    m_listedVersion = m_targetVersion;
    m_library.readFirmWareInBackground(m_targetVersion);
}

void FirmwareSection::firmwareListDidChange(const QStringList &files)
{
    QComboBox *list = m_controls.filePopUpBtn;
    if (!list)
        return;
    list->clear();
    list->addItem(texts::kNoFirmware);
    list->addItems(files);
    m_saidEmpty.reset();
    leadToFiles(!files.isEmpty());
}

void FirmwareSection::firmwareFolderIsEmpty()
{
    // Said once, and again when the reason is another one.
    const int error = m_library.scanError();
    if (std::exchange(m_saidEmpty, error) != error)
        leadToFiles(false);
}

void FirmwareSection::fileHandlePopBtn()
{
    const QString title = currentTitle(m_controls.filePopUpBtn);
    qCInfo(logFirmwareSection) << "Firmware list:" << title;
    m_fileName = title;
    if (!m_download.isRunning() && title != texts::kNoFirmware)
        showDetails({}, false);
    show(title == texts::kNoFirmware ? texts::kNoFirmwareSelected : texts::kFirmwareSelected);
}

bool FirmwareSection::offersFile() const
{
    // A list that was never filled offers nothing to choose either.
    const QString title = currentTitle(m_controls.filePopUpBtn);
    return !title.isNull() && title != texts::kNoFirmware;
}

QString FirmwareSection::imagePath() const
{
    if (m_fileName.isNull())
        return {};
    return QDir(cachesDirectory()).filePath(m_download.curDirName() + u'/' + m_fileName);
}

void FirmwareSection::getFirmWare()
{
    if (!m_download.sendRequest())
        return;
    m_window.showDownloadBusy();
    m_log.addStart(tr("Download"));
    m_progress.start(Clock::now());
    m_refresh.start();
    showDetails(m_progress.text(Clock::now()), false);
}

void FirmwareSection::show(const QString &text)
{
    showStatus(m_controls.perText, text, StatusTone::Neutral);
}

void FirmwareSection::showProgress(qint64 received, qint64 total)
{
    if (total > 0)
        m_window.showDownloadProgress(
            static_cast<int>(std::min(100 * received / total, qint64{100})));
    else
        m_window.showDownloadBusy();
}

void FirmwareSection::endDownload(StatusTone tone, const QString &details)
{
    setStatusTone(m_controls.perText, tone);
    if (!m_download.isRunning()) {
        m_window.hideDownloadProgress();
        m_refresh.stop();
    }
    showDetails(details, false);
}

void FirmwareSection::showDetails(const QString &details, bool isHint)
{
    m_showsHint = isHint;
    m_window.showFirmwareDetails(details);
}

// An empty list says how to fill it, in place of nothing but an earlier hint.
void FirmwareSection::leadToFiles(bool hasFiles)
{
    if (m_download.isRunning() || (hasFiles && !m_showsHint))
        return;
    const QString folder = QDir(cachesDirectory()).filePath(kFirmwareFolderName);
    Explanation hint;
    const bool hasOthers = !m_library.allFileArray().value_or(QStringList()).isEmpty();
    if (!hasFiles && hasOthers && m_targetVersion > 0)
        hint = explain(Cause::NoFirmwareForModel, {QString::number(m_targetVersion)});
    else if (!hasFiles)
        hint = explainNoFirmware(withoutPersonalNames(folder), m_library.scanError(),
                                 m_hasPackageServer);
    showDetails(hint.text(), !hasFiles);
}

void FirmwareSection::packageResponseDidArrive(qint64 total)
{
    show(texts::kPackageResponse);
    m_progress.update(0, total, Clock::now());
    showProgress(0, total);
}

void FirmwareSection::packageDidProgress(qint64 received, qint64 total)
{
    show(texts::ofPackageProgress(received, total));
    m_progress.update(received, total, Clock::now());
    if (!m_refresh.isActive()) // another download unpacks
        m_refresh.start();
    showProgress(received, total);
}

void FirmwareSection::packageWillUnpack()
{
    m_window.showDownloadBusy();
    m_refresh.stop();
    showDetails(tr("Unpacking the package."), false);
    m_arrived = m_progress.textOfTime(Clock::now());
    m_log.add(m_arrived);
    m_log.addStart(tr("Unpacking"));
}

void FirmwareSection::packageIsUpToDate()
{
    show(texts::kPackageIsUpToDate);
    m_log.addOk(tr("Download"), m_progress.elapsed(Clock::now()));
    endDownload(StatusTone::Good, {});
}

void FirmwareSection::packageDidFail(const PackageProblem &problem, bool showsInStatus)
{
    const QString why = explainDownload(problem, hasNetwork()).text();
    qCWarning(logFirmwareSection).noquote() << "No package installed:" << why;
    m_log.addFailed(tr("Download"), m_progress.elapsed(Clock::now()), why);
    if (showsInStatus)
        show(texts::kPackageFailed);
    endDownload(StatusTone::Bad, why);
}

void FirmwareSection::packageWasInstalled()
{
    show(texts::kPackageInstalled);
    m_log.addOk(tr("Download"), m_progress.elapsed(Clock::now()));
    endDownload(StatusTone::Good, m_arrived);
}

void FirmwareSection::firmwareFolderDidChange()
{
    refill();
}

} // namespace vorn
