#include "app/Translations.h"

#include <QCoreApplication>
#include <QLibraryInfo>
#include <QLocale>
#include <QTranslator>

#include <memory>

// Without this the linker drops a static library's resources. The macro must stand outside of every
// namespace.
static void loadResources()
{
    Q_INIT_RESOURCE(translations);
}

namespace vorn {
namespace {

void install(const QString &name, const QString &folder)
{
    auto catalogue = std::make_unique<QTranslator>();
    if (!catalogue->load(QLocale(), name, QStringLiteral("_"), folder))
        return;
    catalogue->setParent(QCoreApplication::instance());
    QCoreApplication::installTranslator(catalogue.release());
}

} // namespace

void installTranslations()
{
    loadResources();
    install(QStringLiteral("qtbase"), QLibraryInfo::path(QLibraryInfo::TranslationsPath));
    install(QStringLiteral("vornupdater"), QStringLiteral(":/translations"));
}

} // namespace vorn
