#include "JxMessageBox.h"

#include <QApplication>

namespace {

/// The outermost window below the one in use. A modal window itself would be a bad owner: it may close, and
/// the box with it.
QWidget* ownerOfBox()
{
    QWidget* owner = QApplication::activeModalWidget();
    if (!owner)
        owner = QApplication::activeWindow();
    while (owner && owner->parentWidget())
        owner = owner->parentWidget();
    return owner;
}

/// A box stays smaller than the screen, and is laid out in no time, with texts up to these lengths.
constexpr qsizetype sLongestText = 1000;
constexpr qsizetype sLongestDetails = 100000;

/// \a inText without its middle when it is longer than \a inLength.
QString shortened(const QString& inText, qsizetype inLength)
{
    if (inText.size() <= inLength)
        return inText;
    return inText.left(inLength / 2) + QChar(0x2026) + inText.right(inLength / 2);
}

} // namespace

JxMessageBox::JxMessageBox(QWidget* inParent, bool inStaysOnTop)
    : QMessageBox(inParent)
{
    setWindowFlag(Qt::WindowStaysOnTopHint, inStaysOnTop);
    // A widget tells of its end before it deletes its children, of which the box must not be one then.
    if (inParent)
        connect(inParent, &QObject::destroyed, this, &JxMessageBox::leaveParent);
}

int JxMessageBox::exec()
{
    setWindowModality(Qt::ApplicationModal);
    return QMessageBox::exec();
}

void JxMessageBox::leaveParent()
{
    setParent(nullptr, windowFlags());
    reject();
}

QMessageBox::StandardButton JxMessageBox::warning(const QString& inText, StandardButtons inButtons,
                                                  StandardButton inDefaultButton,
                                                  const InformativeText& inInformativeText)
{
    return ask(Warning, inText, inButtons, inDefaultButton, inInformativeText);
}

QMessageBox::StandardButton JxMessageBox::critical(const QString& inText, StandardButtons inButtons,
                                                   StandardButton inDefaultButton,
                                                   const InformativeText& inInformativeText)
{
    return ask(Critical, inText, inButtons, inDefaultButton, inInformativeText);
}

QMessageBox::StandardButton JxMessageBox::ask(Icon inIcon, const QString& inText, StandardButtons inButtons,
                                              StandardButton inDefaultButton,
                                              const InformativeText& inInformativeText)
{
    if (!qobject_cast<QApplication*>(QCoreApplication::instance()))
        return NoButton;

    JxMessageBox box(ownerOfBox(), false);
    box.setIcon(inIcon);
    box.setWindowTitle(QCoreApplication::applicationName());
    box.setTextFormat(Qt::PlainText);
    if (inText.size() <= sLongestText) {
        box.setText(inText);
    } else {
        box.setText(shortened(inText, sLongestText).simplified());
        box.setDetailedText(shortened(inText, sLongestDetails));
    }
    box.setInformativeText(inInformativeText.text());
    box.setStandardButtons(inButtons);
    box.setDefaultButton(inDefaultButton);
    box.exec();
    return box.standardButton(box.clickedButton());
}
