#include <support/KyTest.h>

#include <kyreporttab/JxReport.h>
#include <kyreporttab/OvReportEditor.h>

#include <QTextEdit>

class tst_OvReportEditor : public QObject
{
    Q_OBJECT

private slots:
    void noReportAtFirst();
    void activeReportIsTheOneOnView();
    void reportThatEndsIsNotOnViewAnyMore();
    void reportOutlivesWhoShowsIt();
    void editorKnowsItsWidget();
    void readOnlyReportIsNotChanged();
    void changesAreUndone();
};

void tst_OvReportEditor::noReportAtFirst()
{
    QVERIFY(!JxReport::instance());
    const JxReport reports;
    QCOMPARE(JxReport::instance(), &reports);
    QVERIFY(!reports.activeReport());
}

void tst_OvReportEditor::activeReportIsTheOneOnView()
{
    JxReport reports;
    Ovg::OvReportEditor first, second;
    reports.setActiveReport(&first);
    QCOMPARE(reports.activeReport(), &first);
    reports.setActiveReport(&second);
    reports.forget(&first);
    QCOMPARE(reports.activeReport(), &second);
    reports.forget(&second);
    QVERIFY(!reports.activeReport());
}

void tst_OvReportEditor::reportThatEndsIsNotOnViewAnyMore()
{
    JxReport reports;
    {
        Ovg::OvReportEditor editor;
        reports.setActiveReport(&editor);
    }
    QVERIFY(!reports.activeReport());
}

void tst_OvReportEditor::reportOutlivesWhoShowsIt()
{
    Ovg::OvReportEditor editor;
    {
        JxReport reports;
        reports.setActiveReport(&editor);
    }
    QVERIFY(!JxReport::instance());
}

void tst_OvReportEditor::editorKnowsItsWidget()
{
    auto text = std::make_unique<QTextEdit>();
    Ovg::OvReportEditor editor(text.get());
    QCOMPARE(editor.textEdit(), text.get());
    QVERIFY(!editor.isReadOnly());
    text.reset();
    QVERIFY(!editor.textEdit());
    QVERIFY(editor.isReadOnly());
    editor.setReadOnly(false);
    editor.undo();
    editor.redo();
    QVERIFY(editor.isReadOnly());
}

void tst_OvReportEditor::readOnlyReportIsNotChanged()
{
    QTextEdit text;
    Ovg::OvReportEditor editor(&text);
    text.insertPlainText("abc");
    editor.setReadOnly(true);
    QVERIFY(text.isReadOnly() && editor.isReadOnly());
    editor.undo();
    QCOMPARE(text.toPlainText(), QStringLiteral("abc"));
    editor.setReadOnly(false);
    editor.undo();
    editor.setReadOnly(true);
    editor.redo();
    QCOMPARE(text.toPlainText(), QString());
}

void tst_OvReportEditor::changesAreUndone()
{
    QTextEdit text;
    Ovg::OvReportEditor editor(&text);
    text.insertPlainText("abc");
    editor.undo();
    QCOMPARE(text.toPlainText(), QString());
    editor.redo();
    QCOMPARE(text.toPlainText(), QStringLiteral("abc"));
}

KY_TEST_MAIN(tst_OvReportEditor)
#include "tst_OvReportEditor.moc"
