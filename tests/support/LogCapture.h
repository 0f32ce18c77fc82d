#pragma once

#include <rnlib/RnLogFile.h>

#include <QList>
#include <QString>
#include <QStringList>

#include <mutex>

/// Keeps what goes to the log of the process during its own life.
///
/// The string form of a line, for QCOMPARE, is "LEVEL|Context|text", the context empty when there is none:
/// `QCOMPARE(log.take(), QStringList{QStringLiteral("3|Script Interface|Error: x")})`. Lines of other threads
/// are kept as well. A contract report becomes a line only while no ContractWatch lives.
class LogCapture final : public RnLogSink
{
public:
    struct Line
    {
        RnLogLevel level = 0;
        QString context;
        QString text;

        QString toString() const;
        friend bool operator==(const Line& inA, const Line& inB) = default;
    };

    /// Keeps lines of at least \a inLeastLevel.
    explicit LogCapture(RnLogLevel inLeastLevel = 0);
    ~LogCapture() override;

    /// The lines so far, the oldest first.
    QList<Line> lines() const;
    /// The same in their string form.
    QStringList toStrings() const;
    /// The lines in their string form; the capture is empty afterwards.
    QStringList take();

    void write(const RnLogRecord& inRecord) override;

private:
    mutable std::mutex mMutex;
    QList<Line> mLines;
};

/// For the messages of QCOMPARE.
char* toString(const LogCapture::Line& inLine);
