#include "update/VersionQuery.h"

namespace vorn {

VersionQuery::VersionQuery(BootLoaderLink link, std::shared_ptr<std::atomic<qint32>> targetVersion)
    : m_link(std::move(link)), m_targetVersion(std::move(targetVersion))
{
}

void VersionQuery::run()
{
    if (m_link.connect() && m_link.queryVersion()) {
        // On the main thread, where an update that takes over begins: the device's word to an
        // abandoned query does not reach its successor's version.
        m_link.onMainThread([this](UpdateObserver *) {
            if (const auto version = m_link.reportedVersion())
                *m_targetVersion = *version;
        });
        m_link.scheduleRtsLow();
    }
    m_link.tell([this](UpdateObserver &observer) {
        for (const QString &text : m_link.noAnswerTexts())
            observer.showUpdateText(text);
        observer.versionQueryDidEnd();
    });
}

} // namespace vorn
