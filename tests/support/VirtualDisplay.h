#pragma once

#include <QProcess>
#include <QRect>
#include <QString>
#include <QTemporaryDir>

/// An X server of its own without a screen, with a window manager, and a user at its keyboard, its mouse and
/// its clipboard: for tests that drive a program as a process.
///
/// It needs Xvfb, openbox, xdotool and xclip. Each step is bounded in time; one that can't be done gives an
/// empty answer, and the test sees that what it waits for does not come. Ends with what it has started.
class VirtualDisplay
{
public:
    /// The programs that are not there, with blanks between them; empty when a display can be started.
    static QString missingPrograms();

    VirtualDisplay() = default;
    ~VirtualDisplay();

    /// Whether server and window manager have come up.
    bool start();

    /// Where a program that shows its windows here has to run.
    QProcessEnvironment environment() const;

    /// The id of the window on show with exactly this title; empty without one.
    QString window(const QString& inTitle) const;
    /// Place and size of a window without its frame.
    QRect geometry(const QString& inWindow) const;
    /// The frame's upper left corner goes there.
    void move(const QString& inWindow, const QPoint& inPosition) const;
    void resize(const QString& inWindow, const QSize& inSize) const;

    /// Gives a window the keyboard. Whether it has it.
    bool activate(const QString& inWindow) const;
    bool isActive(const QString& inWindow) const;

    /// Types a text, or presses keys one after the other, such as "ctrl+a", "F5".
    void type(const QString& inText) const;
    void press(const QStringList& inKeys) const;
    /// Clicks at a place inside a window.
    void click(const QString& inWindow, const QPoint& inPosition) const;

    /// The text of the clipboard; empty without one.
    QString clipboard() const;
    void setClipboard(const QString& inText) const;

private:
    QString run(const QString& inProgram, const QStringList& inArguments,
                const QByteArray& inInput = QByteArray()) const;
    QString xdotool(const QStringList& inArguments) const;

    QTemporaryDir mFolder;
    QProcess mServer;
    QProcess mManager;
    QString mNumber; ///< As DISPLAY has it.
};
