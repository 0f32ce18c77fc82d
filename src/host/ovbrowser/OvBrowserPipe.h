#pragma once

#include <kywebview/KyWebViewCommands.h>

#include <QtCore/QObject>
#include <QtNetwork/QLocalSocket>

/// The browser's end of the pipe: hands on commands as they become whole, and sends messages, each in a write
/// of its own.
class OvBrowserPipe final : public QObject
{
    Q_OBJECT

public:
    explicit OvBrowserPipe(QObject* inParent = nullptr);

    /// Whether somebody serves the pipe of this name.
    bool connectTo(const QString& inName);
    /// What is wrong with it.
    QString errorText() const { return mSocket.errorString(); }

    void send(const QString& inMessage);

Q_SIGNALS:
    void commandReceived(const QString& inCommand);
    void closed();

private:
    void read();

    QLocalSocket mSocket;
    KyWebViewCommandReader mReader;
};
