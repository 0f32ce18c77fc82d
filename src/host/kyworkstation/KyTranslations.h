#pragma once

#include <QtCore/QLocale>
#include <QtCore/QTranslator>

/// The texts of the program and those of Qt in the user's language, as long as it lives.
///
/// Of the languages that the locale prefers the first one counts that there is a translation for, or that is
/// English, which is what the sources speak. Made behind the application object and before any window.
class KyTranslations
{
public:
    explicit KyTranslations(const QLocale& inLocale = QLocale());

private:
    QTranslator mQt;
    QTranslator mProgram;
};
