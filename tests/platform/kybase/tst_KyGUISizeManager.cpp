#include <support/KyTest.h>

#include <kybase/KyGUISizeManager.h>
#include <ovbase/OvRegistry.h>
#include <ovbase/OvRegistryMemoryStore.h>

#include <QScreen>
#include <QWidget>

#include <optional>

class tst_KyGUISizeManager : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void newKeyGivesTheInitialGeometry();
    void initialPositionCountsFromTheUsableArea();
    void emptyInitialSizeLeavesTheSize_data();
    void emptyInitialSizeLeavesTheSize();
    void initialSizeIsBoundedByTheScreen();
    void geometryIsKeptFromOneStartToTheNext();
    void changesOfAVisibleWindowAreStoredWhenTheyRest();
    void deletedWindowIsKept();
    void hiddenWindowOverwritesNothing();
    void minimizedWindowOverwritesNothing();
    void maximizedStateIsKept();
    void keysAreIndependent();
    void windowsOfOneKeyShareTheGeometry();
    void geometryOutsideTheScreensIsMovedInside();
    void damagedGeometryCountsAsNone();
    void worksWithoutARegistry();
    void nullWidgetAndEmptyKeyAreHarmless();
    void geometryIsStoredByItself_data();
    void geometryIsStoredByItself();
    void storedGeometryIsKeptForLaterRuns();
    void damagedStoredGeometryIsEmpty_data();
    void damagedStoredGeometryIsEmpty();
    void withoutRegistryOrKeyNoGeometryIsStored();

private:
    /// A window of the key "K" that was at the given place at the end of the last start.
    void keepGeometry(const QRect& inGeometry);
    void restart();
    QString stored(const QString& inKey) const;

    std::shared_ptr<OvRegistryMemoryStore> mStore;
    std::optional<OvRegistry> mRegistry;
};

namespace {

constexpr QSize Initial(320, 240);

void manage(QWidget& ioWidget, const char* inKey = "K")
{
    KyGUISizeManager::makeWidgetGeometryPersistent(&ioWidget, inKey, Initial, QPoint(0, 0));
}

} // namespace

void tst_KyGUISizeManager::init()
{
    mStore = std::make_shared<OvRegistryMemoryStore>();
    mRegistry.emplace(mStore);
}

void tst_KyGUISizeManager::cleanup()
{
    mRegistry.reset();
    mStore.reset();
}

void tst_KyGUISizeManager::restart()
{
    mRegistry.reset();
    mRegistry.emplace(mStore);
}

QString tst_KyGUISizeManager::stored(const QString& inKey) const
{
    OvRegistry::Value value;
    mRegistry->getProperty("GUI.Geometry." + inKey, value, OvRegistry::UserPriority);
    return value.value;
}

void tst_KyGUISizeManager::keepGeometry(const QRect& inGeometry)
{
    QWidget window;
    manage(window);
    window.show();
    window.setGeometry(inGeometry);
    window.close();
}

void tst_KyGUISizeManager::newKeyGivesTheInitialGeometry()
{
    QWidget window;
    manage(window);
    QCOMPARE(window.size(), Initial);
    QCOMPARE(window.pos(), window.screen()->availableGeometry().topLeft());
    window.show();
    QCOMPARE(window.size(), Initial);
}

void tst_KyGUISizeManager::initialPositionCountsFromTheUsableArea()
{
    QWidget window;
    KyGUISizeManager::makeWidgetGeometryPersistent(&window, u"K", Initial, QPoint(30, 40));
    QCOMPARE(window.pos(), window.screen()->availableGeometry().topLeft() + QPoint(30, 40));
}

void tst_KyGUISizeManager::emptyInitialSizeLeavesTheSize_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("zero") << QSize(0, 0);
    QTest::newRow("invalid") << QSize();
    QTest::newRow("no height") << QSize(100, 0);
}

void tst_KyGUISizeManager::emptyInitialSizeLeavesTheSize()
{
    QFETCH(QSize, size);
    QWidget window;
    window.resize(123, 45);
    KyGUISizeManager::makeWidgetGeometryPersistent(&window, "K", size, QPoint(0, 0));
    QCOMPARE(window.size(), QSize(123, 45));
}

void tst_KyGUISizeManager::initialSizeIsBoundedByTheScreen()
{
    QWidget window;
    KyGUISizeManager::makeWidgetGeometryPersistent(&window, "K", QSize(90000, 100), QPoint(0, 0));
    QCOMPARE(window.size(), QSize(window.screen()->availableGeometry().width(), 100));
}

void tst_KyGUISizeManager::geometryIsKeptFromOneStartToTheNext()
{
    keepGeometry(QRect(51, 62, 210, 130));
    restart();
    QWidget window;
    manage(window);
    window.show();
    QCOMPARE(window.geometry(), QRect(51, 62, 210, 130));
}

void tst_KyGUISizeManager::changesOfAVisibleWindowAreStoredWhenTheyRest()
{
    QWidget window;
    manage(window);
    window.show();
    window.resize(222, 111);
    const QString expected = QString::fromLatin1(window.saveGeometry().toBase64());
    QTRY_COMPARE(stored("K"), expected);

    window.move(70, 80);
    QTRY_VERIFY(stored("K") != expected);
    restart();
    QWidget next;
    manage(next);
    QCOMPARE(next.size(), QSize(222, 111));
}

void tst_KyGUISizeManager::deletedWindowIsKept()
{
    auto window = std::make_unique<QWidget>();
    manage(*window);
    window->show();
    window->resize(210, 130);
    window.reset();
    QWidget next;
    manage(next);
    QCOMPARE(next.size(), QSize(210, 130));
}

void tst_KyGUISizeManager::hiddenWindowOverwritesNothing()
{
    keepGeometry(QRect(51, 62, 210, 130));
    const QString before = stored("K");
    {
        QWidget window;
        manage(window);
        window.resize(10, 10);
    }
    QCOMPARE(stored("K"), before);
}

void tst_KyGUISizeManager::minimizedWindowOverwritesNothing()
{
    QWidget window;
    manage(window);
    window.show();
    window.resize(210, 130);
    QTRY_VERIFY(!stored("K").isEmpty());
    const QString before = stored("K");
    window.showMinimized();
    window.hide();
    QCOMPARE(stored("K"), before);
}

void tst_KyGUISizeManager::maximizedStateIsKept()
{
    {
        QWidget window;
        manage(window);
        window.showMaximized();
        window.close();
    }
    restart();
    QWidget window;
    manage(window);
    QVERIFY(window.isMaximized());
}

void tst_KyGUISizeManager::keysAreIndependent()
{
    keepGeometry(QRect(51, 62, 210, 130));
    QWidget other;
    manage(other, "Other");
    QCOMPARE(other.size(), Initial);
    QVERIFY(stored("Other").isEmpty());
}

void tst_KyGUISizeManager::windowsOfOneKeyShareTheGeometry()
{
    QWidget first;
    QWidget second;
    manage(first);
    manage(second);
    first.show();
    second.show();
    first.resize(201, 101);
    second.resize(202, 102);
    second.hide();
    first.hide();
    QWidget third;
    manage(third);
    QCOMPARE(third.size(), QSize(201, 101));
}

void tst_KyGUISizeManager::geometryOutsideTheScreensIsMovedInside()
{
    keepGeometry(QRect(30000, 30000, 210, 130));
    QWidget window;
    manage(window);
    window.show();
    QVERIFY(window.screen()->availableGeometry().intersects(window.geometry()));
    QCOMPARE(window.screen()->availableGeometry().intersected(window.geometry()), window.geometry());
}

void tst_KyGUISizeManager::damagedGeometryCountsAsNone()
{
    for (const char* text : {"", "x", "AAAA", "not base64 at all"}) {
        mRegistry->setProperty("GUI.Geometry.K", text, OvRegistry::UserPriority);
        QWidget window;
        manage(window);
        QCOMPARE(window.size(), Initial);
    }
}

void tst_KyGUISizeManager::worksWithoutARegistry()
{
    mRegistry.reset();
    QWidget window;
    manage(window);
    QCOMPARE(window.size(), Initial);
    window.show();
    window.resize(210, 130);
    window.hide();
    QCOMPARE(window.size(), QSize(210, 130));
}

void tst_KyGUISizeManager::nullWidgetAndEmptyKeyAreHarmless()
{
    KyGUISizeManager::makeWidgetGeometryPersistent(nullptr, "K", Initial, QPoint(0, 0));
    QWidget window;
    manage(window, "");
    QCOMPARE(window.size(), Initial);
    window.show();
    window.hide();
    QVERIFY(mStore->content().isEmpty());
}

void tst_KyGUISizeManager::geometryIsStoredByItself_data()
{
    QTest::addColumn<QRect>("given");
    QTest::addColumn<QRect>("stored");
    constexpr int most = KyGUISizeManager::MaxEdge;
    const auto same = [](const char* inName, const QRect& inRect) {
        QTest::newRow(inName) << inRect << inRect;
    };
    same("usual", QRect(10, 20, 300, 400));
    same("left of the screen", QRect(-500, -20, 300, 400));
    same("empty", QRect());
    same("less than empty", QRect(QPoint(10, 10), QPoint(5, 5)));
    QTest::newRow("beyond all screens") << QRect(QPoint(INT_MIN, INT_MIN), QPoint(INT_MAX, INT_MAX))
                                        << QRect(QPoint(-most, -most), QPoint(most, most));
}

void tst_KyGUISizeManager::geometryIsStoredByItself()
{
    QFETCH(QRect, given);
    QCOMPARE(KyGUISizeManager::storedWidgetGeometry("K"), QRect());
    KyGUISizeManager::storeWidgetGeometry(given, "K");
    QTEST(KyGUISizeManager::storedWidgetGeometry("K"), "stored");
    QCOMPARE(KyGUISizeManager::storedWidgetGeometry("L"), QRect());
}

void tst_KyGUISizeManager::storedGeometryIsKeptForLaterRuns()
{
    KyGUISizeManager::storeWidgetGeometry(QRect(1, 2, 3, 4), "K");
    restart();
    QCOMPARE(KyGUISizeManager::storedWidgetGeometry("K"), QRect(1, 2, 3, 4));
}

void tst_KyGUISizeManager::damagedStoredGeometryIsEmpty_data()
{
    QTest::addColumn<QString>("text");
    for (const char* text : {"", "1 2 3", "1 2 3 4 5", "AdnQywAD"})
        QTest::newRow(qPrintable('"' + QString(text) + '"')) << text;
}

void tst_KyGUISizeManager::damagedStoredGeometryIsEmpty()
{
    QFETCH(QString, text);
    QVERIFY(mRegistry->setProperty("GUI.Geometry.K", text, OvRegistry::UserPriority));
    QCOMPARE(KyGUISizeManager::storedWidgetGeometry("K"), QRect());
}

void tst_KyGUISizeManager::withoutRegistryOrKeyNoGeometryIsStored()
{
    KyGUISizeManager::storeWidgetGeometry(QRect(1, 2, 3, 4), "");
    QCOMPARE(KyGUISizeManager::storedWidgetGeometry(""), QRect());
    mRegistry.reset();
    KyGUISizeManager::storeWidgetGeometry(QRect(1, 2, 3, 4), "K");
    QCOMPARE(KyGUISizeManager::storedWidgetGeometry("K"), QRect());
}

KY_TEST_MAIN(tst_KyGUISizeManager)
#include "tst_KyGUISizeManager.moc"
