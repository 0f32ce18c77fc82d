#pragma once

#include <QObject>
#include <QProcess>
#include <QRegularExpression>
#include <QStringList>

#include <chrono>

/// A program at the other end of a connection, which tells on its standard output what it does, line by line.
///
/// Started by the constructor and ended, it alone, by the destructor.
class PeerProcess final : public QObject
{
    Q_OBJECT

public:
    /// The program's own environment is that of the test with \a inEnvironment, "NAME=VALUE" each, on top.
    PeerProcess(const QString& inProgram, const QStringList& inArguments,
                const QStringList& inEnvironment = QStringList());
    ~PeerProcess() override;

    /// Serves events until a line comes, from the one on that was found last, that matches as a whole. Gives
    /// its first captured group, or the line; null when none comes, or the program ends. What it said until
    /// then is told to the test's output in that case.
    QString waitFor(const QString& inPattern, std::chrono::milliseconds inLimit = std::chrono::seconds(60));

    /// A line for its standard input.
    void order(const QString& inLine);

    bool isRunning() const { return mProcess.state() == QProcess::Running; }

    /// All lines so far.
    QStringList lines;

Q_SIGNALS:
    void lineCame();

private:
    void read();

    QProcess mProcess;
    QByteArray mRest;
    qsizetype mNext = 0;
};
