#include "cli/Download.h"

#include "firmware/StagingFolder.h"

#include <QCoreApplication>

#include <algorithm>
#include <csignal>
#include <utility>

namespace vorn {

Download::Download(const CliOptions &options, Output &output)
    : m_hasServer(options.common.packages.isConfigured()), m_output(output), m_library(*this),
      m_download(options.common.packages, m_library, *this)
{
}

std::optional<ExitCode> Download::prepare()
{
    if (!m_hasServer)
        return fail(explain(Cause::NoServer));
    // Whether the installed package is still there decides whether the latest one is fetched.
    m_library.readFirmWare(-1);
    return std::nullopt;
}

void Download::start()
{
    m_download.sendRequest();
}

bool Download::quitSignalDidArrive(int signal)
{
    // It takes a moment, and what is left behind by force is tidied up at the next start.
    if (m_isUnpacking && signal != SIGTERM && !std::exchange(m_wasAsked, true))
        return false;
    QCoreApplication::exit(fail(explain(Cause::DownloadInterrupted)));
    return true;
}

void Download::packageResponseDidArrive(qint64)
{
    m_output.showStep({}, {"receive", tr("Receive the package")});
}

void Download::packageDidProgress(qint64 received, qint64 total)
{
    const int percent =
        total > 0 ? static_cast<int>(std::min(100 * received / total, qint64{100})) : m_percent;
    if (percent != std::exchange(m_percent, percent))
        m_output.showProgress({}, percent, 0, 0);
}

void Download::packageWillUnpack()
{
    m_isUnpacking = true;
    m_output.showStep({}, {"unpack", tr("Unpack the package")});
}

void Download::packageIsUpToDate()
{
    m_output.showResult({.text = tr("The latest package is installed already.")});
    QCoreApplication::exit(kDone);
}

void Download::packageDidFail(const PackageProblem &problem, bool)
{
    QCoreApplication::exit(fail(explainDownload(problem, hasNetwork())));
}

void Download::packageWasInstalled()
{
    m_output.showResult({.text = tr("The latest package is installed.")});
}

// By now the package's date is stored as well.
void Download::firmwareFolderDidChange()
{
    QCoreApplication::exit(kDone);
}

void Download::firmwareListDidChange(const QStringList &) {}

ExitCode Download::fail(const Explanation &why)
{
    m_output.showResult({.why = why});
    return exitCodeOf(why);
}

} // namespace vorn
