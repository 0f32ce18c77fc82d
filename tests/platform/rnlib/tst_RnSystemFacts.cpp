#include <support/KyTest.h>

#include <rnlib/RnBuildInfo.h>
#include <rnlib/RnOSInfo.h>
#include <rnlib/RnSysInfo.h>

#include <QRegularExpression>
#include <QSysInfo>

#include <sys/sysinfo.h>

class TestRnSystemFacts final : public QObject
{
    Q_OBJECT

private slots:
    void theVersionHasMoreDetailOnDemand()
    {
        const QString two = version(0);
        const QString three = version(1);
        const QString all = version(2);
        QVERIFY2(matches(two, "\\d+\\.\\d+"), qPrintable(two));
        QVERIFY2(matches(three, "\\d+\\.\\d+\\.\\d+"), qPrintable(three));
        QVERIFY(three.startsWith(two + u'.'));
        QVERIFY2(matches(all, "\\d+\\.\\d+\\.\\d+ \\((debug|release), [A-Za-z]+ .*\\)"), qPrintable(all));
        QVERIFY(all.startsWith(three + u' '));
    }

    void detailsOutOfRangeCountAsTheNearest()
    {
        QCOMPARE(version(-1), version(0));
        QCOMPARE(version(100), version(2));
    }

    void theOperatingSystemHasAName()
    {
        // Qt reads the same facts by its own ways.
        QCOMPARE(QString::fromUtf8(RnOSInfo::getOSName(false)), QSysInfo::prettyProductName());
    }

    void theKernelFollowsBehindAComma()
    {
        const QString expected = QString::fromUtf8(RnOSInfo::getOSName(false)) + QLatin1String(", ") +
                                 QLatin1String("Linux ") + QSysInfo::kernelVersion();
        QCOMPARE(QString::fromUtf8(RnOSInfo::getOSName(true)), expected);
    }

    void thePhysicalMemoryIsThatOfTheSystem()
    {
        using SystemInfo = struct sysinfo;
        SystemInfo facts{};
        QCOMPARE(sysinfo(&facts), 0);
        QCOMPARE(quint64(RnSysInfo::physmem_total()), quint64(facts.totalram) * facts.mem_unit);
    }

private:
    static QString version(int inDetail)
    {
        return QString::fromStdString(RnBuildInfo::getBuildString(inDetail));
    }
    static bool matches(const QString& inText, const char* inPattern)
    {
        const QString pattern = QRegularExpression::anchoredPattern(QString::fromLatin1(inPattern));
        return QRegularExpression(pattern).match(inText).hasMatch();
    }
};

KY_TEST_MAIN(TestRnSystemFacts)

#include "tst_RnSystemFacts.moc"
