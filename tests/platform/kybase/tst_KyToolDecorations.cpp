#include <support/KyTest.h>

#include <kybase/KyApplication.h>

#include <QDir>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>

namespace {

class BareApplication : public KyApplication
{
public:
    KyToolDecorations* toolDecorations() const override { return nullptr; }
};

/// A picture of one colour.
QString writePicture(const QTemporaryDir& inFolder, const QString& inName, Qt::GlobalColor inColor)
{
    QImage image(32, 32, QImage::Format_RGB32);
    image.fill(inColor);
    image.save(inFolder.filePath(inName));
    return inFolder.filePath(inName);
}

QColor colorOf(const QIcon& inIcon, QIcon::State inState)
{
    return inIcon.pixmap(QSize(32, 32), QIcon::Normal, inState).toImage().pixelColor(16, 16);
}

} // namespace

class tst_KyToolDecorations : public QObject
{
    Q_OBJECT

private slots:
    void applicationIsFoundWhileItLives();
    void applicationMayHaveNoStore();

    void unknownKeyHasNothing_data();
    void unknownKeyHasNothing();
    void decorationIsKept();
    void laterDecorationReplacesAll();
    void keysAreToldApart();
    void activeLabelIsForActiveTools();
    void textsAreChanged();
    void textsNeedNoDecoration();

    void iconComesFromAFile();
    void activeIconIsTheStateOn();
    void missingActiveIconLeavesTheIcon();
    void newPathReplacesBothIcons();
    void emptyPathTakesTheIconAway();
    void iconOfTheApplicationIsFoundByItsName_data();
    void iconOfTheApplicationIsFoundByItsName();
    void pathWithoutAPictureGivesNoIcon_data();
    void pathWithoutAPictureGivesNoIcon();

private:
    QTemporaryDir mFolder;
};

void tst_KyToolDecorations::applicationIsFoundWhileItLives()
{
    QCOMPARE(KyApplication::instance(), nullptr);
    {
        KyApplication application;
        QCOMPARE(KyApplication::instance(), &application);
        QVERIFY(application.toolDecorations());
        QCOMPARE(application.toolDecorations(), application.toolDecorations());
        auto older = std::make_unique<KyApplication>();
        KyApplication newer;
        older.reset();
        QCOMPARE(KyApplication::instance(), &newer);
    }
    QCOMPARE(KyApplication::instance(), nullptr);
}

void tst_KyToolDecorations::applicationMayHaveNoStore()
{
    const KyApplication without(nullptr);
    QCOMPARE(without.toolDecorations(), nullptr);
    const BareApplication derived;
    QCOMPARE(KyApplication::instance()->toolDecorations(), nullptr);
}

void tst_KyToolDecorations::unknownKeyHasNothing_data()
{
    QTest::addColumn<QByteArray>("key");
    QTest::newRow("unknown") << QByteArray("none");
    QTest::newRow("empty") << QByteArray("");
    QTest::newRow("null") << QByteArray();
}

void tst_KyToolDecorations::unknownKeyHasNothing()
{
    QFETCH(QByteArray, key);
    KyToolDecorations store;
    store.setTexts("other", "tip", "text", "active");
    const char* asked = key.isNull() ? nullptr : key.constData();
    QVERIFY(store.icon(asked).isNull());
    QCOMPARE(store.label(asked, false), QString());
    QCOMPARE(store.label(asked, true), QString());
    QCOMPARE(store.toolTip(asked), QString());
    QCOMPARE(store.group(asked), QString());
    QCOMPARE(store.iconPath(asked), QString());
}

void tst_KyToolDecorations::decorationIsKept()
{
    KyToolDecorations store;
    store.registerDecoration("key", "group", "icon", "icon on", "tip", "label", "label on");
    QCOMPARE(store.group("key"), QStringLiteral("group"));
    QCOMPARE(store.iconPath("key"), QStringLiteral("icon"));
    QCOMPARE(store.activeIconPath("key"), QStringLiteral("icon on"));
    QCOMPARE(store.toolTip("key"), QStringLiteral("tip"));
    QCOMPARE(store.label("key", false), QStringLiteral("label"));
    QCOMPARE(store.label("key", true), QStringLiteral("label on"));
}

void tst_KyToolDecorations::laterDecorationReplacesAll()
{
    KyToolDecorations store;
    store.registerDecoration("key", "group", ":icons/report.svg", "icon on", "tip", "label", "label on");
    QVERIFY(!store.icon("key").isNull());
    store.registerDecoration("key", "", "", "", "", "", "");
    QVERIFY(store.icon("key").isNull());
    QCOMPARE(store.group("key") + store.iconPath("key") + store.activeIconPath("key") + store.toolTip("key") +
                 store.label("key", true),
             QString());
}

void tst_KyToolDecorations::keysAreToldApart()
{
    KyToolDecorations store;
    store.setTexts(QString::fromUtf8("Größe"), "", "1", "");
    store.setTexts("key", "", "2", "");
    store.setTexts("Key", "", "3", "");
    QCOMPARE(store.label("Gr\xf6\xdf"
                         "e",
                         false),
             QStringLiteral("1"));
    QCOMPARE(store.label("key", false), QStringLiteral("2"));
    QCOMPARE(store.label("Key", false), QStringLiteral("3"));
}

void tst_KyToolDecorations::activeLabelIsForActiveTools()
{
    KyToolDecorations store;
    store.registerDecoration("key", "", "", "", "", "Start", "Stop");
    QCOMPARE(store.label("key", false), QStringLiteral("Start"));
    QCOMPARE(store.label("key", true), QStringLiteral("Stop"));
    store.registerDecoration("key", "", "", "", "", "Start", "");
    QCOMPARE(store.label("key", true), QStringLiteral("Start"));
}

void tst_KyToolDecorations::textsAreChanged()
{
    KyToolDecorations store;
    store.registerDecoration("key", "group", "icon", "icon on", "tip", "Start", "Stop");
    store.setTexts("key", "new tip", "Go", "");
    QCOMPARE(store.toolTip("key"), QStringLiteral("new tip"));
    QCOMPARE(store.label("key", false), QStringLiteral("Go"));
    QCOMPARE(store.label("key", true), QStringLiteral("Go"));
    QCOMPARE(store.iconPath("key"), QStringLiteral("icon"));
    QCOMPARE(store.activeIconPath("key"), QStringLiteral("icon on"));
    QCOMPARE(store.group("key"), QStringLiteral("group"));
}

void tst_KyToolDecorations::textsNeedNoDecoration()
{
    KyToolDecorations store;
    store.setTexts("new", "tip", "text", "text on");
    QCOMPARE(store.toolTip("new"), QStringLiteral("tip"));
    QCOMPARE(store.label("new", false), QStringLiteral("text"));
    QCOMPARE(store.label("new", true), QStringLiteral("text on"));
}

void tst_KyToolDecorations::iconComesFromAFile()
{
    KyToolDecorations store;
    store.setIcon("key", writePicture(mFolder, "red.png", Qt::red));
    QCOMPARE(colorOf(store.icon("key"), QIcon::Off), QColor(Qt::red));
    QCOMPARE(colorOf(store.icon("key"), QIcon::On), QColor(Qt::red));
}

void tst_KyToolDecorations::activeIconIsTheStateOn()
{
    KyToolDecorations store;
    store.registerDecoration("key", "", writePicture(mFolder, "red.png", Qt::red),
                             writePicture(mFolder, "green.png", Qt::green), "", "", "");
    QCOMPARE(colorOf(store.icon("key"), QIcon::Off), QColor(Qt::red));
    QCOMPARE(colorOf(store.icon("key"), QIcon::On), QColor(Qt::green));
}

void tst_KyToolDecorations::missingActiveIconLeavesTheIcon()
{
    KyToolDecorations store;
    store.registerDecoration("key", "", writePicture(mFolder, "red.png", Qt::red), mFolder.filePath("none"),
                             "", "", "");
    QCOMPARE(colorOf(store.icon("key"), QIcon::On), QColor(Qt::red));
}

void tst_KyToolDecorations::newPathReplacesBothIcons()
{
    KyToolDecorations store;
    store.registerDecoration("key", "", writePicture(mFolder, "red.png", Qt::red),
                             writePicture(mFolder, "green.png", Qt::green), "", "", "");
    QVERIFY(!store.icon("key").isNull());
    store.setIcon("key", writePicture(mFolder, "blue.png", Qt::blue));
    QCOMPARE(colorOf(store.icon("key"), QIcon::Off), QColor(Qt::blue));
    QCOMPARE(colorOf(store.icon("key"), QIcon::On), QColor(Qt::blue));
    QCOMPARE(store.activeIconPath("key"), QString());
}

void tst_KyToolDecorations::emptyPathTakesTheIconAway()
{
    KyToolDecorations store;
    store.setIcon("key", writePicture(mFolder, "red.png", Qt::red));
    QVERIFY(!store.icon("key").isNull());
    store.setIcon("key", QString());
    QVERIFY(store.icon("key").isNull());
    QCOMPARE(store.iconPath("key"), QString());
}

void tst_KyToolDecorations::iconOfTheApplicationIsFoundByItsName_data()
{
    QTest::addColumn<QString>("path");
    for (const char* path : {"OrvaneLogo", "report.svg", ":icons/report.svg", ":/icons/report.svg"})
        QTest::newRow(path) << path;
}

void tst_KyToolDecorations::iconOfTheApplicationIsFoundByItsName()
{
    QFETCH(QString, path);
    KyToolDecorations store;
    store.setIcon("key", path);
    QVERIFY(!store.icon("key").isNull());
    QCOMPARE(store.iconPath("key"), path);
}

void tst_KyToolDecorations::pathWithoutAPictureGivesNoIcon_data()
{
    QTest::addColumn<QString>("path");
    const auto file = [&](const QString& inName, const QByteArray& inBytes) {
        QFile written(mFolder.filePath(inName));
        if (!written.open(QIODevice::WriteOnly) || written.write(inBytes) != inBytes.size())
            qFatal("cannot write");
        QTest::newRow(qPrintable(inName)) << written.fileName();
    };
    QTest::newRow("missing") << mFolder.filePath("none.png");
    QTest::newRow("folder") << mFolder.path();
    QTest::newRow("unknown name") << "no such icon";
    file("empty.png", "");
    file("broken.png", "\x89PNG\r\n\x1a\n broken");
    file("text.png", "no picture");
    file("broken.svg", "<svg");
    file("cut.svg", "<svg xmlns='http://www.w3.org/2000/svg' width='9' height='9'/");
    QFile picture(writePicture(mFolder, "whole.png", Qt::red));
    QVERIFY(picture.open(QIODevice::ReadOnly));
    file("header.png", picture.readAll().left(20));
}

void tst_KyToolDecorations::pathWithoutAPictureGivesNoIcon()
{
    QFETCH(QString, path);
    KyToolDecorations store;
    store.registerDecoration("key", "", path, path, "", "", "");
    QVERIFY(store.icon("key").isNull());
    QCOMPARE(store.iconPath("key"), path);
}

KY_TEST_MAIN(tst_KyToolDecorations)
#include "tst_KyToolDecorations.moc"
