#include <support/KyTest.h>
#include <support/LogCapture.h>

#include <kyresources/KyClientFacts.h>
#include <kysite/KyJwtSource.h>
#include <ovbase/OvAuthTokenGenerator.h>

#include <QDateTime>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QProcess>
#include <QSignalSpy>
#include <QTemporaryDir>

/// Where a generator's tokens come to.
class TokenReceiver : public QObject
{
    Q_OBJECT

public:
    QStringList tokens;

public slots:
    void take(QString inToken) { tokens.append(inToken); }
};

class tst_KyJwtSource : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void tokensHoldForOthers_data();
    void tokensHoldForOthers();
    void tokensDoNotHoldForOtherKeys_data();
    void tokensDoNotHoldForOtherKeys();
    void tokensHaveTheirClaims();
    void tokensExpire();
    void audienceMayBeAList();
    void userDataBecomeAClaim();
    void standardClaimsCannotBeReplaced();
    void numbersChooseTheConfiguration_data();
    void numbersChooseTheConfiguration();
    void keyIdIsAHeader();
    void eachTokenIsAnother();
    void whatGoesWrongIsLogged_data();
    void whatGoesWrongIsLogged();
    void manyRequests();
    void theEndWaitsForRequests();

private:
    void configure(const QJsonObject& inConfigurations)
    {
        write("tokens.json", QJsonDocument(inConfigurations).toJson());
    }
    static void writeTo(const QString& inFile, const QByteArray& inContent)
    {
        QFile file(inFile);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(inContent);
    }
    void write(const QString& inName, const QByteArray& inContent)
    {
        writeTo(mFolder->filePath(inName), inContent);
    }
    QJsonObject configuration(const QString& inAlgorithm, const QString& inKey) const
    {
        return {{"algorithm", inAlgorithm}, {"keyFile", mKeys.filePath(inKey)}, {"audience", "pacs"}};
    }
    QString jwt(const QString& inName)
    {
        return token([&](OvAuthTokenGenerator& ioGenerator) { ioGenerator.generateJWTAsync(inName); });
    }
    template <class Request>
    QString token(const Request& inRequest)
    {
        TokenReceiver receiver;
        const RnHandle<OvAuthTokenGenerator> generator(new OvAuthTokenGenerator(nullptr));
        generator->setCallback(&receiver, "take");
        inRequest(*generator);
        [&] { QTRY_COMPARE_WITH_TIMEOUT(receiver.tokens.size(), 1, 60000); }();
        return receiver.tokens.value(0);
    }
    /// The claims, if PyJWT takes the token; else what it says.
    QJsonObject verified(const QString& inToken, const QString& inAlgorithm, const QString& inKey,
                         QString& outError);
    static QJsonObject part(const QString& inToken, int inIndex)
    {
        return QJsonDocument::fromJson(
                   QByteArray::fromBase64(inToken.section('.', inIndex, inIndex).toLatin1(),
                                          QByteArray::Base64UrlEncoding))
            .object();
    }

    const QTemporaryDir mKeys;
    bool mHasKeys = false;
    bool mHasPython = false;
    std::unique_ptr<QTemporaryDir> mFolder;
    std::unique_ptr<LogCapture> mLog;
    std::unique_ptr<KyClientFacts> mFacts;
    std::unique_ptr<KyJwtSource> mSource;
};

void tst_KyJwtSource::initTestCase()
{
    const auto openssl = [&](const QStringList& inArguments) {
        QProcess process;
        process.setWorkingDirectory(mKeys.path());
        process.start("openssl", inArguments);
        return process.waitForFinished(60000) && process.exitCode() == 0;
    };
    const auto pair = [&](const QString& inName, const QStringList& inArguments) {
        return openssl(QStringList{"genpkey", "-out", inName + ".pem"} + inArguments) &&
               openssl({"pkey", "-in", inName + ".pem", "-pubout", "-out", inName + ".pub"});
    };
    mHasKeys =
        pair("rsa", {"-algorithm", "RSA", "-pkeyopt", "rsa_keygen_bits:2048"}) &&
        pair("other", {"-algorithm", "RSA", "-pkeyopt", "rsa_keygen_bits:2048"}) &&
        pair("small", {"-algorithm", "RSA", "-pkeyopt", "rsa_keygen_bits:1024"}) &&
        pair("ec", {"-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:P-256"}) &&
        pair("ec2", {"-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:P-256"}) &&
        pair("ec384", {"-algorithm", "EC", "-pkeyopt", "ec_paramgen_curve:P-384"}) &&
        openssl({"pkey", "-in", "rsa.pem", "-aes256", "-passout", "pass:secret", "-out", "locked.pem"});
    QVERIFY2(mHasKeys, "openssl is needed");
    writeTo(mKeys.filePath("secret.pem"), QByteArray(32, 'k') + "\n");
    writeTo(mKeys.filePath("secret.pub"), QByteArray(32, 'k'));
    writeTo(mKeys.filePath("secret2.pub"), QByteArray(32, 'l'));
    writeTo(mKeys.filePath("short.pem"), QByteArray(31, 'k') + "\n");
    writeTo(mKeys.filePath("garbage.pem"), "VERYSECRET garbage");
    mHasPython = QProcess::execute("/usr/bin/python3", {"-c", "import jwt"}) == 0;
}

void tst_KyJwtSource::init()
{
    mFolder = std::make_unique<QTemporaryDir>();
    mLog = std::make_unique<LogCapture>();
    mFacts = std::make_unique<KyClientFacts>();
    mFacts->userName = "m\xfcller";
    mSource = std::make_unique<KyJwtSource>(mFolder->filePath("tokens.json"));
}

/// Nothing of a key ever stands in the log.
void tst_KyJwtSource::cleanup()
{
    mSource.reset();
    const QString log = mLog->toStrings().join('\n');
    mLog.reset();
    mFacts.reset();
    mFolder.reset();
    for (const char* secret : {"BEGIN", "VERYSECRET", "kkkk"})
        QVERIFY2(!log.contains(secret), qPrintable(log));
}

QJsonObject tst_KyJwtSource::verified(const QString& inToken, const QString& inAlgorithm,
                                      const QString& inKey, QString& outError)
{
    QProcess python;
    python.start(
        "/usr/bin/python3",
        {"-c",
         "import jwt, json, sys\n"
         "key = open(sys.argv[3], 'rb').read()\n"
         "try:\n"
         "    print(json.dumps(jwt.decode(sys.argv[1], key, algorithms=[sys.argv[2]], audience='pacs')))\n"
         "except Exception as e:\n"
         "    print(type(e).__name__)\n",
         inToken, inAlgorithm, mKeys.filePath(inKey)});
    if (!python.waitForFinished(60000))
        outError = "no answer";
    const QByteArray answer = python.readAllStandardOutput().trimmed();
    const QJsonDocument claims = QJsonDocument::fromJson(answer);
    if (!claims.isObject())
        outError = QString::fromUtf8(answer + python.readAllStandardError());
    return claims.object();
}

void tst_KyJwtSource::tokensHoldForOthers_data()
{
    QTest::addColumn<QString>("algorithm");
    QTest::addColumn<QString>("key");
    QTest::newRow("RS256") << "RS256"
                           << "rsa";
    QTest::newRow("ES256") << "ES256"
                           << "ec";
    QTest::newRow("HS256") << "HS256"
                           << "secret";
}

void tst_KyJwtSource::tokensHoldForOthers()
{
    QFETCH(QString, algorithm);
    QFETCH(QString, key);
    if (!mHasPython)
        QSKIP("python3-jwt is not installed; scripts/setup --tests does that");
    configure({{"pacs", configuration(algorithm, key + ".pem")}});
    for (int i = 0; i < 3; ++i) { // signatures of ES256 differ in length before they are put in form
        const QString made = jwt("pacs");
        QCOMPARE(made.count('.'), 2);
        QCOMPARE(part(made, 0).value("alg").toString(), algorithm);
        QCOMPARE(part(made, 0).value("typ").toString(), QStringLiteral("JWT"));
        QString error;
        const QJsonObject claims = verified(made, algorithm, key + ".pub", error);
        QCOMPARE(error, QString());
        QCOMPARE(claims.value("sub").toString(), QString::fromUtf8("müller"));
    }
    QVERIFY(mLog->take().isEmpty());
}

void tst_KyJwtSource::tokensDoNotHoldForOtherKeys_data()
{
    QTest::addColumn<QString>("algorithm");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("other");
    QTest::newRow("RS256") << "RS256"
                           << "rsa.pem"
                           << "other.pub";
    QTest::newRow("ES256") << "ES256"
                           << "ec.pem"
                           << "ec2.pub";
    QTest::newRow("HS256") << "HS256"
                           << "secret.pem"
                           << "secret2.pub";
}

void tst_KyJwtSource::tokensDoNotHoldForOtherKeys()
{
    QFETCH(QString, algorithm);
    QFETCH(QString, key);
    QFETCH(QString, other);
    if (!mHasPython)
        QSKIP("python3-jwt is not installed; scripts/setup --tests does that");
    configure({{"pacs", configuration(algorithm, key)}});
    QString error;
    verified(jwt("pacs"), algorithm, other, error);
    QCOMPARE(error, QStringLiteral("InvalidSignatureError"));
}

void tst_KyJwtSource::tokensHaveTheirClaims()
{
    QJsonObject pacs = configuration("ES256", "ec.pem");
    pacs.insert("issuer", "workstation 1");
    pacs.insert("lifetimeSeconds", 120);
    pacs.insert("claims", QJsonObject{{"role", "reader"}, {"rooms", QJsonArray{1, 2}}});
    configure({{"pacs", pacs}});
    const qint64 before = QDateTime::currentSecsSinceEpoch();
    const QJsonObject claims = part(jwt("pacs"), 1);
    const qint64 after = QDateTime::currentSecsSinceEpoch();
    QCOMPARE(claims.value("iss").toString(), QStringLiteral("workstation 1"));
    QCOMPARE(claims.value("aud").toString(), QStringLiteral("pacs"));
    QCOMPARE(claims.value("role").toString(), QStringLiteral("reader"));
    QCOMPARE(claims.value("rooms").toArray(), (QJsonArray{1, 2}));
    const qint64 made = claims.value("iat").toInteger();
    QVERIFY(made >= before && made <= after);
    QCOMPARE(claims.value("nbf").toInteger(), made);
    QCOMPARE(claims.value("exp").toInteger(), made + 120);
    QVERIFY(!claims.contains("userData"));
    QCOMPARE(claims.keys().size(), 9);
}

void tst_KyJwtSource::tokensExpire()
{
    if (!mHasPython)
        QSKIP("python3-jwt is not installed; scripts/setup --tests does that");
    QJsonObject pacs = configuration("HS256", "secret.pem");
    pacs.insert("lifetimeSeconds", 1);
    configure({{"pacs", pacs}});
    const QString made = jwt("pacs");
    const qint64 end = part(made, 1).value("exp").toInteger();
    QTRY_VERIFY_WITH_TIMEOUT(QDateTime::currentSecsSinceEpoch() > end, 30000);
    QString error;
    verified(made, "HS256", "secret.pub", error);
    QCOMPARE(error, QStringLiteral("ExpiredSignatureError"));
    pacs.remove("lifetimeSeconds");
    configure({{"pacs", pacs}});
    const QJsonObject claims = part(jwt("pacs"), 1);
    QCOMPARE(claims.value("exp").toInteger() - claims.value("iat").toInteger(), 3600);
}

void tst_KyJwtSource::audienceMayBeAList()
{
    if (!mHasPython)
        QSKIP("python3-jwt is not installed; scripts/setup --tests does that");
    QJsonObject pacs = configuration("HS256", "secret.pem");
    pacs.insert("audience", QJsonArray{"ris", "pacs"});
    configure({{"pacs", pacs}});
    QString error;
    QCOMPARE(verified(jwt("pacs"), "HS256", "secret.pub", error).value("aud").toArray(),
             (QJsonArray{"ris", "pacs"}));
    pacs.insert("audience", "ris");
    configure({{"pacs", pacs}});
    verified(jwt("pacs"), "HS256", "secret.pub", error);
    QCOMPARE(error, QStringLiteral("InvalidAudienceError"));
}

void tst_KyJwtSource::userDataBecomeAClaim()
{
    configure({{"pacs", configuration("HS256", "secret.pem")}});
    const QString data = QString::fromUtf8("study \"1.2\" 中 \\");
    const QString made =
        token([&](OvAuthTokenGenerator& ioGenerator) { ioGenerator.generateAsync(2, 2, data); });
    QCOMPARE(part(made, 1).value("userData").toString(), data);
}

void tst_KyJwtSource::standardClaimsCannotBeReplaced()
{
    QJsonObject pacs = configuration("HS256", "secret.pem");
    pacs.insert("claims", QJsonObject{{"sub", "root"}, {"exp", 99999999999.0}, {"iss", "other"}});
    configure({{"pacs", pacs}});
    const QJsonObject claims = part(jwt("pacs"), 1);
    QCOMPARE(claims.value("sub").toString(), QString::fromUtf8("müller"));
    QCOMPARE(claims.value("exp").toInteger(), claims.value("iat").toInteger() + 3600);
    QCOMPARE(claims.value("iss").toString(), QStringLiteral("other"));
}

void tst_KyJwtSource::numbersChooseTheConfiguration_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("chosen");
    QTest::newRow("defaults") << 2 << 2 << "b";
    QTest::newRow("type") << 1 << 2 << "c";
    QTest::newRow("type and key") << 1 << 7 << "d";
    QTest::newRow("none") << 9 << 9 << "";
}

void tst_KyJwtSource::numbersChooseTheConfiguration()
{
    QFETCH(int, type);
    QFETCH(int, key);
    QFETCH(QString, chosen);
    const auto named = [&](const QString& inName,
                           std::initializer_list<std::pair<QString, QJsonValue>> inNumbers) {
        QJsonObject object = configuration("HS256", "secret.pem");
        object.insert("issuer", inName);
        for (const auto& [name, value] : inNumbers)
            object.insert(name, value);
        return object;
    };
    configure({{"a", named("a", {{"type", 3}})},
               {"b", named("b", {})},
               {"bb", named("bb", {})},
               {"c", named("c", {{"type", 1}})},
               {"d", named("d", {{"type", 1}, {"key", 7}})}});
    const QString made =
        token([&](OvAuthTokenGenerator& ioGenerator) { ioGenerator.generateAsync(type, key, QString()); });
    QCOMPARE(part(made, 1).value("iss").toString(), chosen);
    const QStringList lines = mLog->take();
    if (chosen.isEmpty())
        QCOMPARE(lines, QStringList("3|Tokens|There is no token configuration of type 9 and key 9"));
}

void tst_KyJwtSource::keyIdIsAHeader()
{
    QJsonObject pacs = configuration("ES256", "ec.pem");
    configure({{"pacs", pacs}});
    QVERIFY(!part(jwt("pacs"), 0).contains("kid"));
    pacs.insert("keyId", "2026-1");
    configure({{"pacs", pacs}});
    QCOMPARE(part(jwt("pacs"), 0).value("kid").toString(), QStringLiteral("2026-1"));
}

void tst_KyJwtSource::eachTokenIsAnother()
{
    configure({{"pacs", configuration("HS256", "secret.pem")}});
    QVERIFY(part(jwt("pacs"), 1).value("jti").toString() != part(jwt("pacs"), 1).value("jti").toString());
}

void tst_KyJwtSource::whatGoesWrongIsLogged_data()
{
    QTest::addColumn<QString>("algorithm");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("reason");
    QTest::newRow("no algorithm") << ""
                                  << "rsa.pem"
                                  << "the algorithm  is none of RS256, ES256 and HS256";
    QTest::newRow("none") << "none"
                          << "rsa.pem"
                          << "the algorithm none is none of RS256, ES256 and HS256";
    QTest::newRow("RS512") << "RS512"
                           << "rsa.pem"
                           << "the algorithm RS512 is none of RS256, ES256 and HS256";
    const QString noPem = "the key is no private key in PEM without a pass phrase";
    QTest::newRow("garbage") << "RS256"
                             << "garbage.pem" << noPem;
    QTest::newRow("public key") << "RS256"
                                << "rsa.pub" << noPem;
    QTest::newRow("pass phrase") << "RS256"
                                 << "locked.pem" << noPem;
    QTest::newRow("secret as a key") << "ES256"
                                     << "secret.pem" << noPem;
    QTest::newRow("small key") << "RS256"
                               << "small.pem"
                               << "the key is not of a kind or size for RS256";
    QTest::newRow("key of another kind") << "ES256"
                                         << "rsa.pem"
                                         << "the key is not of a kind or size for ES256";
    QTest::newRow("another curve") << "ES256"
                                   << "ec384.pem"
                                   << "the key is not of a kind or size for ES256";
    QTest::newRow("short secret") << "HS256"
                                  << "short.pem"
                                  << "the secret is shorter than 32 bytes";
    QTest::newRow("no key") << "RS256"
                            << "missing.pem"
                            << "the key %1 cannot be read";
}

void tst_KyJwtSource::whatGoesWrongIsLogged()
{
    QFETCH(QString, algorithm);
    QFETCH(QString, key);
    QFETCH(QString, reason);
    configure({{"pacs", configuration(algorithm, key)}});
    QCOMPARE(jwt("pacs"), QString());
    if (reason.contains("%1"))
        reason = reason.arg(mKeys.filePath(key));
    QCOMPARE(mLog->take(), QStringList("3|Tokens|Token configuration pacs: " + reason));
    QCOMPARE(jwt("other"), QString());
    QCOMPARE(mLog->take(), QStringList("3|Tokens|There is no token configuration other"));
    write("tokens.json", "[]");
    QCOMPARE(jwt("pacs"), QString());
    QCOMPARE(mLog->take(),
             QStringList("3|Tokens|" + mFolder->filePath("tokens.json") + " holds no JSON object"));
    QVERIFY(QFile::remove(mFolder->filePath("tokens.json")));
    QCOMPARE(jwt("pacs"), QString());
    QCOMPARE(mLog->take(), QStringList("3|Tokens|" + mFolder->filePath("tokens.json") + " cannot be read"));
}

void tst_KyJwtSource::manyRequests()
{
    configure({{"pacs", configuration("ES256", "ec.pem")}});
    TokenReceiver receiver;
    const RnHandle<OvAuthTokenGenerator> generator(new OvAuthTokenGenerator(nullptr));
    generator->setCallback(&receiver, "take");
    for (int i = 0; i < 50; ++i)
        generator->generateJWTAsync("pacs");
    QCOMPARE(receiver.tokens.size(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(receiver.tokens.size(), 50, 60000);
    QCOMPARE(QSet<QString>(receiver.tokens.begin(), receiver.tokens.end()).size(), 50);
}

void tst_KyJwtSource::theEndWaitsForRequests()
{
    configure({{"pacs", configuration("RS256", "rsa.pem")}});
    TokenReceiver receiver;
    {
        const RnHandle<OvAuthTokenGenerator> generator(new OvAuthTokenGenerator(nullptr));
        generator->setCallback(&receiver, "take");
        for (int i = 0; i < 20; ++i)
            generator->generateJWTAsync("pacs");
    }
    mSource.reset();
    QCoreApplication::sendPostedEvents();
    QVERIFY(receiver.tokens.size() <= 20);
}

KY_TEST_MAIN(tst_KyJwtSource)
#include "tst_KyJwtSource.moc"
