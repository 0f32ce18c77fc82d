#include "KyScriptMessage.h"

#include "KyScriptLog.h"
#include "KyScriptTexts.h"
#include "KyScriptWait.h"

#include <jxbase/JxMessageBox.h>
#include <kybase/KyMonitorManager.h>

#include <QtWidgets/QApplication>
#include <QtWidgets/QPushButton>

#include <algorithm>
#include <vector>

namespace {

/// The open boxes of show(), the innermost last.
std::vector<JxMessageBox*> sMessageBoxes;

/// Keeps a box on the stack of open ones. Boxes need not close in their order.
class OpenBox
{
public:
    explicit OpenBox(JxMessageBox* inBox)
        : mBox(inBox)
    {
        sMessageBoxes.push_back(inBox);
    }
    ~OpenBox() { sMessageBoxes.erase(std::find(sMessageBoxes.begin(), sMessageBoxes.end(), mBox)); }
    OpenBox(const OpenBox&) = delete;
    OpenBox& operator=(const OpenBox&) = delete;

private:
    JxMessageBox* const mBox;
};

bool hasWindows()
{
    return qobject_cast<QApplication*>(QCoreApplication::instance());
}

QByteArray contextOf(const QString& inContext)
{
    return inContext.isEmpty() ? QByteArray(KyScriptLog::Context) : inContext.toLatin1();
}

} // namespace

KyScriptMessage::KyScriptMessage(QObject* parent)
    : QObject(parent)
{}

void KyScriptMessage::show(QString inMessage)
{
    const KyScriptWait wait;
    if (!hasWindows() || !wait.mayBegin())
        return;
    JxMessageBox box(KyMonitorManager::parentForModalWidget(), false);
    box.setIcon(QMessageBox::Information);
    box.setWindowTitle(QCoreApplication::applicationName());
    box.setText(inMessage);
    box.setStandardButtons(QMessageBox::Ok);
    box.setDefaultButton(QMessageBox::Ok);
    const OpenBox open(&box);
    box.exec();
}

void KyScriptMessage::hide()
{
    if (!sMessageBoxes.empty())
        sMessageBoxes.back()->accept();
}

QString KyScriptMessage::question(QString inMessage, QJSValue inButtons, QString inDefaultButton)
{
    const auto buttons = KyScriptTexts::argument(this, inButtons, QStringLiteral("Message.question"));
    const KyScriptWait wait;
    if (!buttons || !hasWindows() || !wait.mayBegin())
        return QString();
    JxMessageBox box(KyMonitorManager::parentForModalWidget(), false);
    box.setText(inMessage);
    for (const QString& text : *buttons) {
        QPushButton* button = box.addButton(text, QMessageBox::ActionRole);
        if (text == inDefaultButton)
            box.setDefaultButton(button);
    }
    box.exec();
    const QAbstractButton* clicked = box.clickedButton();
    return clicked ? clicked->text() : QString();
}

void KyScriptMessage::trace(QString inMessage, QString inContext)
{
    KyScriptLog::sessionLine(inMessage, contextOf(inContext).constData());
}

void KyScriptMessage::warn(QString inMessage, QString inContext)
{
    getTheLogInstance().warn(contextOf(inContext).constData(), inMessage.toLatin1().constData());
}

void KyScriptMessage::error(QString inMessage, QString inContext)
{
    getTheLogInstance().error(contextOf(inContext).constData(), inMessage.toLatin1().constData());
}
