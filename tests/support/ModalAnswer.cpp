#include "ModalAnswer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QDialog>
#include <QTest>

#include <utility>

namespace {

constexpr std::chrono::milliseconds PollInterval(5);

QString withoutMnemonic(QString inText)
{
    return inText.remove(u'&');
}

void reject(QWidget* inWindow)
{
    if (auto* dialog = qobject_cast<QDialog*>(inWindow))
        dialog->reject();
    else
        inWindow->close();
}

} // namespace

ModalAnswer::ModalAnswer(Answer inAnswer, std::chrono::milliseconds inLimit)
    : mAnswer(std::move(inAnswer))
    , mLimit(inLimit)
{
    waiting().append(this);
    mElapsed.start();
    connect(&mTimer, &QTimer::timeout, this, &ModalAnswer::poll);
    mTimer.start(PollInterval);
}

ModalAnswer::~ModalAnswer()
{
    waiting().removeAll(this);
    answered().removeAll(mWindow);
    if (!mHappened)
        fail(QStringLiteral("No modal window came"));
}

ModalAnswer::Answer ModalAnswer::clicking(const QString& inButtonText)
{
    return [inButtonText](QWidget* inWindow) {
        for (QAbstractButton* button : inWindow->findChildren<QAbstractButton*>())
            if (withoutMnemonic(button->text()) == withoutMnemonic(inButtonText))
                return button->click();
        const QString text = QStringLiteral("The modal window has no button \"%1\"").arg(inButtonText);
        QTest::qFail(qUtf8Printable(text), __FILE__, __LINE__);
        reject(inWindow);
    };
}

bool ModalAnswer::eventFilter(QObject* inWatched, QEvent* inEvent)
{
    // The same window on show again is a new one to answer.
    if (inEvent->type() == QEvent::Hide)
        answered().removeAll(mWindow);
    return QObject::eventFilter(inWatched, inEvent);
}

void ModalAnswer::poll()
{
    QWidget* window = QApplication::activeModalWidget();
    if (mFailed) {
        if (window)
            reject(window);
        return;
    }
    const bool isNew = window && window->isVisible() && !answered().contains(window);
    if (!mHappened && isNew && waiting().constFirst() == this) {
        answer(window);
    } else if (mHappened && !mAnswering && (!mWindow || !mWindow->isVisible())) {
        mTimer.stop();
    } else if (mElapsed.hasExpired(mLimit.count())) {
        fail(mHappened ? QStringLiteral("The modal window did not close after its answer")
                       : QStringLiteral("No modal window came in time"));
    }
}

void ModalAnswer::answer(QWidget* inWindow)
{
    mHappened = true;
    mWindow = inWindow;
    waiting().removeAll(this);
    answered().append(mWindow);
    inWindow->installEventFilter(this);
    mElapsed.start();
    // Started anew, since a timer doesn't fire in loops inside its own event: the answer may open windows.
    mTimer.start(PollInterval);
    mAnswering = true;
    mAnswer(inWindow);
    mAnswering = false;
}

void ModalAnswer::fail(const QString& inText)
{
    if (!std::exchange(mFailed, true))
        QTest::qFail(qUtf8Printable(inText), __FILE__, __LINE__);
}

QList<ModalAnswer*>& ModalAnswer::waiting()
{
    static QList<ModalAnswer*> list;
    return list;
}

QList<QPointer<QWidget>>& ModalAnswer::answered()
{
    static QList<QPointer<QWidget>> list;
    return list;
}
