#include <support/KyTest.h>

#include <jxbase/JxDialog.h>

#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <QWindow>

class tst_JxDialog final : public QObject
{
    Q_OBJECT

private slots:
    void dialogWithoutAnOwnerStandsAlone()
    {
        JxDialog dialog;
        QVERIFY(!dialog.owner());
        dialog.show();
        QVERIFY(dialog.isVisible());
        QVERIFY(!dialog.windowHandle()->transientParent());
        QVERIFY(!dialog.isModal());
    }

    void dialogStandsAboveItsOwnerWithoutBelongingToIt()
    {
        QWidget owner;
        owner.show();
        JxDialog dialog(&owner);
        QVERIFY(!dialog.parent());
        QCOMPARE(dialog.owner(), &owner);
        dialog.show();
        QCOMPARE(dialog.windowHandle()->transientParent(), owner.windowHandle());
    }

    void ownerIsTheWindowOfTheWidget()
    {
        QWidget owner;
        auto* inner = new QPushButton(&owner);
        const JxDialog dialog(inner);
        QCOMPARE(dialog.owner(), &owner);
    }

    void dialogStandsAboveItsOwnerAtEachShow()
    {
        QWidget owner;
        JxDialog dialog(&owner);
        dialog.show();
        QVERIFY(!dialog.windowHandle()->transientParent());
        dialog.hide();
        owner.show();
        dialog.setWindowFlags(dialog.windowFlags() | Qt::Tool);
        dialog.show();
        QCOMPARE(dialog.windowHandle()->transientParent(), owner.windowHandle());
    }

    void dialogOutlivesItsOwner()
    {
        auto owner = std::make_unique<QWidget>();
        owner->show();
        JxDialog dialog(owner.get());
        QSignalSpy rejected(&dialog, &QDialog::rejected);
        dialog.show();
        owner.reset();
        QVERIFY(!dialog.owner());
        QVERIFY(!dialog.isVisible());
        QCOMPARE(rejected.size(), 1);
        dialog.show();
        QVERIFY(dialog.isVisible());
        QVERIFY(!dialog.windowHandle()->transientParent());
    }

    void hiddenDialogIsNotRejectedWithItsOwner()
    {
        auto owner = std::make_unique<QWidget>();
        JxDialog dialog(owner.get());
        QSignalSpy finished(&dialog, &QDialog::finished);
        owner.reset();
        QCOMPARE(finished.size(), 0);
    }

    void dialogMayEndBeforeItsOwner()
    {
        QWidget owner;
        owner.show();
        auto dialog = std::make_unique<JxDialog>(&owner);
        dialog->show();
        dialog.reset();
        QVERIFY(owner.isVisible());
    }

    void dialogMayEndWhenItIsRejectedWithItsOwner()
    {
        auto owner = std::make_unique<QWidget>();
        owner->show();
        auto dialog = std::make_unique<JxDialog>(owner.get());
        dialog->show();
        connect(dialog.get(), &QDialog::finished, [&] { dialog.reset(); });
        owner.reset();
        QVERIFY(!dialog);
    }

    void firstPlaceIsTheMiddleOfTheOwner()
    {
        QWidget owner;
        owner.setGeometry(200, 150, 400, 300);
        owner.show();
        JxDialog dialog(&owner);
        dialog.resize(100, 80);
        dialog.show();
        const QPoint distance = dialog.frameGeometry().center() - owner.frameGeometry().center();
        QVERIFY2(distance.manhattanLength() <= 8, qPrintable(QDebug::toString(distance)));
    }

    void sizeThatWasNotSetFitsTheContents()
    {
        QWidget owner;
        owner.setGeometry(100, 100, 500, 400);
        owner.show();
        JxDialog dialog(&owner);
        auto* layout = new QVBoxLayout(&dialog);
        layout->addWidget(new QPushButton(QStringLiteral("A button of some width")));
        dialog.show();
        QCOMPARE(dialog.size(), dialog.sizeHint());
        QVERIFY(owner.frameGeometry().contains(dialog.frameGeometry()));
    }

    void movedDialogStaysWhereItIs()
    {
        QWidget owner;
        owner.setGeometry(200, 150, 400, 300);
        owner.show();
        JxDialog dialog(&owner);
        dialog.resize(100, 80);
        dialog.move(30, 40);
        dialog.show();
        QCOMPARE(dialog.pos(), QPoint(30, 40));
    }

    void dialogComesBackOntoTheScreen()
    {
        JxDialog dialog;
        dialog.resize(100, 80);
        dialog.move(100'000, 100'000);
        dialog.show();
        QVERIFY(dialog.screen()->availableGeometry().contains(dialog.pos()));
    }

    void dialogIsModalOnDemand()
    {
        QWidget owner;
        owner.show();
        JxDialog dialog(&owner);
        dialog.open();
        QCOMPARE(QApplication::activeModalWidget(), &dialog);
        dialog.accept();
        QVERIFY(!QApplication::activeModalWidget());
    }
};

KY_TEST_MAIN(tst_JxDialog)
#include "tst_JxDialog.moc"
