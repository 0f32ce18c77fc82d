#pragma once

#include <QElapsedTimer>
#include <QList>
#include <QObject>
#include <QPointer>
#include <QString>
#include <QTimer>
#include <QWidget>

#include <chrono>
#include <functional>

/// Answers one modal window, such as a message box, from inside its nested event loop.
///
/// Made before the call that opens the window; it waits for QApplication::activeModalWidget() and gives it to
/// the answer. Several at a time answer one window each, in the order in which they were made. An answer may
/// open the next window itself.
///
/// A window that doesn't come, or doesn't close after its answer, fails the test once the time limit is over.
/// From then on all modal windows are rejected, so that the test ends. Ended before a window came, it fails
/// the test too.
class ModalAnswer final : public QObject
{
    Q_OBJECT

public:
    using Answer = std::function<void(QWidget*)>;

    explicit ModalAnswer(Answer inAnswer, std::chrono::milliseconds inLimit = std::chrono::seconds(10));
    ~ModalAnswer() override;

    /// Clicks the button of this text, written with or without its mnemonic; without one the test fails.
    static Answer clicking(const QString& inButtonText);

    /// Whether a window came and was answered.
    bool happened() const { return mHappened; }

    bool eventFilter(QObject* inWatched, QEvent* inEvent) override;

private:
    void poll();
    void answer(QWidget* inWindow);
    void fail(const QString& inText);

    static QList<ModalAnswer*>& waiting();
    /// The windows on show that an answer has had already.
    static QList<QPointer<QWidget>>& answered();

    const Answer mAnswer;
    const std::chrono::milliseconds mLimit;
    QTimer mTimer;
    QElapsedTimer mElapsed;
    QPointer<QWidget> mWindow;
    bool mHappened = false;
    bool mAnswering = false;
    bool mFailed = false;
};
