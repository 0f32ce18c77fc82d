#include "KyScriptWebViewCtrl.h"

#include <kywebview/KyWebViewBrowser.h>
#include <kywebview/KyWebViewWidget.h>

#include <QtWidgets/QApplication>

KyScriptWebViewCtrl::KyScriptWebViewCtrl(const QString& inName)
    : mSettingsName(QStringLiteral("OrvaneBrowser.") +
                    (inName.isEmpty() ? QStringLiteral("Default") : inName))
    , mWindowTitle(inName)
{}

KyScriptWebViewCtrl::~KyScriptWebViewCtrl()
{
    delete mBrowser;
}

void KyScriptWebViewCtrl::setSize(int inWidth, int inHeight)
{
    if (mBrowser)
        mBrowser->resize(inWidth, inHeight);
}

void KyScriptWebViewCtrl::sendCommand(const QString& inCMD)
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return;
    if (!mBrowser) {
        mBrowser = new KyWebViewBrowser(nullptr, mSettingsName);
        mBrowser->setWindowTitle(mWindowTitle);
    }
    mBrowser->receiveCommand(inCMD);
}

bool KyScriptWebViewCtrl::isHidden() const
{
    return !mBrowser || !mBrowser->isVisible();
}

bool KyScriptWebViewCtrl::isRunning() const
{
    return mBrowser;
}

bool KyScriptWebViewCtrl::isInstalled() const
{
    return KyWebViewWidget::isRuntimeInstalled();
}
