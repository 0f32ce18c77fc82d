#pragma once

#include "KyWebEngineInterface.h"

/// Web pages on Qt WebEngine for a process that loads it only when it shows one.
class KyWebEnginePlugin final : public QObject, public KyWebEngineInterface
{
    Q_OBJECT
    Q_PLUGIN_METADATA(IID KyWebEngineInterface_iid FILE "kywebengine.json")
    Q_INTERFACES(KyWebEngineInterface)

public:
    KyWebView* makeView(const QString& inFolder, QWidget* inParent) override;
};
