#include <support/KyTest.h>
#include <support/ModalAnswer.h>

#include <jxbase/JxFileDialog.h>

#include <QDir>
#include <QLineEdit>
#include <QMessageBox>
#include <QTemporaryDir>

#include <memory>

class TestJxFileDialog final : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        mFolder = std::make_unique<QTemporaryDir>();
        QVERIFY(mFolder->isValid());
    }

    void theDialogAsksForAFileToWrite()
    {
        const ModalAnswer answer([&](QWidget* inWindow) {
            auto* dialog = asDialog(inWindow);
            QVERIFY(dialog);
            QCOMPARE(dialog->windowTitle(), QStringLiteral("caption"));
            QCOMPARE(dialog->acceptMode(), QFileDialog::AcceptSave);
            QCOMPARE(dialog->fileMode(), QFileDialog::AnyFile);
            QCOMPARE(dialog->nameFilters(), QStringList({"Text (*.txt)", "All (*)"}));
            QCOMPARE(dialog->selectedNameFilter(), QStringLiteral("Text (*.txt)"));
            QCOMPARE(dialog->directory(), QDir(mFolder->path()));
            QCOMPARE(dialog->selectedFiles(), QStringList(path("a.txt")));
            QVERIFY(!dialog->parentWidget());
            dialog->reject();
        });
        QCOMPARE(ask(path("a.txt"), QStringLiteral("Text (*.txt);;All (*)")), QString());
    }

    void theAcceptedPathIsTheResult_data()
    {
        QTest::addColumn<QString>("typed");
        QTest::addColumn<QString>("result");
        QTest::newRow("the proposed one") << ""
                                          << "a.txt";
        QTest::newRow("another name") << "b.txt"
                                      << "b.txt";
        QTest::newRow("without an extension") << "b"
                                              << "b";
        QTest::newRow("letters of all scripts, blanks")
            << QString::fromUtf8("größe 東京.txt") << QString::fromUtf8("größe 東京.txt");
        QTest::newRow("ends in a dot") << "b."
                                       << "b.";
    }
    void theAcceptedPathIsTheResult()
    {
        QFETCH(QString, typed);
        QFETCH(QString, result);
        const ModalAnswer answer([&](QWidget* inWindow) {
            if (!typed.isEmpty())
                inWindow->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(typed);
            ModalAnswer::clicking(QStringLiteral("Save"))(inWindow);
        });
        QCOMPARE(ask(path("a.txt"), QString()), path(result));
        QVERIFY(!QFile::exists(path(result))); // nothing is written
    }

    void anExistingFileNeedsAnAnswer_data()
    {
        QTest::addColumn<QString>("button");
        QTest::addColumn<bool>("taken");
        QTest::newRow("replace") << "Yes" << true;
        QTest::newRow("don't") << "No" << false;
    }
    void anExistingFileNeedsAnAnswer()
    {
        QFETCH(QString, button);
        QFETCH(bool, taken);
        make("a.txt");
        const ModalAnswer ofDialog([&](QWidget* inWindow) {
            ModalAnswer::clicking(QStringLiteral("Save"))(inWindow);
            if (inWindow->isVisible())
                asDialog(inWindow)->reject();
        });
        const ModalAnswer ofQuestion([&](QWidget* inWindow) {
            QVERIFY(qobject_cast<QMessageBox*>(inWindow));
            ModalAnswer::clicking(button)(inWindow);
        });
        QCOMPARE(ask(path("a.txt"), QString()), taken ? path("a.txt") : QString());
    }

    void optionsCount()
    {
        make("a.txt");
        const ModalAnswer answer(ModalAnswer::clicking(QStringLiteral("Save")));
        QCOMPARE(JxFileDialog::getSaveFileName(nullptr, QString(), path("a.txt"), QString(), nullptr,
                                               QFileDialog::DontConfirmOverwrite),
                 path("a.txt"));
    }

    void theFilterIsChosenBothWays()
    {
        QString filter = QStringLiteral("B (*.b)");
        const ModalAnswer answer([&](QWidget* inWindow) {
            QCOMPARE(asDialog(inWindow)->selectedNameFilter(), QStringLiteral("B (*.b)"));
            asDialog(inWindow)->selectNameFilter(QStringLiteral("C (*.c)"));
            ModalAnswer::clicking(QStringLiteral("Save"))(inWindow);
        });
        JxFileDialog::getSaveFileName(nullptr, QString(), path("x"),
                                      QStringLiteral("A (*.a);;B (*.b);;C (*.c)"), &filter,
                                      QFileDialog::Options());
        QCOMPARE(filter, QStringLiteral("C (*.c)"));
    }

    void aCancelledDialogLeavesTheFilter()
    {
        QString filter = QStringLiteral("B (*.b)");
        const ModalAnswer answer([&](QWidget* inWindow) {
            asDialog(inWindow)->selectNameFilter(QStringLiteral("A (*.a)"));
            asDialog(inWindow)->reject();
        });
        JxFileDialog::getSaveFileName(nullptr, QString(), path("x"), QStringLiteral("A (*.a);;B (*.b)"),
                                      &filter, QFileDialog::Options());
        QCOMPARE(filter, QStringLiteral("B (*.b)"));
    }

    void aFolderIsShownWithoutAProposal_data()
    {
        QTest::addColumn<QString>("proposed");
        QTest::addColumn<QString>("folder");
        QTest::addColumn<QString>("name");
        QTest::newRow("folder") << "sub"
                                << "sub"
                                << "";
        QTest::newRow("missing folder") << "missing/deeper/a.txt"
                                        << ""
                                        << "a.txt";
        QTest::newRow("below a file") << "file/a.txt"
                                      << ""
                                      << "a.txt";
        QTest::newRow("4000 characters") << "missing/" + QString(4000, 'x') << "" << QString(4000, 'x');
    }
    void aFolderIsShownWithoutAProposal()
    {
        QFETCH(QString, proposed);
        QFETCH(QString, folder);
        QFETCH(QString, name);
        QVERIFY(QDir(mFolder->path()).mkdir(QStringLiteral("sub")));
        make("file");
        const ModalAnswer answer([&](QWidget* inWindow) {
            QCOMPARE(asDialog(inWindow)->directory(),
                     QDir(folder.isEmpty() ? mFolder->path() : path(folder)));
            QCOMPARE(inWindow->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->text(), name);
            asDialog(inWindow)->reject();
        });
        QCOMPARE(ask(path(proposed), QString()), QString());
    }

    void theDialogStandsAboveItsParent()
    {
        QWidget parent;
        const ModalAnswer answer([&](QWidget* inWindow) {
            QCOMPARE(inWindow->parentWidget(), &parent);
            asDialog(inWindow)->reject();
        });
        JxFileDialog::getSaveFileName(&parent, QString(), path("x"), QString(), nullptr,
                                      QFileDialog::Options());
        QVERIFY(answer.happened());
    }

    void theParentMayGoWhileTheDialogIsOnShow()
    {
        auto parent = std::make_unique<QWidget>();
        const ModalAnswer answer([&](QWidget*) { parent.reset(); });
        QCOMPARE(JxFileDialog::getSaveFileName(parent.get(), QString(), path("x"), QString(), nullptr,
                                               QFileDialog::Options()),
                 QString());
    }

    /// A class with a meta-object of its own would never get the system's dialog.
    void theDialogIsOneForTheSystem()
    {
        const JxFileDialog dialog(nullptr, QString(), QFileDialog::Options());
        QCOMPARE(dialog.metaObject(), &QFileDialog::staticMetaObject);
    }

private:
    static QFileDialog* asDialog(QWidget* inWindow) { return qobject_cast<QFileDialog*>(inWindow); }
    static QString ask(const QString& inPath, const QString& inFilter)
    {
        return JxFileDialog::getSaveFileName(nullptr, QStringLiteral("caption"), inPath, inFilter, nullptr,
                                             QFileDialog::Options());
    }
    QString path(const QString& inName) const { return mFolder->filePath(inName); }
    void make(const QString& inName) const
    {
        QFile file(path(inName));
        QVERIFY(file.open(QIODevice::WriteOnly));
    }

    std::unique_ptr<QTemporaryDir> mFolder;
};

KY_TEST_MAIN(TestJxFileDialog)

#include "tst_JxFileDialog.moc"
