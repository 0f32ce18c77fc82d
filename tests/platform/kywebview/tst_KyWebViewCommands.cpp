#include <support/KyTest.h>

#include <kywebview/KyWebViewCommands.h>
#include <ovbase/OvStoredGeometry.h>

class tst_KyWebViewCommands : public QObject
{
    Q_OBJECT

private slots:
    void textIsSplit_data();
    void textIsSplit();
    void commandHasWordAndArgument_data();
    void commandHasWordAndArgument();
    void geometryIsRead_data();
    void geometryIsRead();
    void messagesAreWritten();
    void readerTakesAnyPieces_data();
    void readerTakesAnyPieces();
    void readerDropsWhatIsTooLong();
};

void tst_KyWebViewCommands::textIsSplit_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("commands");
    QTest::newRow("one") << "SHOW" << QStringList("SHOW");
    QTest::newRow("with its end") << "SHOW;" << QStringList("SHOW");
    QTest::newRow("two") << "URL x;SHOW" << QStringList{"URL x", "SHOW"};
    QTest::newRow("white space around") << " SHOW ;\n HIDE\t" << QStringList{"SHOW", "HIDE"};
    QTest::newRow("white space inside") << "TITLE a  b" << QStringList("TITLE a  b");
    QTest::newRow("empty") << "" << QStringList();
    QTest::newRow("empty ones") << ";; ;" << QStringList();
}

void tst_KyWebViewCommands::textIsSplit()
{
    QFETCH(QString, text);
    QTEST(KyWebViewCommands::split(text), "commands");
}

void tst_KyWebViewCommands::commandHasWordAndArgument_data()
{
    QTest::addColumn<QString>("command");
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("argument");
    QTest::newRow("word") << "SHOW"
                          << "SHOW"
                          << "";
    QTest::newRow("argument") << "URL http://a/b c"
                              << "URL"
                              << "http://a/b c";
    QTest::newRow("blanks") << "TITLE   a  b "
                            << "TITLE"
                            << "a  b";
    QTest::newRow("empty") << ""
                           << ""
                           << "";
}

void tst_KyWebViewCommands::commandHasWordAndArgument()
{
    QFETCH(QString, command);
    QTEST(KyWebViewCommands::word(command), "word");
    QTEST(KyWebViewCommands::argument(command), "argument");
}

void tst_KyWebViewCommands::geometryIsRead_data()
{
    QTest::addColumn<QString>("argument");
    QTest::addColumn<bool>("isRead");
    QTest::addColumn<QRect>("geometry");
    QTest::newRow("usual") << "10 20 110 220" << true << QRect(20, 10, 201, 101);
    QTest::newRow("negative") << "-10 -20 -1 -2" << true << QRect(QPoint(-20, -10), QPoint(-2, -1));
    QTest::newRow("empty") << "0 0 -1 -1" << true << QRect();
    QTest::newRow("three") << "10 20 110" << false << QRect();
    QTest::newRow("five") << "10 20 110 220 1" << false << QRect();
    QTest::newRow("no number") << "10 20 x 220" << false << QRect();
    QTest::newRow("two blanks") << "10  20 110 220" << false << QRect();
    QTest::newRow("nothing") << "" << false << QRect();
    QTest::newRow("too large a number") << "10 20 110 99999999999" << false << QRect();
    constexpr int most = OvStoredGeometry::MaxEdge;
    QTest::newRow("large numbers") << "-2147483648 -2147483648 2147483647 2147483647" << true
                                   << QRect(QPoint(-most, -most), QPoint(most, most));
}

void tst_KyWebViewCommands::geometryIsRead()
{
    QFETCH(QString, argument);
    QFETCH(bool, isRead);
    const auto geometry = KyWebViewCommands::geometry(argument);
    QCOMPARE(geometry.has_value(), isRead);
    if (isRead)
        QTEST(*geometry, "geometry");
}

void tst_KyWebViewCommands::messagesAreWritten()
{
    QCOMPARE(KyWebViewCommands::geometryMessage(QRect(20, 10, 201, 101)), QString("GEOMETRY 10 20 110 220"));
    QCOMPARE(KyWebViewCommands::isHiddenMessage(true), QString("ISHIDDEN 1"));
    QCOMPARE(KyWebViewCommands::isHiddenMessage(false), QString("ISHIDDEN 0"));
    QCOMPARE(KyWebViewCommands::errorMessage("bad %1 command"), QString("ERROR bad %1 command"));
}

void tst_KyWebViewCommands::readerTakesAnyPieces_data()
{
    QTest::addColumn<int>("size");
    for (const int size : {1, 2, 3, 5, 7, 1000})
        QTest::addRow("%d", size) << size;
}

void tst_KyWebViewCommands::readerTakesAnyPieces()
{
    QFETCH(int, size);
    const QByteArray stream = "SHOW;URL http://h/ä€😀;;HIDE;half";
    KyWebViewCommandReader reader;
    QStringList commands;
    for (int start = 0; start < stream.size(); start += size)
        commands += reader.read(stream.mid(start, size));
    QCOMPARE(commands, QStringList({"SHOW", QString::fromUtf8("URL http://h/ä€😀"), "HIDE"}));
    QCOMPARE(reader.read(QByteArray()), QStringList());
    QCOMPARE(reader.read(" of it;"), QStringList("half of it"));
}

void tst_KyWebViewCommands::readerDropsWhatIsTooLong()
{
    constexpr auto most = KyWebViewCommandReader::LongestCommand;
    KyWebViewCommandReader reader;
    QCOMPARE(reader.read("A;" + QByteArray(most, 'x')), QStringList("A"));
    QCOMPARE(reader.read(";"), QStringList(QString(most, 'x')));
    for (int i = 0; i < 5; ++i)
        QCOMPARE(reader.read(QByteArray(most, 'x')), QStringList());
    QCOMPARE(reader.read("x;B;"), QStringList("B"));
    QCOMPARE(reader.read(QByteArray(most + 1, 'x') + ";C;"), QStringList("C"));
}

KY_TEST_MAIN(tst_KyWebViewCommands)
#include "tst_KyWebViewCommands.moc"
