#include <support/KyTest.h>

#include <rnlib/RnLogStreamSink.h>

#include <QFile>
#include <QTemporaryDir>

class TestRnLogStreamSink final : public QObject
{
    Q_OBJECT

private slots:
    void linesAreInTheStreamAtOnceAndItStaysOpen()
    {
        const QTemporaryDir dir;
        const QString path = dir.filePath(QStringLiteral("stream"));
        std::FILE* const stream = std::fopen(path.toUtf8().constData(), "w");
        QVERIFY(stream);
        {
            RnLogStreamSink sink(stream);
            sink.write({std::chrono::system_clock::time_point(), 2, "C", "\xFC"});
        }
        QFile file(path);
        QVERIFY(file.open(QFile::ReadOnly));
        QCOMPARE(file.readAll(), QByteArray("1970-01-01 01:00:00.000 2 [C] \xC3\xBC\n"));
        QVERIFY(std::fputs("end\n", stream) >= 0);
        QCOMPARE(std::fclose(stream), 0);
    }
};

KY_TEST_MAIN(TestRnLogStreamSink)

#include "tst_RnLogStreamSink.moc"
