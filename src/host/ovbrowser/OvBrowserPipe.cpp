#include "OvBrowserPipe.h"

namespace {

constexpr int ConnectLimitMSecs = 3000;

} // namespace

OvBrowserPipe::OvBrowserPipe(QObject* inParent)
    : QObject(inParent)
{
    connect(&mSocket, &QLocalSocket::readyRead, this, &OvBrowserPipe::read);
    connect(&mSocket, &QLocalSocket::disconnected, this, &OvBrowserPipe::closed);
}

bool OvBrowserPipe::connectTo(const QString& inName)
{
    mSocket.connectToServer(inName);
    return mSocket.waitForConnected(ConnectLimitMSecs);
}

void OvBrowserPipe::read()
{
    for (const QString& command : mReader.read(mSocket.readAll()))
        Q_EMIT commandReceived(command);
}

void OvBrowserPipe::send(const QString& inMessage)
{
    mSocket.write(inMessage.toLatin1());
    mSocket.flush();
}
