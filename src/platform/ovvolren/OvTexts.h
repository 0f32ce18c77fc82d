#pragma once

#include <QtCore/QCoreApplication>

/// The library's texts for people, as translators see them: tr() gives them in the user's language. May be
/// used in any thread.
struct OvTexts
{
    Q_DECLARE_TR_FUNCTIONS(OvTexts)
};
