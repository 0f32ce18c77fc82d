#include "KyScriptUrl.h"

#include <QtCore/QUrl>
#include <QtGui/QDesktopServices>

KyScriptUrl::KyScriptUrl(QObject* parent)
    : QObject(parent)
{}

bool KyScriptUrl::open(QString inUrl)
{
    return QDesktopServices::openUrl(QUrl(inUrl, QUrl::TolerantMode));
}
