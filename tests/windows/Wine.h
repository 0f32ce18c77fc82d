#pragma once

#include <QProcess>
#include <QStringList>

#include <memory>
#include <string>

/// Programs of Windows, run by Wine in a prefix of their own, without a display.
///
/// The prefix takes some seconds and 700 MB, so it is made once and kept in the user's cache folder, with the
/// class "Word.Application" known to it.
class Wine
{
public:
    Wine() = delete;

    /// What is missing to run them; empty when they can be run.
    static QString missing();
    /// Waits for the turn of this process to use the prefix, and makes it unless it is there. What went
    /// wrong, or nothing.
    static QString prepare();
    /// Ends what runs in the prefix.
    static void end();
    /// Likewise, and lets others have their turn.
    static void leave();

    static QProcessEnvironment environment();
    static QString prefix();
};

/// A program of these tests: each line that is sent is answered by a line.
class WineProgram
{
public:
    /// \a inProgram is the path of the program, of Windows or linked with Wine's tools.
    explicit WineProgram(const QString& inProgram, const QStringList& inEnvironment = {});
    /// Ends it, by the end of its input.
    ~WineProgram();

    /// Whether it has come up, and answers.
    bool isReady() const { return mIsReady; }

    /// The answer; empty when it has ended.
    std::string ask(const std::string& inLine);
    QStringList words(const std::string& inLine);
    /// The answer is a text.
    QString text(const std::string& inLine);

    static std::string hex(const QString& inText);
    static QString fromHex(const std::string& inHex);

private:
    std::string readLine();

    QProcess mProcess;
    bool mIsReady = false;
};
