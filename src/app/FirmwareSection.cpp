#include "app/FirmwareSection.h"

#include "app/StatusTexts.h"
#include "firmware/StagingFolder.h"
#include "platform/Directories.h"

#include <QDir>
#include <QLoggingCategory>

#include <algorithm>

using namespace std::chrono_literals;

namespace vorn {
namespace {

Q_LOGGING_CATEGORY(logFirmwareSection, "vorn.app")

const QString kNoFirmware = QStringLiteral("No firmware selected");
// What a device needs, with some room, to tell its model after the port was opened.
constexpr auto kRefillDelay = 500ms;

} // namespace

FirmwareSection::FirmwareSection(MainWindow &window, const TaggedControls &controls,
                                 PackageLocation packages)
    : m_window(window), m_controls(controls), m_download(std::move(packages), m_library, *this)
{
    m_refill.setSingleShot(true);
    m_refill.setTimerType(Qt::PreciseTimer);
    m_refill.setInterval(kRefillDelay);
    connect(&m_refill, &QTimer::timeout, this, &FirmwareSection::refill);
}

void FirmwareSection::begin()
{
    StagingFolder::recoverInterruptedPublish();
    m_library.readFirmWare(m_targetVersion);
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
    list->addItem(kNoFirmware);
    list->addItems(files);
}

void FirmwareSection::fileHandlePopBtn()
{
    const QString title = currentTitle(m_controls.filePopUpBtn);
    qCInfo(logFirmwareSection) << "Firmware list:" << title;
    m_fileName = title;
    show(title == kNoFirmware ? texts::kNoFirmwareSelected : texts::kFirmwareSelected);
}

bool FirmwareSection::offersFile() const
{
    // A list that was never filled offers nothing to choose either.
    const QString title = currentTitle(m_controls.filePopUpBtn);
    return !title.isNull() && title != kNoFirmware;
}

QString FirmwareSection::imagePath() const
{
    if (m_fileName.isNull())
        return {};
    return QDir(cachesDirectory()).filePath(m_download.curDirName() + u'/' + m_fileName);
}

void FirmwareSection::getFirmWare()
{
    if (m_download.sendRequest())
        m_window.showDownloadBusy();
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

void FirmwareSection::endDownload(StatusTone tone)
{
    setStatusTone(m_controls.perText, tone);
    if (!m_download.isRunning())
        m_window.hideDownloadProgress();
}

void FirmwareSection::packageResponseDidArrive(qint64 total)
{
    show(texts::kPackageResponse);
    showProgress(0, total);
}

void FirmwareSection::packageDidProgress(qint64 received, qint64 total)
{
    show(texts::ofPackageProgress(received, total));
    showProgress(received, total);
}

void FirmwareSection::packageWillUnpack()
{
    m_window.showDownloadBusy();
}

void FirmwareSection::packageIsUpToDate()
{
    show(texts::kPackageIsUpToDate);
    endDownload(StatusTone::Good);
}

void FirmwareSection::packageDidFail(const PackageProblem &problem, bool showsInStatus)
{
    qCWarning(logFirmwareSection).noquote()
        << "No package installed:" << texts::description(problem);
    if (showsInStatus)
        show(texts::kPackageFailed);
    endDownload(StatusTone::Bad);
}

void FirmwareSection::packageWasInstalled()
{
    show(texts::kPackageInstalled);
    endDownload(StatusTone::Good);
}

void FirmwareSection::firmwareFolderDidChange()
{
    m_listedVersion = m_targetVersion;
    m_library.readFirmWare(m_targetVersion);
}

} // namespace vorn
