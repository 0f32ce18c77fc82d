#include <support/KyTest.h>

#include <ovbase/OvHash.h>

#include <QRegularExpression>
#include <QSet>

class tst_OvHash : public QObject
{
    Q_OBJECT

private slots:
    void aHashHas32HexadecimalDigits()
    {
        const QRegularExpression digits(QStringLiteral("^[0-9a-f]{32}$"));
        for (int i = 0; i < 100; ++i) {
            const QString hash = QString::fromLatin1(Ovg::generateHash32());
            QVERIFY2(digits.match(hash).hasMatch(), qPrintable(hash));
        }
    }

    void noTwoHashesAreEqual()
    {
        constexpr int Count = 100000;
        QSet<QByteArray> all;
        for (int i = 0; i < Count; ++i)
            all.insert(Ovg::generateHash32());
        QCOMPARE(all.size(), Count);
    }
};

KY_TEST_MAIN(tst_OvHash)
#include "tst_OvHash.moc"
