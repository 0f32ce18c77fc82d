#include <support/KyTest.h>

#include <rnwin/RnSimulatedDesktop.h>

#include <thread>

using Window = RnWindows::Window;
using Kind = RnSimulatedDesktop::Kind;

class tst_RnSimulatedDesktop : public QObject
{
    Q_OBJECT

private slots:
    void portIsThereWhileOneLives();
    void windowsAreListedInTheirOrder();
    void enumerationEndsWhenToldSo();
    void childrenFollowOneAnother();
    void destroyedWindowsAreGone();
    void handlesAreNeverGivenTwice();
    void windowsInHiddenOnesAreNotVisible();
    void namesAreCut();
    void processesAreOpened();
    void processesThatMayNotBeOpened();
    void textOfControls_data();
    void textOfControls();
    void textIsCutToTheBuffer();
    void selectionOfControls_data();
    void selectionOfControls();
    void replacementIsUndoneOnlyWhereAllowed();
    void messagesToPlainWindowsDoNothing();
    void messagesToAHungWindowWait();
    void operationsAreObserved();

private:
    Window control(RnSimulatedDesktop& ioDesktop, Kind inKind, const std::u16string& inText)
    {
        const Window top = ioDesktop.add({});
        return ioDesktop.add({.parent = top, .kind = inKind, .text = inText});
    }
    static QByteArray textOf(RnWindows& inWindows, Window inWindow)
    {
        QByteArray buffer(inWindows.textLength(inWindow) + 1, 'x');
        inWindows.text(inWindow, std::size_t(buffer.size()), buffer.data());
        return buffer.left(buffer.indexOf('\0'));
    }
};

void tst_RnSimulatedDesktop::portIsThereWhileOneLives()
{
    QVERIFY(!RnWindows::instance());
    {
        RnSimulatedDesktop first;
        QCOMPARE(RnWindows::instance(), &first);
        {
            RnSimulatedDesktop second;
            QCOMPARE(RnWindows::instance(), &second);
        }
        QVERIFY(!RnWindows::instance());
    }
#ifndef Q_OS_WIN
    QVERIFY(!RnWindows::ofSystem());
#endif
}

void tst_RnSimulatedDesktop::windowsAreListedInTheirOrder()
{
    RnSimulatedDesktop desktop;
    const QList<Window> added{desktop.add({}), desktop.add({}), desktop.add({})};
    QList<Window> listed;
    desktop.enumWindows([&](Window inWindow) {
        listed.append(inWindow);
        return true;
    });
    QCOMPARE(listed, added);
}

void tst_RnSimulatedDesktop::enumerationEndsWhenToldSo()
{
    RnSimulatedDesktop desktop;
    desktop.add({});
    desktop.add({});
    int count = 0;
    desktop.enumWindows([&](Window) {
        ++count;
        return false;
    });
    QCOMPARE(count, 1);
}

void tst_RnSimulatedDesktop::childrenFollowOneAnother()
{
    RnSimulatedDesktop desktop;
    const Window top = desktop.add({});
    const Window first = desktop.add({.parent = top});
    const Window inFirst = desktop.add({.parent = first});
    const Window second = desktop.add({.parent = top});
    QCOMPARE(desktop.findWindowEx(top, 0), first);
    QCOMPARE(desktop.findWindowEx(top, first), second);
    QCOMPARE(desktop.findWindowEx(top, second), Window(0));
    QCOMPARE(desktop.findWindowEx(first, 0), inFirst);
    QCOMPARE(desktop.findWindowEx(top, inFirst), Window(0));
    QCOMPARE(desktop.findWindowEx(999, 0), Window(0));
    QCOMPARE(desktop.parent(inFirst), first);
    QCOMPARE(desktop.parent(top), Window(0));
    QCOMPARE(desktop.add({.parent = 999}), Window(0));
}

void tst_RnSimulatedDesktop::destroyedWindowsAreGone()
{
    RnSimulatedDesktop desktop;
    const Window top = desktop.add({});
    const Window first = desktop.add({.parent = top});
    const Window inFirst = desktop.add({.parent = first});
    const Window second = desktop.add({.parent = top});
    desktop.destroy(first);
    QVERIFY(!desktop.isWindow(first) && !desktop.isWindow(inFirst) && desktop.isWindow(second));
    QCOMPARE(desktop.findWindowEx(top, 0), second);
    QCOMPARE(desktop.findWindowEx(top, second), Window(0));
    QVERIFY(!desktop.isWindowVisible(first));
    QCOMPARE(desktop.textLength(first), std::intptr_t(0));
    desktop.destroy(first);
}

void tst_RnSimulatedDesktop::handlesAreNeverGivenTwice()
{
    auto desktop = std::make_unique<RnSimulatedDesktop>();
    const Window before = desktop->add({});
    desktop = std::make_unique<RnSimulatedDesktop>();
    QVERIFY(desktop->add({}) != before);
    QVERIFY(!desktop->isWindow(before));
}

void tst_RnSimulatedDesktop::windowsInHiddenOnesAreNotVisible()
{
    RnSimulatedDesktop desktop;
    const Window top = desktop.add({});
    const Window child = desktop.add({.parent = top});
    QVERIFY(desktop.isWindowVisible(child));
    desktop.setVisible(top, false);
    QVERIFY(!desktop.isWindowVisible(child) && !desktop.isWindowVisible(top));
    desktop.setVisible(top, true);
    desktop.setVisible(child, false);
    QVERIFY(!desktop.isWindowVisible(child) && desktop.isWindowVisible(top));
}

void tst_RnSimulatedDesktop::namesAreCut()
{
    RnSimulatedDesktop desktop;
    const Window window =
        desktop.add({.className = u"abcdef", .title = u"ghijkl", .kind = Kind::Edit, .text = u"12345"});
    QVERIFY(desktop.className(window, 4) == u"abc");
    QVERIFY(desktop.windowText(window, 3) == u"gh");
    QVERIFY(desktop.wideText(window, 5) == u"1234");
    desktop.setTitle(window, u"new");
    QVERIFY(desktop.windowText(window, 256) == u"new");
}

void tst_RnSimulatedDesktop::processesAreOpened()
{
    RnSimulatedDesktop desktop;
    const std::uint32_t id = desktop.addProcess(u"C:\\Word\\word.exe");
    const Window top = desktop.add({.process = id});
    QCOMPARE(desktop.processId(desktop.add({.parent = top})), id);
    const RnWindows::Process process = desktop.openProcess(RnWindows::QueryAndRead, id);
    QVERIFY(process);
    QCOMPARE(desktop.openProcesses(), 1);
    QVERIFY(desktop.moduleFileName(process, 260) == u"C:\\Word\\word.exe");
    QVERIFY(desktop.moduleFileName(process, 3) == u"C:\\");
    desktop.closeHandle(process);
    QCOMPARE(desktop.openProcesses(), 0);
    QVERIFY(desktop.moduleFileName(process, 260).empty());
}

void tst_RnSimulatedDesktop::processesThatMayNotBeOpened()
{
    RnSimulatedDesktop desktop;
    QCOMPARE(desktop.openProcess(RnWindows::QueryAndRead, desktop.addProcess(u"a.exe", false)),
             RnWindows::Process(0));
    QCOMPARE(desktop.openProcess(RnWindows::QueryAndRead, 4711), RnWindows::Process(0));
    QCOMPARE(desktop.openProcess(0x1, desktop.addProcess(u"b.exe")), RnWindows::Process(0));
}

void tst_RnSimulatedDesktop::textOfControls_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QByteArray>("read");
    for (const auto& [name, kind] : {std::pair("edit", Kind::Edit), std::pair("rich edit", Kind::RichEdit)}) {
        QTest::addRow("%s, empty", name) << int(kind) << "" << QByteArray("");
        QTest::addRow("%s, lines", name) << int(kind) << "a\nb\r\nc" << QByteArray("a\r\nb\r\nc");
        QTest::addRow("%s, code page", name)
            << int(kind) << QString::fromUtf8("\xC3\xA4\xE2\x82\xAC\xCE\xB1") << QByteArray("\xE4\x80?");
    }
}

void tst_RnSimulatedDesktop::textOfControls()
{
    QFETCH(int, kind);
    QFETCH(QString, text);
    RnSimulatedDesktop desktop;
    const Window window = control(desktop, Kind(kind), text.toStdU16String());
    QTEST(textOf(desktop, window), "read");
    desktop.setSelection(window, 0, -1);
    desktop.replaceSelection(window, true, "x\ny");
    const bool isRich = Kind(kind) == Kind::RichEdit;
    QCOMPARE(textOf(desktop, window), QByteArray(isRich ? "x\r\ny" : "x\ny"));
    QVERIFY(desktop.content(window) == (isRich ? u"x\r\ny" : u"x\ny"));
}

void tst_RnSimulatedDesktop::textIsCutToTheBuffer()
{
    RnSimulatedDesktop desktop;
    const Window window = control(desktop, Kind::Edit, u"abcdef");
    char buffer[] = "xxxxx";
    desktop.text(window, 4, buffer);
    QCOMPARE(QByteArray(buffer, 5), QByteArray("abc\0x", 5));
    desktop.text(window, 0, buffer);
    QCOMPARE(buffer[0], 'a');
}

void tst_RnSimulatedDesktop::selectionOfControls_data()
{
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("start");
    QTest::addColumn<int>("end");
    QTest::addColumn<QList<int>>("selected");
    const int edit = int(Kind::Edit), rich = int(Kind::RichEdit);
    QTest::newRow("edit") << edit << 1 << 3 << QList<int>{1, 3};
    QTest::newRow("edit, all: a line end counts two") << edit << 0 << -1 << QList<int>{0, 5};
    QTest::newRow("edit, beyond the end") << edit << 2 << 99 << QList<int>{2, 5};
    QTest::newRow("edit, the wrong way round") << edit << 3 << 1 << QList<int>{1, 3};
    QTest::newRow("edit, none") << edit << -1 << 0 << QList<int>{0, 0};
    QTest::newRow("rich edit") << rich << 1 << 3 << QList<int>{1, 3};
    QTest::newRow("rich edit, all: one more than there is") << rich << 0 << -1 << QList<int>{0, 5};
    QTest::newRow("rich edit, beyond the end") << rich << 2 << 99 << QList<int>{2, 4};
}

void tst_RnSimulatedDesktop::selectionOfControls()
{
    QFETCH(int, kind);
    QFETCH(int, start);
    QFETCH(int, end);
    RnSimulatedDesktop desktop;
    const Window window = control(desktop, Kind(kind), u"ab\nc");
    desktop.setSelection(window, start, end);
    const RnWindows::Selection selection = desktop.selection(window);
    QTEST((QList<int>{int(selection.start), int(selection.end)}), "selected");
}

void tst_RnSimulatedDesktop::replacementIsUndoneOnlyWhereAllowed()
{
    RnSimulatedDesktop desktop;
    const Window window = control(desktop, Kind::Edit, u"abc");
    desktop.setSelection(window, 1, 2);
    desktop.replaceSelection(window, true, "xyz");
    QVERIFY(desktop.content(window) == u"axyzc");
    QCOMPARE(desktop.selection(window).start, 4u);
    QCOMPARE(desktop.selection(window).end, 4u);
    QVERIFY(desktop.undo(window));
    QVERIFY(desktop.content(window) == u"abc");
    QVERIFY(!desktop.undo(window));
    desktop.replaceSelection(window, false, "1");
    QVERIFY(!desktop.undo(window));
}

void tst_RnSimulatedDesktop::messagesToPlainWindowsDoNothing()
{
    RnSimulatedDesktop desktop;
    const Window window = desktop.add({.title = u"title"});
    desktop.setSelection(window, 0, -1);
    desktop.replaceSelection(window, true, "x");
    QCOMPARE(desktop.textLength(window), std::intptr_t(0));
    QVERIFY(desktop.wideText(window, 10).empty());
    QCOMPARE(desktop.selection(window).end, 0u);
}

void tst_RnSimulatedDesktop::messagesToAHungWindowWait()
{
    RnSimulatedDesktop desktop;
    const Window window = control(desktop, Kind::Edit, u"abc");
    desktop.hang(window);
    bool hasWaited = false;
    std::thread user([&] {
        while (!desktop.isWaiting())
            std::this_thread::yield();
        hasWaited = true;
        desktop.wake(window);
    });
    QVERIFY(desktop.windowText(window, 10).empty()); // needs no message
    QCOMPARE(desktop.textLength(window), std::intptr_t(3));
    user.join();
    QVERIFY(hasWaited);
    QVERIFY(!desktop.isWaiting());
}

void tst_RnSimulatedDesktop::operationsAreObserved()
{
    RnSimulatedDesktop desktop;
    const Window window = control(desktop, Kind::Edit, u"abc");
    QStringList seen;
    desktop.setObserver([&](const char* inOperation, Window inWindow) {
        seen.append(QString::fromLatin1(inOperation) + (inWindow == window ? "!" : ""));
    });
    desktop.enumWindows([](Window) { return true; });
    desktop.setSelection(window, 0, 1);
    QCOMPARE(seen, QStringList({"EnumWindows", "EM_SETSEL!"}));
}

KY_TEST_MAIN(tst_RnSimulatedDesktop)
#include "tst_RnSimulatedDesktop.moc"
