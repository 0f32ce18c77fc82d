#include "KyScriptLiveDialogs.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QPointer>

#include <vector>

namespace {

std::vector<QObject*>& all()
{
    static auto* const dialogs = new std::vector<QObject*>;
    return *dialogs;
}

void end()
{
    while (!all().empty())
        delete all().back();
}

} // namespace

void KyScriptLiveDialogs::enter(QObject* inDialog)
{
    static QPointer<QCoreApplication> application;
    if (application != QCoreApplication::instance())
        qAddPostRoutine(&end);
    application = QCoreApplication::instance();
    all().push_back(inDialog);
}

void KyScriptLiveDialogs::leave(QObject* inDialog)
{
    std::erase(all(), inDialog);
}
