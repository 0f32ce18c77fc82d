#include <support/KyTest.h>

#include <kyscript/KyScriptReplyContent.h>

#include <QTest>

class tst_KyScriptReplyContent : public QObject
{
    Q_OBJECT

private slots:
    void headersAreKeptAsTheyCame();
    void lastValueOfANameCounts();
    void noByteArrayIsNull();
    void namesAreLatin1();
    void plainTextIsRecognised_data();
    void plainTextIsRecognised();
};

namespace {

/// A reply with a body and no way to read it twice.
class BodyReply : public QNetworkReply
{
public:
    explicit BodyReply(const QByteArray& inBody)
        : mBody(inBody)
    {
        open(ReadOnly | Unbuffered);
        setFinished(true);
    }
    void abort() override {}
    bool isSequential() const override { return true; }
    qint64 bytesAvailable() const override { return mBody.size(); }

protected:
    qint64 readData(char* outData, qint64 inMax) override
    {
        const qint64 size = std::min<qint64>(inMax, mBody.size());
        std::copy_n(mBody.constData(), size, outData);
        mBody.remove(0, size);
        return size;
    }

private:
    QByteArray mBody;
};

} // namespace

void tst_KyScriptReplyContent::headersAreKeptAsTheyCame()
{
    const QVariantMap map = KyScriptReplyContent::headerMap(
        {{"x-b", "2"}, {"X-B", " 3 "}, {"X-A", QByteArray("\0\xff", 2)}, {"", "4"}});
    QCOMPARE(map.keys(), QStringList({"", "X-A", "X-B", "x-b"}));
    QCOMPARE(map.value("x-b"), QVariant(QByteArray("2")));
    QCOMPARE(map.value("X-B"), QVariant(QByteArray(" 3 ")));
    QCOMPARE(map.value("X-A"), QVariant(QByteArray("\0\xff", 2)));
    QVERIFY(KyScriptReplyContent::headerMap({}).isEmpty());
}

void tst_KyScriptReplyContent::lastValueOfANameCounts()
{
    QCOMPARE(KyScriptReplyContent::headerMap({{"A", "1"}, {"B", "2"}, {"A", "3"}}),
             QVariantMap({{"A", QByteArray("3")}, {"B", QByteArray("2")}}));
}

void tst_KyScriptReplyContent::noByteArrayIsNull()
{
    const QVariantMap map = KyScriptReplyContent::headerMap({{"A", QByteArray()}});
    QVERIFY(!map.value("A").toByteArray().isNull());
    QVERIFY(map.value("A").toByteArray().isEmpty());

    BodyReply empty((QByteArray())), filled("body");
    QVERIFY(!KyScriptReplyContent::body(empty).isNull());
    QCOMPARE(KyScriptReplyContent::body(filled), QByteArray("body"));
    QVERIFY(!KyScriptReplyContent::body(filled).isNull());
    QVERIFY(KyScriptReplyContent::body(filled).isEmpty());
}

void tst_KyScriptReplyContent::namesAreLatin1()
{
    QCOMPARE(KyScriptReplyContent::headerMap({{"X-\xfc", "1"}}).keys(),
             QStringList(QString::fromUtf8("X-ü")));
}

void tst_KyScriptReplyContent::plainTextIsRecognised_data()
{
    QTest::addColumn<QString>("contentType");
    QTest::addColumn<bool>("isPlain");
    QTest::newRow("plain") << "text/plain" << true;
    QTest::newRow("charset") << "text/plain; charset=utf-8" << true;
    QTest::newRow("in front") << "x; text/plain" << true;
    QTest::newRow("capitals") << "TEXT/PLAIN" << false;
    QTest::newRow("html") << "text/html" << false;
    QTest::newRow("none") << "" << false;
}

void tst_KyScriptReplyContent::plainTextIsRecognised()
{
    QFETCH(QString, contentType);
    QFETCH(bool, isPlain);
    QCOMPARE(KyScriptReplyContent::isPlainText(contentType), isPlain);
}

KY_TEST_MAIN(tst_KyScriptReplyContent)
#include "tst_KyScriptReplyContent.moc"
