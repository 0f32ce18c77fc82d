#include <support/KyTest.h>

#include <rnlib/RnResult.h>

class TestRnResult final : public QObject
{
    Q_OBJECT

private slots:
    void aResultIsOkFromTheStart()
    {
        const RnResult result;
        QVERIFY(result.isOk() && result);
        QVERIFY(result.text().isEmpty());
        QVERIFY(RnResult::ok().isOk());
    }

    void aFailureHasItsText()
    {
        const RnResult result = RnResult::failure("no such table");
        QVERIFY(!result.isOk() && !result);
        QVERIFY(result.text() == "no such table");
    }

    void aFailureWithoutATextIsOne()
    {
        const RnResult result = RnResult::failure("");
        QVERIFY(!result.isOk());
        QVERIFY(result.text().isEmpty());
    }
};

KY_TEST_MAIN(TestRnResult)

#include "tst_RnResult.moc"
