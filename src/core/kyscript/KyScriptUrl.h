#pragma once

#include <QtCore/QObject>

/// The global `Url`. Owned by the engine.
class KyScriptUrl : public QObject
{
    Q_OBJECT

public:
    explicit KyScriptUrl(QObject* parent);

    /// Opens \a inUrl in the desktop's default program for it, and gives whether the desktop took it.
    /// Programs that cannot show the address are the desktop's matter: true does not say that anything was
    /// opened.
    Q_INVOKABLE bool open(QString inUrl);
};
