#include <support/KyTest.h>

#include <kysite/KySqlScript.h>

class tst_KySqlScript : public QObject
{
    Q_OBJECT

private slots:
    void statementsAreTakenApart_data();
    void statementsAreTakenApart();
    void parametersAreFound_data();
    void parametersAreFound();
    void columnTypesComeFromAComment_data();
    void columnTypesComeFromAComment();
    void parametersAreKnownWhateverTheirCase();
};

void tst_KySqlScript::statementsAreTakenApart_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("statements");
    QTest::newRow("nothing") << "" << QStringList();
    QTest::newRow("blanks") << " \n;\n ;" << QStringList();
    QTest::newRow("comments") << "-- a; b\n/* c; */" << QStringList();
    QTest::newRow("one") << "select 1" << QStringList{"select 1"};
    QTest::newRow("one with its end") << " select 1 ;\n" << QStringList{"select 1"};
    QTest::newRow("two") << "select 1; select 2" << QStringList{"select 1", "select 2"};
    QTest::newRow("in quotes") << "select ';', \"a;b\", `;`, [;]; x"
                               << QStringList{"select ';', \"a;b\", `;`, [;]", "x"};
    QTest::newRow("quote in quotes") << "select 'it''s; fine'; x" << QStringList{"select 'it''s; fine'", "x"};
    QTest::newRow("comment within") << "select 1 -- ; no\n + 2; x" << QStringList{"select 1 \n + 2", "x"};
    QTest::newRow("block comment within") << "select /* ; */ 2; x" << QStringList{"select  2", "x"};
    QTest::newRow("comment in quotes") << "select '--', '/*'; x" << QStringList{"select '--', '/*'", "x"};
    QTest::newRow("open quote") << "select 'a; b" << QStringList{"select 'a; b"};
    QTest::newRow("open comment") << "select 1 /* ; x" << QStringList{"select 1"};
}

void tst_KySqlScript::statementsAreTakenApart()
{
    QFETCH(QString, text);
    QFETCH(QStringList, statements);
    const KySqlScript script(text);
    QStringList found;
    for (const auto& statement : script.statements())
        found.append(statement.text);
    QCOMPARE(found, statements);
}

void tst_KySqlScript::parametersAreFound_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("parameters");
    QTest::newRow("none") << "select 1" << QStringList();
    QTest::newRow("each once") << "select :b, :a, :b" << QStringList{"b", "a"};
    QTest::newRow("letters and digits") << "select :a_1b+:_x" << QStringList{"a_1b", "_x"};
    QTest::newRow("casts") << "select x::text, y :: z" << QStringList();
    QTest::newRow("quotes") << "select ':a', \":b\", '' , :c" << QStringList{"c"};
    QTest::newRow("comments") << "select /* :a */ 1 -- :b" << QStringList();
    QTest::newRow("bare colon") << "select : a, :1, :" << QStringList();
    QTest::newRow("behind a name") << "select a:b" << QStringList{"b"};
}

void tst_KySqlScript::parametersAreFound()
{
    QFETCH(QString, text);
    QFETCH(QStringList, parameters);
    const KySqlScript script(text);
    QCOMPARE(script.statements().size(), std::size_t(1));
    QCOMPARE(script.statements().front().parameters, parameters);
}

void tst_KySqlScript::columnTypesComeFromAComment_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("types");
    QTest::newRow("none") << "-- x\nselect 1" << QStringList();
    QTest::newRow("some") << "-- columns: int, BIT ,datetime\nselect 1"
                          << QStringList{"int", "bit", "datetime"};
    QTest::newRow("the first counts") << "-- columns: int\n-- columns: bit\n" << QStringList{"int"};
    QTest::newRow("gaps") << "--COLUMNS: ,bit" << QStringList{"", "bit"};
    QTest::newRow("in quotes") << "select '-- columns: int'" << QStringList();
}

void tst_KySqlScript::columnTypesComeFromAComment()
{
    QFETCH(QString, text);
    QFETCH(QStringList, types);
    QCOMPARE(KySqlScript(text).columnTypes(), types);
}

void tst_KySqlScript::parametersAreKnownWhateverTheirCase()
{
    const KySqlScript script("update t set a = :PatientId; select :b");
    QVERIFY(script.hasParameter("patientid"));
    QVERIFY(script.hasParameter("B"));
    QVERIFY(!script.hasParameter("a"));
    QVERIFY(!script.hasParameter(""));
}

KY_TEST_MAIN(tst_KySqlScript)
#include "tst_KySqlScript.moc"
