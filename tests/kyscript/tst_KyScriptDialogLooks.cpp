// The dialog of scripts for people: palettes, long and right-to-left texts, scale factors, keyboard, and what
// a screen reader is told.

#include "DialogStage.h"

#include <QAccessible>
#include <QProcess>
#include <QScreen>
#include <QScrollBar>

#include <cmath>
#include <map>
#include <optional>

namespace {

constexpr const char* Everything =
    "{ title: 'Report', message: 'What was found', fieldText: 'Some text', showLineEdit: true, "
    "lineEditEnabled: true,"
    "  lineEditPlaceholder: 'A word', buttons: ['&Send', { text: 'Later', toolTip: 'Not now',"
    "  menuItems: [{ text: 'Today' }, { text: 'Never' }] }] }";

QAccessibleInterface* accessible(QObject* inObject)
{
    return QAccessible::queryAccessibleInterface(inObject);
}

QString nameOf(QObject* inObject)
{
    return accessible(inObject)->text(QAccessible::Name);
}

double luminance(QRgb inColor)
{
    const auto part = [](int value) {
        const double v = value / 255.0;
        return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * part(qRed(inColor)) + 0.7152 * part(qGreen(inColor)) + 0.0722 * part(qBlue(inColor));
}

/// The contrast of the strongest mark of a widget to what most of it shows, as the accessibility guidelines
/// for the web measure it: 1 to 21.
double contrastOf(QWidget& ioWidget)
{
    const QImage image = ioWidget.window()->grab().toImage();
    const double ratio = image.devicePixelRatio();
    const QRect place(ioWidget.mapTo(ioWidget.window(), QPoint(0, 0)) * ratio, ioWidget.size() * ratio);
    std::map<QRgb, int> counts;
    const QRect inside = place.adjusted(4, 4, -4, -4);
    for (int y = inside.top(); y <= inside.bottom(); ++y) {
        for (int x = inside.left(); x <= inside.right(); ++x)
            ++counts[image.pixel(x, y)];
    }
    const auto most = std::max_element(counts.begin(), counts.end(),
                                       [](const auto& a, const auto& b) { return a.second < b.second; });
    double strongest = 1;
    for (const auto& [color, count] : counts) {
        const double a = luminance(color) + 0.05, b = luminance(most->first) + 0.05;
        strongest = std::max(strongest, std::max(a, b) / std::min(a, b));
    }
    return strongest;
}

/// Where the marks of a label lie, 0 at its left and 1 at its right end.
double middleOfMarks(QLabel& ioLabel)
{
    const QImage image = ioLabel.grab().toImage();
    const QRgb background = image.pixel(image.width() / 2, image.height() - 1);
    double sum = 0;
    int count = 0;
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x) {
            if (image.pixel(x, y) != background) {
                sum += x;
                ++count;
            }
        }
    }
    return count == 0 ? 0.5 : sum / count / image.width();
}

QPalette darkPalette()
{
    QPalette dark(QColor(45, 47, 50));
    dark.setColor(QPalette::Base, QColor(30, 31, 33));
    dark.setColor(QPalette::Text, QColor(230, 230, 230));
    dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
    dark.setColor(QPalette::ButtonText, QColor(230, 230, 230));
    return dark;
}

} // namespace

class tst_KyScriptDialogLooks : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void textsStandOut_data();
    void textsStandOut();
    void progressStandsOut_data();
    void progressStandsOut();
    void rightToLeftMessageStandsRight_data();
    void rightToLeftMessageStandsRight();
    void directionFollowsTheMessage();
    void rightToLeftApplicationIsMirrored();
    void everythingIsInsideTheWindow_data();
    void everythingIsInsideTheWindow();
    void statusMakesRoom();
    void longStatusEndsInAnEllipsis();
    void scalesLookRight_data();
    void scalesLookRight();
    void looksRightAtThisScale();

    void keyboardGoesThroughTheParts();
    void keyboardStartsWhereThereIsSomethingToDo_data();
    void keyboardStartsWhereThereIsSomethingToDo();
    void tabLeavesTheEditor();
    void readOnlyTextIsSelectedByKeyboard();

    void dialogHasANameForReaders_data();
    void dialogHasANameForReaders();
    void rolesAndNamesAreTold();
    void fieldsAreNamedAfterTheirMessage_data();
    void fieldsAreNamedAfterTheirMessage();
    void namesFollowChanges();
    void editableIsTold();
    void statusIsTold();
    void richTextIsToldPlain();
    void readerWorksTheDialog();
    void everythingToFocusHasAName();

private:
    std::optional<DialogStage> s;
    std::unique_ptr<ContractWatch> mContracts;
};

void tst_KyScriptDialogLooks::init()
{
    mContracts = std::make_unique<ContractWatch>();
    s.emplace();
}

void tst_KyScriptDialogLooks::cleanup()
{
    const QString broken = mContracts->verify();
    s.reset();
    mContracts.reset();
    QApplication::setPalette(QPalette());
    QGuiApplication::setLayoutDirection(Qt::LeftToRight);
    QVERIFY2(broken.isEmpty(), qPrintable(broken));
}

void tst_KyScriptDialogLooks::textsStandOut_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::addColumn<QString>("field");
    for (const bool isDark : {false, true}) {
        const char* name = isDark ? "dark" : "light";
        QTest::addRow("%s, read only", name) << isDark << "editable: false";
        QTest::addRow("%s, editable", name) << isDark << "editable: true";
        QTest::addRow("%s, browser", name) << isDark << "useTextBrowser: true";
    }
}

void tst_KyScriptDialogLooks::textsStandOut()
{
    QFETCH(bool, isDark);
    QFETCH(QString, field);
    if (isDark)
        QApplication::setPalette(darkPalette());
    KyScriptDialog& dialog = s->makeAndShow(
        "{ message: 'Message', fieldText: 'Text of the field', showLineEdit: true, lineEditEnabled: true,"
        " buttons: ['Send'], " +
        field + " }");
    s->run("d.setLineEditText('Words'); d.setStatus(true); d.setStatus(false, 'Done')");
    QTRY_VERIFY(s->indicator()->isVisible());
    QTest::qWait(20);
    QCOMPARE(luminance(dialog.palette().color(QPalette::Window).rgb()) < 0.2, isDark);
    QWidget* text = field.startsWith("use") ? static_cast<QWidget*>(s->browser()) : s->edit();
    for (QWidget* part :
         std::initializer_list<QWidget*>{s->label(), text, s->lineEdit(), s->button(0), s->indicator()})
        QVERIFY2(contrastOf(*part) >= 4.5,
                 qPrintable(part->objectName() + QString::number(contrastOf(*part))));
}

void tst_KyScriptDialogLooks::progressStandsOut_data()
{
    QTest::addColumn<bool>("isDark");
    QTest::newRow("light") << false;
    QTest::newRow("dark") << true;
}

void tst_KyScriptDialogLooks::progressStandsOut()
{
    QFETCH(bool, isDark);
    if (isDark)
        QApplication::setPalette(darkPalette());
    s->makeAndShow();
    s->run("d.setStatus(true, '')");
    auto* front = s->indicator()->findChild<QLabel*>("statusFront");
    QTRY_VERIFY(front->width() > 10);
    QVERIFY2(contrastOf(*front) >= 4.5, qPrintable(QString::number(contrastOf(*front))));
}

void tst_KyScriptDialogLooks::rightToLeftMessageStandsRight_data()
{
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("isRight");
    QTest::newRow("Hebrew") << QString::fromUtf8("שלום!") << true;
    QTest::newRow("Arabic") << QString::fromUtf8("تم الحفظ.") << true;
    QTest::newRow("Hebrew, rich") << QString::fromUtf8("<b>שלום</b>!") << true;
    QTest::newRow("English") << "Saved!" << false;
    QTest::newRow("English first") << QString::fromUtf8("Saved: שלום") << false;
}

void tst_KyScriptDialogLooks::rightToLeftMessageStandsRight()
{
    QFETCH(QString, message);
    QFETCH(bool, isRight);
    s->makeAndShow("{ initialSize: [500, 200], message: '" + message + "' }");
    const double middle = middleOfMarks(*s->label());
    QVERIFY2(isRight ? middle > 0.6 : middle < 0.4, qPrintable(QString::number(middle)));
}

void tst_KyScriptDialogLooks::directionFollowsTheMessage()
{
    s->makeAndShow();
    s->run(QString::fromUtf8("d.setMessage('שלום')"));
    QCOMPARE(s->label()->layoutDirection(), Qt::RightToLeft);
    s->run("d.setMessage('Saved')");
    QCOMPARE(s->label()->layoutDirection(), Qt::LeftToRight);
    s->run("d.setMessage('')");
    QCOMPARE(s->label()->layoutDirection(), QGuiApplication::layoutDirection());
}

void tst_KyScriptDialogLooks::rightToLeftApplicationIsMirrored()
{
    QGuiApplication::setLayoutDirection(Qt::RightToLeft);
    KyScriptDialog& dialog = s->makeAndShow("{ initialSize: [500, 200], message: 'Saved.', buttons: ['a'] }");
    QVERIFY(s->button(0)->mapTo(&dialog, QPoint(0, 0)).x() < dialog.width() / 2);
    QVERIFY(middleOfMarks(*s->label()) < 0.4);
    s->click(0);
    QCOMPARE(s->answers(), QStringList("1 0 -1 0 false"));
}

void tst_KyScriptDialogLooks::everythingIsInsideTheWindow_data()
{
    QTest::addColumn<QString>("config");
    QTest::newRow("everything") << Everything;
    QTest::newRow("long texts")
        << "{ title: new Array(60).join('title '), message: new Array(200).join('some words '),"
           " fieldText: new Array(2000).join('some words '), showLineEdit: true,"
           " lineEditPlaceholder: new Array(60).join('placeholder '),"
           " buttons: ['A button with a long text', 'Another one'] }";
    QTest::newRow("too small a size") << "{ message: new Array(40).join('some words '), fieldText: 'x',"
                                         " showLineEdit: true, initialSize: [20, 20] }";
    QTest::newRow("long words")
        << "{ message: new Array(500).join('x'), fieldText: new Array(500).join('y') }";
}

void tst_KyScriptDialogLooks::everythingIsInsideTheWindow()
{
    QFETCH(QString, config);
    KyScriptDialog& dialog = s->makeAndShow(config);
    s->run("d.setStatus(true, new Array(100).join('status '))");
    QTest::qWait(20);
    QVERIFY(dialog.screen()->availableGeometry().contains(dialog.geometry()));
    for (QWidget* part : dialog.findChildren<QWidget*>()) {
        if (part->isVisible() && part->parentWidget() == &dialog)
            QVERIFY2(dialog.rect().contains(part->geometry()), qPrintable(part->objectName()));
    }
    QVERIFY(dialog.rect().contains(QRect(s->button(0)->mapTo(&dialog, QPoint()), s->button(0)->size())));
}

void tst_KyScriptDialogLooks::statusMakesRoom()
{
    KyScriptDialog& dialog = s->makeAndShow("{ initialSize: [200, 120] }");
    s->run("d.setStatus(true, '1')");
    QTest::qWait(20);
    const int width = dialog.width();
    s->run("d.setStatus(true, '12')");
    QCOMPARE(dialog.width(), width);
    s->run("d.setStatus(true, 'Image 10 of 200')");
    QTest::qWait(20);
    QVERIFY(dialog.width() > width);
    const auto* back = s->indicator()->findChild<QLabel*>("statusBack");
    QVERIFY(back->width() >= back->sizeHint().width());
    const int wider = dialog.width();
    s->run("d.setStatus(true, 'Image 100 of 200'); d.setStatus(false, 'x')");
    QCOMPARE(dialog.width(), wider);
}

void tst_KyScriptDialogLooks::longStatusEndsInAnEllipsis()
{
    KyScriptDialog& dialog = s->makeAndShow("{ initialSize: [300, 120] }");
    s->run("d.setStatus(true, new Array(100).join('status '))");
    QTest::qWait(20);
    QVERIFY(dialog.width() <= dialog.screen()->availableGeometry().width() / 2);
    auto* back = s->indicator()->findChild<QLabel*>("statusBack");
    QVERIFY(back->width() < back->sizeHint().width());
    QVERIFY(s->indicator()->toolTip().startsWith("status status"));
    const QImage cut = back->grab().toImage();
    const int room = back->contentsRect().width();
    back->setText(back->fontMetrics().elidedText(back->text(), Qt::ElideRight, room));
    QVERIFY(back->text().endsWith(QChar(0x2026)));
    QCOMPARE(cut, back->grab().toImage());
    s->run("d.setStatus(false, new Array(100).join('done '))");
    QTest::qWait(20);
    QVERIFY(dialog.width() <= dialog.screen()->availableGeometry().width() / 2);
}

void tst_KyScriptDialogLooks::scalesLookRight_data()
{
    QTest::addColumn<QString>("factor");
    for (const char* factor : {"1", "1.25", "1.5", "2", "3"})
        QTest::newRow(factor) << factor;
}

/// A process of its own, since a factor holds from the start on.
void tst_KyScriptDialogLooks::scalesLookRight()
{
    QFETCH(QString, factor);
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("QT_SCALE_FACTOR", factor);
    process.setProcessEnvironment(environment);
    process.setProcessChannelMode(QProcess::MergedChannels);
    process.start(QCoreApplication::applicationFilePath(), {"looksRightAtThisScale"});
    QVERIFY(process.waitForFinished(60'000));
    const QByteArray output = process.readAll();
    QVERIFY2(process.exitCode() == 0 && output.contains("scale " + factor.toLatin1() + ' '),
             output.constData());
}

void tst_KyScriptDialogLooks::looksRightAtThisScale()
{
    const double ratio = qApp->devicePixelRatio();
    KyScriptDialog& dialog = s->makeAndShow(Everything);
    s->run("d.setStatus(true, 'Working')");
    QTest::qWait(20);
    qInfo("scale %g ", ratio);
    const QScreen* screen = dialog.screen();
    QVERIFY(screen->availableGeometry().contains(dialog.geometry()));
    QCOMPARE(dialog.grab().devicePixelRatio(), ratio);
    QVERIFY(contrastOf(*s->label()) >= 4.5);

    const auto* front = s->indicator()->findChild<QLabel*>("statusFront");
    const QPixmap icon = front->pixmap(Qt::ReturnByValue);
    const int extent = QFontMetrics(s->indicator()->font()).height() + 6;
    QCOMPARE(icon.size(), (QSizeF(extent, extent) * ratio).toSize());
    QVERIFY(std::abs(icon.deviceIndependentSize().width() - extent) < 1);
    QVERIFY(front->height() >= extent);
    s->click(0);
    QCOMPARE(s->answers().size(), 1);
}

void tst_KyScriptDialogLooks::keyboardGoesThroughTheParts()
{
    KyScriptDialog& dialog = s->makeAndShow(Everything);
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QList<QWidget*> visited;
    for (int i = 0; i < 5; ++i) {
        visited.append(dialog.focusWidget());
        QTest::keyClick(dialog.focusWidget(), Qt::Key_Tab);
    }
    QCOMPARE(visited, (QList<QWidget*>{s->lineEdit(), s->button(0), s->button(1), s->edit(), s->lineEdit()}));
}

void tst_KyScriptDialogLooks::keyboardStartsWhereThereIsSomethingToDo_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("part");
    QTest::newRow("message") << "{ buttons: ['a', 'b'] }"
                             << "a";
    QTest::newRow("prompt") << "{ showLineEdit: true, lineEditEnabled: true }"
                            << "KyScriptDialog_lineEdit";
    QTest::newRow("disabled prompt") << "{ showLineEdit: true }"
                                     << "OK";
    QTest::newRow("editor") << "{ fieldText: '', editable: true }"
                            << "KyScriptDialog_edit";
    QTest::newRow("viewer") << "{ fieldText: '' }"
                            << "KyScriptDialog_edit";
    QTest::newRow("browser") << "{ fieldText: '', useTextBrowser: true }"
                             << "KyScriptDialog_textBrowser";
    QTest::newRow("viewer and prompt") << "{ fieldText: '', showLineEdit: true, lineEditEnabled: true }"
                                       << "KyScriptDialog_lineEdit";
}

void tst_KyScriptDialogLooks::keyboardStartsWhereThereIsSomethingToDo()
{
    QFETCH(QString, config);
    QFETCH(QString, part);
    for (int round = 0; round < 2; ++round) {
        KyScriptDialog& dialog = round == 0 ? s->makeAndShow(config) : s->show();
        const QWidget* focus = dialog.focusWidget();
        QVERIFY(focus);
        const auto* button = qobject_cast<const QPushButton*>(focus);
        QCOMPARE(button ? button->text() : focus->objectName(), part);
        QTest::keyClick(&dialog, Qt::Key_Tab);
        dialog.close();
    }
}

void tst_KyScriptDialogLooks::tabLeavesTheEditor()
{
    KyScriptDialog& dialog = s->makeAndShow("{ fieldText: '', editable: true }");
    QVERIFY(QTest::qWaitForWindowActive(&dialog));
    QTest::keyClick(s->edit(), Qt::Key_Tab);
    QCOMPARE(dialog.focusWidget(), s->button(0));
    QCOMPARE(s->run("d.fieldText()"), QString());
}

void tst_KyScriptDialogLooks::readOnlyTextIsSelectedByKeyboard()
{
    s->makeAndShow("{ fieldText: 'some text' }");
    QTest::keySequence(s->edit(), QKeySequence::SelectAll);
    QCOMPARE(s->edit()->textCursor().selectedText(), QStringLiteral("some text"));
    QVERIFY(s->edit()->isReadOnly());
}

void tst_KyScriptDialogLooks::dialogHasANameForReaders_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("description");
    QTest::newRow("title and message") << "{ title: 'T', message: 'M' }"
                                       << "T"
                                       << "M";
    QTest::newRow("title") << "{ title: 'T' }"
                           << "T"
                           << "";
    QTest::newRow("message") << "{ message: 'M' }"
                             << "M"
                             << "";
    QTest::newRow("nothing") << "{}" << QGuiApplication::applicationDisplayName() << "";
}

void tst_KyScriptDialogLooks::dialogHasANameForReaders()
{
    QFETCH(QString, config);
    QFETCH(QString, name);
    QFETCH(QString, description);
    KyScriptDialog& dialog = s->makeAndShow(config);
    QCOMPARE(accessible(&dialog)->role(), QAccessible::Dialog);
    QCOMPARE(nameOf(&dialog), name);
    QCOMPARE(accessible(&dialog)->text(QAccessible::Description), description);
    QVERIFY(!name.isEmpty());
}

void tst_KyScriptDialogLooks::rolesAndNamesAreTold()
{
    s->makeAndShow(Everything);
    const auto check = [](QObject* part, QAccessible::Role role, const QString& name) {
        QCOMPARE(accessible(part)->role(), role);
        QCOMPARE(nameOf(part), name);
    };
    check(s->label(), QAccessible::StaticText, "What was found");
    check(s->edit(), QAccessible::EditableText, "Report");
    check(s->lineEdit(), QAccessible::EditableText, "What was found");
    check(s->button(0), QAccessible::Button, "Send");
    check(s->button(1), QAccessible::ButtonMenu, "Later");
    QVERIFY(accessible(s->button(1))->state().hasPopup);
    QCOMPARE(accessible(s->button(1))->text(QAccessible::Description), QStringLiteral("Not now"));
    check(s->button(1)->menu(), QAccessible::PopupMenu, QString());
    QCOMPARE(accessible(s->button(1)->menu())->childCount(), 2);
    QCOMPARE(accessible(s->button(1)->menu())->child(0)->text(QAccessible::Name), QStringLiteral("Today"));
    QCOMPARE(accessible(s->button(1)->menu())->child(0)->role(), QAccessible::MenuItem);
    s->makeAndShow("{ fieldText: 'x', useTextBrowser: true, message: 'M' }");
    QCOMPARE(nameOf(s->browser()), QStringLiteral("M"));
    QVERIFY(accessible(s->browser())->textInterface());
}

void tst_KyScriptDialogLooks::fieldsAreNamedAfterTheirMessage_data()
{
    QTest::addColumn<QString>("config");
    QTest::addColumn<QString>("field");
    QTest::addColumn<QString>("line");
    QTest::newRow("title and message") << "title: 'T', message: 'M'"
                                       << "T"
                                       << "M";
    QTest::newRow("title") << "title: 'T'"
                           << "T"
                           << "T";
    QTest::newRow("message") << "message: 'M'"
                             << "M"
                             << "M";
    QTest::newRow("nothing") << "context: 'x'"
                             << "Text"
                             << "Input";
}

void tst_KyScriptDialogLooks::fieldsAreNamedAfterTheirMessage()
{
    QFETCH(QString, config);
    QFETCH(QString, field);
    QFETCH(QString, line);
    s->makeAndShow("{ fieldText: '', showLineEdit: true, " + config + " }");
    QCOMPARE(nameOf(s->edit()), field);
    QCOMPARE(nameOf(s->lineEdit()), line);
}

void tst_KyScriptDialogLooks::namesFollowChanges()
{
    KyScriptDialog& dialog = s->makeAndShow("{ title: 'T', message: 'M', showLineEdit: true }");
    s->run("d.setTitle('T2'); d.setMessage('M2')");
    QCOMPARE(nameOf(&dialog), QStringLiteral("T2"));
    QCOMPARE(accessible(&dialog)->text(QAccessible::Description), QStringLiteral("M2"));
    QCOMPARE(nameOf(s->lineEdit()), QStringLiteral("M2"));
}

void tst_KyScriptDialogLooks::editableIsTold()
{
    s->makeAndShow("{ fieldText: '' }");
    QVERIFY(accessible(s->edit())->state().readOnly);
    s->run("d.setEditable(true)");
    QVERIFY(!accessible(s->edit())->state().readOnly);
    QVERIFY(accessible(s->edit())->state().editable);
}

void tst_KyScriptDialogLooks::statusIsTold()
{
    s->makeAndShow();
    QVERIFY(accessible(s->indicator())->state().invisible);
    s->run("d.setStatus(true, 'Working')");
    QCOMPARE(accessible(s->indicator())->role(), QAccessible::StatusBar);
    QCOMPARE(nameOf(s->indicator()), QStringLiteral("Working"));
    QVERIFY(accessible(s->indicator())->state().busy);
    QCOMPARE(accessible(s->indicator())->childCount(), 0);
    QVERIFY(!accessible(s->indicator())->child(0));
    s->run("d.setStatus(false, 'Done')");
    QCOMPARE(nameOf(s->indicator()), QStringLiteral("Done"));
    QVERIFY(!accessible(s->indicator())->state().busy);
}

void tst_KyScriptDialogLooks::richTextIsToldPlain()
{
    KyScriptDialog& dialog = s->makeAndShow("{ message: '<b>Saved</b> &amp; sent' }");
    QCOMPARE(nameOf(&dialog), QStringLiteral("Saved & sent"));
    s->run("d.setStatus(true, '<i>Working</i>')");
    QCOMPARE(nameOf(s->indicator()), QStringLiteral("Working"));
}

void tst_KyScriptDialogLooks::readerWorksTheDialog()
{
    s->makeAndShow(Everything);
    auto* text = accessible(s->lineEdit())->editableTextInterface();
    QVERIFY(text);
    text->insertText(0, "spoken");
    QCOMPARE(s->run("d.lineEditText()"), QStringLiteral("spoken"));
    auto* action = accessible(s->button(0))->actionInterface();
    QVERIFY(action->actionNames().contains(QAccessibleActionInterface::pressAction()));
    action->doAction(QAccessibleActionInterface::pressAction());
    QTRY_COMPARE(s->answers(), QStringList("1 0 -1 0 false"));
}

void tst_KyScriptDialogLooks::everythingToFocusHasAName()
{
    for (const char* config :
         {"{}", Everything, "{ fieldText: '', showLineEdit: true, lineEditEnabled: true }",
          "{ fieldText: '', useTextBrowser: true }"})
    {
        const KyScriptDialog& dialog = s->makeAndShow(config);
        for (QWidget* part : dialog.findChildren<QWidget*>()) {
            if (part->isVisible() && part->focusPolicy() & Qt::TabFocus)
                QVERIFY2(!nameOf(part).isEmpty(), qPrintable(part->objectName()));
        }
    }
}

KY_TEST_MAIN(tst_KyScriptDialogLooks)
#include "tst_KyScriptDialogLooks.moc"
