#pragma once

#include <QtCore/QObject>

class KyWebView;
class QWidget;

/// What the plugin "kywebengine" gives to a host that has loaded it. Its metadata has the engine's "version".
class KyWebEngineInterface
{
public:
    virtual ~KyWebEngineInterface() = default;

    /// A view whose data are kept in \a inFolder, or nowhere for an empty one.
    virtual KyWebView* makeView(const QString& inFolder, QWidget* inParent) = 0;
};

#define KyWebEngineInterface_iid "org.kyscript.KyWebEngineInterface/1"
Q_DECLARE_INTERFACE(KyWebEngineInterface, KyWebEngineInterface_iid)
