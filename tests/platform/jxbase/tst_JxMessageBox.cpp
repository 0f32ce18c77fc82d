#include <support/KyTest.h>
#include <support/ModalAnswer.h>

#include <jxbase/JxMessageBox.h>

#include <QPushButton>

class TestJxMessageBox final : public QObject
{
    Q_OBJECT

private slots:
    void theClickedStandardButtonIsTheResult()
    {
        JxMessageBox box(nullptr, false);
        box.setStandardButtons(QMessageBox::Ok | QMessageBox::Cancel);
        const ModalAnswer answer(ModalAnswer::clicking(QStringLiteral("Cancel")));
        QCOMPARE(box.exec(), int(QMessageBox::Cancel));
        QVERIFY(box.clickedButton() == box.button(QMessageBox::Cancel));
    }

    void anOwnButtonIsTold()
    {
        JxMessageBox box(nullptr, false);
        box.addButton(QStringLiteral("Left"), QMessageBox::ActionRole);
        const QPushButton* right = box.addButton(QStringLiteral("Right"), QMessageBox::ActionRole);
        const ModalAnswer answer(ModalAnswer::clicking(QStringLiteral("Right")));
        box.exec();
        QVERIFY(box.clickedButton() == right);
    }

    void theParentIsKept()
    {
        QWidget parent;
        const JxMessageBox box(&parent, false);
        QVERIFY(box.parentWidget() == &parent);
        QVERIFY(box.isWindow());
    }

    void theApplicationIsBlocked()
    {
        QWidget parent;
        JxMessageBox box(&parent, false);
        box.setWindowModality(Qt::NonModal);
        Qt::WindowModality modality = Qt::NonModal;
        const ModalAnswer answer([&](QWidget* inWindow) {
            modality = inWindow->windowModality();
            ModalAnswer::clicking(QStringLiteral("OK"))(inWindow);
        });
        box.exec();
        QCOMPARE(modality, Qt::ApplicationModal);
    }

    void theBoxStaysOnTopOnDemand_data()
    {
        QTest::addColumn<bool>("onTop");
        QTest::newRow("usual") << false;
        QTest::newRow("on top") << true;
    }
    void theBoxStaysOnTopOnDemand()
    {
        QFETCH(bool, onTop);
        const JxMessageBox box(nullptr, onTop);
        QCOMPARE(box.windowFlags().testFlag(Qt::WindowStaysOnTopHint), onTop);
        QVERIFY(box.windowFlags().testFlag(Qt::Dialog));
    }

    void acceptFromAnEventClosesTheBox()
    {
        JxMessageBox box(nullptr, false);
        const ModalAnswer answer([&](QWidget*) { box.accept(); });
        QCOMPARE(box.exec(), int(QDialog::Accepted));
        QVERIFY(!box.clickedButton());
    }

    void theParentMayGoWhileTheBoxIsOnShow_data()
    {
        QTest::addColumn<int>("depth");
        QTest::newRow("parent") << 0;
        QTest::newRow("its parent") << 1;
    }
    void theParentMayGoWhileTheBoxIsOnShow()
    {
        QFETCH(int, depth);
        auto* outer = new QWidget;
        auto* inner = new QWidget(outer);
        outer->show();
        JxMessageBox box(depth == 0 ? outer : inner, false);
        const ModalAnswer answer([&](QWidget*) { delete outer; });
        QCOMPARE(box.exec(), int(QMessageBox::NoButton));
        QVERIFY(!box.parentWidget());
        QVERIFY(!box.isVisible());
        QVERIFY(!box.clickedButton());
    }

    void theParentMayGoBeforeTheBoxIsShown()
    {
        auto parent = std::make_unique<QWidget>();
        JxMessageBox box(parent.get(), false);
        parent.reset();
        const ModalAnswer answer(ModalAnswer::clicking(QStringLiteral("OK")));
        QCOMPARE(box.exec(), int(QMessageBox::Ok));
    }

    void aBoxOnTheHeapOutlivesItsParentToo()
    {
        auto parent = std::make_unique<QWidget>();
        const auto box = std::make_unique<JxMessageBox>(parent.get(), false);
        parent.reset();
        QVERIFY(!box->parentWidget());
    }
};

KY_TEST_MAIN(TestJxMessageBox)

#include "tst_JxMessageBox.moc"
