#include <support/KyTest.h>

#include <kybase/KyEditor.h>

namespace {

class TestEditor : public KyEditor
{
public:
    using KyEditor::KyEditor;
    void open() override { ++opened; }
    int opened = 0;
};

} // namespace

class tst_KyEditor : public QObject
{
    Q_OBJECT

private slots:
    void editorIsFoundWhileItLives();
    void keyIsComparedExactly_data();
    void keyIsComparedExactly();
    void newestEditorOfAKeyIsFound();
    void editorIsOpenedOnRequest();
    void editorOffersNothingToScriptsByItself();
};

void tst_KyEditor::editorIsFoundWhileItLives()
{
    QCOMPARE(KyEditor::editor("key", false), nullptr);
    {
        TestEditor editor("key");
        QCOMPARE(KyEditor::editor("key", false), &editor);
        QCOMPARE(editor.key(), std::string("key"));
    }
    QCOMPARE(KyEditor::editor("key", false), nullptr);
}

void tst_KyEditor::keyIsComparedExactly_data()
{
    QTest::addColumn<QByteArray>("key");
    for (const char* key : {"Key", "ke", "keys", ""})
        QTest::newRow(key) << QByteArray(key);
    QTest::newRow("null") << QByteArray();
}

void tst_KyEditor::keyIsComparedExactly()
{
    QFETCH(QByteArray, key);
    TestEditor editor("key"), nameless(""), null(nullptr);
    QCOMPARE(KyEditor::editor(key.isNull() ? nullptr : key.constData(), false), nullptr);
}

void tst_KyEditor::newestEditorOfAKeyIsFound()
{
    TestEditor first("key");
    auto second = std::make_unique<TestEditor>("key");
    QCOMPARE(KyEditor::editor("key", false), second.get());
    second.reset();
    QCOMPARE(KyEditor::editor("key", false), &first);
}

void tst_KyEditor::editorIsOpenedOnRequest()
{
    TestEditor editor("key");
    KyEditor::editor("key", false);
    KyEditor::editor("other", true);
    QCOMPARE(editor.opened, 0);
    QCOMPARE(KyEditor::editor("key", true), &editor);
    QCOMPARE(editor.opened, 1);
}

void tst_KyEditor::editorOffersNothingToScriptsByItself()
{
    TestEditor editor("key");
    QCOMPARE(editor.scriptObject(nullptr), nullptr);
}

KY_TEST_MAIN(tst_KyEditor)
#include "tst_KyEditor.moc"
