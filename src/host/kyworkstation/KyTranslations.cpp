#include "KyTranslations.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QLibraryInfo>

namespace {

bool isEnglish(const QLocale& inLocale)
{
    return inLocale.language() == QLocale::English || inLocale.language() == QLocale::C;
}

} // namespace

KyTranslations::KyTranslations(const QLocale& inLocale)
{
    const auto languages = inLocale.uiLanguages();
    for (const QString& language : languages) {
        const QLocale locale(language);
        if (isEnglish(locale))
            return;
        if (!mProgram.load(locale, QStringLiteral("kyscript"), QStringLiteral("_"),
                           QStringLiteral(":/translations")))
            continue;
        if (mQt.load(locale, QStringLiteral("qtbase"), QStringLiteral("_"),
                     QLibraryInfo::path(QLibraryInfo::TranslationsPath)))
            QCoreApplication::installTranslator(&mQt);
        QCoreApplication::installTranslator(&mProgram);
        return;
    }
}
