#include <support/KyTest.h>
#include <support/ModalAnswer.h>

#include <jxbase/JxMessageBox.h>

#include <QPushButton>
#include <QScreen>

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

    void warningAndCriticalShowABox_data()
    {
        QTest::addColumn<bool>("critical");
        QTest::newRow("warning") << false;
        QTest::newRow("critical") << true;
    }
    void warningAndCriticalShowABox()
    {
        QFETCH(bool, critical);
        const ModalAnswer answer([&](QWidget* inWindow) {
            auto* box = qobject_cast<JxMessageBox*>(inWindow);
            QVERIFY(box);
            QCOMPARE(box->icon(), critical ? QMessageBox::Critical : QMessageBox::Warning);
            QCOMPARE(box->windowTitle(), QStringLiteral("kytest"));
            QCOMPARE(box->text(), QStringLiteral("a <b>text</b>"));
            QCOMPARE(box->textFormat(), Qt::PlainText);
            QCOMPARE(box->informativeText(), QStringLiteral("more"));
            QCOMPARE(box->standardButtons(), QMessageBox::Yes | QMessageBox::No);
            QCOMPARE(box->defaultButton(), box->button(QMessageBox::No));
            QVERIFY(!box->parentWidget());
            ModalAnswer::clicking(QStringLiteral("Yes"))(inWindow);
        });
        QCOMPARE((critical ? &JxMessageBox::critical : &JxMessageBox::warning)(
                     QStringLiteral("a <b>text</b>"), QMessageBox::Yes | QMessageBox::No, QMessageBox::No,
                     JxMessageBox::InformativeText(QStringLiteral("more"))),
                 QMessageBox::Yes);
    }

    void warningNeedsNoDefaultButton()
    {
        const ModalAnswer answer([&](QWidget* inWindow) {
            const auto* box = qobject_cast<JxMessageBox*>(inWindow);
            QVERIFY(!box->defaultButton());
            QVERIFY(box->informativeText().isEmpty());
            QVERIFY(QTest::qWaitForWindowActive(inWindow));
            QTest::keyClick(inWindow, Qt::Key_Escape);
        });
        QCOMPARE(JxMessageBox::warning(QStringLiteral("text"), QMessageBox::Ok, QMessageBox::NoButton,
                                       JxMessageBox::InformativeText()),
                 QMessageBox::Ok);
    }

    void longTextsLeaveTheBoxUsable_data()
    {
        QTest::addColumn<QString>("text");
        QTest::addColumn<int>("shown");
        QTest::addColumn<int>("details");
        QTest::newRow("1000 characters")
            << QString(200, 'x').append(QString(" word").repeated(160)) << 1000 << 0;
        QTest::newRow("one more") << QString("word ").repeated(200) + '!' << 1001 << 1001;
        QTest::newRow("one word") << QString(4000, 'x') << 1001 << 4000;
        QTest::newRow("4 million") << QString(4000000, 'x') << 1001 << 100001;
        QTest::newRow("lines") << QString("line\n").repeated(10000) << 1000 << 50000;
    }
    void longTextsLeaveTheBoxUsable()
    {
        QFETCH(QString, text);
        QFETCH(int, shown);
        QFETCH(int, details);
        QSize size;
        const ModalAnswer answer([&](QWidget* inWindow) {
            const auto* box = qobject_cast<JxMessageBox*>(inWindow);
            QCOMPARE(box->text().size(), shown);
            const QString line = QString(text).replace('\n', ' ').trimmed();
            QVERIFY(line.startsWith(box->text().left(400)) && line.endsWith(box->text().right(400)));
            QCOMPARE(box->detailedText().size(), details);
            size = inWindow->size();
            ModalAnswer::clicking(QStringLiteral("OK"))(inWindow);
        });
        JxMessageBox::warning(text, QMessageBox::Ok, QMessageBox::NoButton, JxMessageBox::InformativeText());
        const QSize screen = QGuiApplication::primaryScreen()->size();
        QVERIFY2(size.width() <= screen.width() && size.height() <= screen.height(),
                 qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height())));
    }

    void warningStandsAboveTheWindowInUse()
    {
        QWidget window;
        window.show();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        const ModalAnswer answer([&](QWidget* inWindow) {
            QCOMPARE(inWindow->parentWidget(), &window);
            ModalAnswer::clicking(QStringLiteral("OK"))(inWindow);
        });
        warn();
    }

    /// The new box can be used, and survives the modal window below it.
    void warningComesWhileAModalWindowIsOpen_data()
    {
        QTest::addColumn<bool>("hasMainWindow");
        QTest::newRow("with a main window") << true;
        QTest::newRow("without one") << false;
    }
    void warningComesWhileAModalWindowIsOpen()
    {
        QFETCH(bool, hasMainWindow);
        QWidget window;
        if (hasMainWindow)
            window.show();
        auto dialog = std::make_unique<QDialog>(hasMainWindow ? &window : nullptr);
        dialog->setModal(true);
        QMessageBox::StandardButton clicked = QMessageBox::NoButton;
        const ModalAnswer ofDialog([&](QWidget*) { clicked = warn(); });
        const ModalAnswer ofBox([&](QWidget* inWindow) {
            QVERIFY(qobject_cast<JxMessageBox*>(inWindow));
            if (hasMainWindow) {
                QCOMPARE(inWindow->parentWidget(), &window);
                dialog.reset();
                QVERIFY(inWindow->isVisible());
            }
            ModalAnswer::clicking(QStringLiteral("OK"))(inWindow);
        });
        dialog->show();
        QTRY_COMPARE(clicked, QMessageBox::Ok);
    }

    void warningEndsWithTheWindowBelow()
    {
        auto window = std::make_unique<QWidget>();
        window->show();
        QVERIFY(QTest::qWaitForWindowActive(window.get()));
        const ModalAnswer answer([&](QWidget*) { window.reset(); });
        QCOMPARE(warn(), QMessageBox::NoButton);
    }

private:
    static QMessageBox::StandardButton warn()
    {
        return JxMessageBox::warning(QStringLiteral("text"), QMessageBox::Ok, QMessageBox::NoButton,
                                     JxMessageBox::InformativeText());
    }
};

KY_TEST_MAIN(TestJxMessageBox)

#include "tst_JxMessageBox.moc"
