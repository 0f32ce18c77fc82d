#include <support/KyTest.h>

#include <jxbase/JxRegularExpression.h>

class tst_JxRegularExpression : public QObject
{
    Q_OBJECT

private slots:
    void wildcardBecomesAnExpression_data();
    void wildcardBecomesAnExpression();
    void wildcardMatches_data();
    void wildcardMatches();
    void caseIsAnOption();
    void anchoredWildcardMatchesWholeTexts();
    void wildcardsOfPathsAreQtsOwn();

private:
    static QRegularExpression from(const QString& inText)
    {
        return JxRegularExpression::fromWildcard(inText, Qt::CaseInsensitive,
                                                 JxRegularExpression::NonPathWildcardConversion |
                                                     QRegularExpression::UnanchoredWildcardConversion);
    }
};

void tst_JxRegularExpression::wildcardBecomesAnExpression_data()
{
    QTest::addColumn<QString>("wildcard");
    QTest::addColumn<QString>("pattern");
    QTest::newRow("empty") << ""
                           << "";
    QTest::newRow("plain") << "Edit"
                           << "Edit";
    QTest::newRow("star") << "RICHEDIT*"
                          << "RICHEDIT[\\d\\D]*";
    QTest::newRow("question mark") << "a?c"
                                   << "a[\\d\\D]c";
    QTest::newRow("special characters") << "a.b$(c)+^{|}\\"
                                        << "a\\.b\\$\\(c\\)\\+\\^\\{\\|\\}\\\\";
    QTest::newRow("slash") << "a/b"
                           << "a/b";
    QTest::newRow("set") << "[a-c]x"
                         << "[a-c]x";
    QTest::newRow("set of others") << "[!abc]"
                                   << "[^abc]";
    QTest::newRow("bracket in a set") << "[]a]"
                                      << "[]a]";
    QTest::newRow("bracket in a set of others") << "[!]a]"
                                                << "[^]a]";
    QTest::newRow("backslash in a set") << "[\\d]"
                                        << "[\\\\d]";
    QTest::newRow("slash in a set") << "[/a]"
                                    << "[/a]";
    QTest::newRow("special characters in a set") << "[*?.]"
                                                 << "[*?.]";
    QTest::newRow("lone closing bracket") << "a]"
                                          << "a]";
    QTest::newRow("bracket at the end") << "a["
                                        << "a[";
    QTest::newRow("open set") << "[!"
                              << "[^";
}

void tst_JxRegularExpression::wildcardBecomesAnExpression()
{
    QFETCH(QString, wildcard);
    QTEST(from(wildcard).pattern(), "pattern");
    QCOMPARE(from(wildcard).patternOptions(), QRegularExpression::CaseInsensitiveOption);
}

void tst_JxRegularExpression::wildcardMatches_data()
{
    QTest::addColumn<QString>("wildcard");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("matches");
    QTest::newRow("in the middle") << "b"
                                   << "abc" << true;
    QTest::newRow("any letter case") << "edit"
                                     << "EDIT" << true;
    QTest::newRow("star over a slash") << "a*c"
                                       << "a/b/c" << true;
    QTest::newRow("star over lines") << "a*c"
                                     << "a\nb\nc" << true;
    QTest::newRow("star for nothing") << "a*c"
                                      << "ac" << true;
    QTest::newRow("question mark needs one") << "a?c"
                                             << "ac" << false;
    QTest::newRow("question mark takes a slash") << "a?c"
                                                 << "a/c" << true;
    QTest::newRow("dot is a dot") << "a.c"
                                  << "abc" << false;
    QTest::newRow("set") << "[ab]x"
                         << "bx" << true;
    QTest::newRow("not in the set") << "[!ab]x"
                                    << "bx" << false;
    QTest::newRow("bracket of a set") << "[]]"
                                      << "]" << true;
    QTest::newRow("backslash of a set") << "[\\]"
                                        << "\\" << true;
    QTest::newRow("open set matches nothing") << "a["
                                              << "a[" << false;
}

void tst_JxRegularExpression::wildcardMatches()
{
    QFETCH(QString, wildcard);
    QFETCH(QString, text);
    const QRegularExpression expression = from(wildcard);
    QCOMPARE(expression.isValid(), !wildcard.endsWith("a["));
    QTEST(expression.isValid() && expression.match(text).hasMatch(), "matches");
}

void tst_JxRegularExpression::caseIsAnOption()
{
    const auto expression = JxRegularExpression::fromWildcard(u"a", Qt::CaseSensitive,
                                                              JxRegularExpression::NonPathWildcardConversion);
    QCOMPARE(expression.patternOptions(), QRegularExpression::NoPatternOption);
    QVERIFY(!expression.match("A").hasMatch());
}

void tst_JxRegularExpression::anchoredWildcardMatchesWholeTexts()
{
    const auto expression = JxRegularExpression::fromWildcard(u"a*", Qt::CaseSensitive,
                                                              JxRegularExpression::NonPathWildcardConversion);
    QVERIFY(expression.match("a/b").hasMatch());
    QVERIFY(!expression.match("ba").hasMatch());
}

void tst_JxRegularExpression::wildcardsOfPathsAreQtsOwn()
{
    const auto expression = JxRegularExpression::fromWildcard(u"a*", Qt::CaseSensitive,
                                                              QRegularExpression::DefaultWildcardConversion);
    QCOMPARE(expression, QRegularExpression::fromWildcard(u"a*", Qt::CaseSensitive));
    QVERIFY(!expression.match("a/b").hasMatch());
}

KY_TEST_MAIN(tst_JxRegularExpression)
#include "tst_JxRegularExpression.moc"
