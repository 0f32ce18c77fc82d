#include "PeerProcess.h"

#include <QProcessEnvironment>
#include <QTest>

PeerProcess::PeerProcess(const QString& inProgram, const QStringList& inArguments,
                         const QStringList& inEnvironment)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const QString& variable : inEnvironment)
        environment.insert(variable.section('=', 0, 0), variable.section('=', 1));
    mProcess.setProcessEnvironment(environment);
    mProcess.setProcessChannelMode(QProcess::MergedChannels);
    connect(&mProcess, &QProcess::readyRead, this, &PeerProcess::read);
    mProcess.start(inProgram, inArguments);
}

PeerProcess::~PeerProcess()
{
    mProcess.disconnect(this);
    mProcess.terminate();
    if (mProcess.state() != QProcess::NotRunning && !mProcess.waitForFinished(10000)) {
        mProcess.kill();
        mProcess.waitForFinished();
    }
}

QString PeerProcess::waitFor(const QString& inPattern, std::chrono::milliseconds inLimit)
{
    const QRegularExpression pattern(QRegularExpression::anchoredPattern(inPattern));
    QString found;
    const bool came = QTest::qWaitFor(
        [&] {
            for (; found.isNull() && mNext < lines.size(); ++mNext) {
                const QRegularExpressionMatch match = pattern.match(lines.at(mNext));
                if (match.hasMatch())
                    found = match.captured(pattern.captureCount() > 0 ? 1 : 0);
            }
            return !found.isNull() || mProcess.state() == QProcess::NotRunning;
        },
        int(inLimit.count()));
    if (came && !found.isNull())
        return found;
    qWarning("%s: no line like \"%s\". It said:\n%s", qPrintable(mProcess.program()), qPrintable(inPattern),
             qPrintable(lines.join('\n')));
    return QString();
}

void PeerProcess::order(const QString& inLine)
{
    mProcess.write(inLine.toUtf8() + '\n');
}

void PeerProcess::read()
{
    mRest += mProcess.readAll();
    for (qsizetype end; (end = mRest.indexOf('\n')) >= 0; mRest.remove(0, end + 1))
        lines.append(QString::fromUtf8(mRest.left(end)));
    Q_EMIT lineCame();
}
