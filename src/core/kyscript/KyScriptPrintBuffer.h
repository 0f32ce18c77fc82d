#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtCore/QTimer>

class QTextEdit;

/// Printed lines on their way into a text widget, made to stand a script that prints very many of them.
///
/// What stands in the widget in the end is what QTextEdit::append() of each line would have made. The first
/// lines of every few milliseconds go there at once; when more of them come than a window can show, they are
/// gathered and put in together: when the time is over, be it in the midst of a script or in an event loop,
/// and with flush(). The widget repaints itself meanwhile, but no events are served, so that no other script
/// can run within a print.
///
/// One for each text widget, whose child it is and with which it goes. GUI thread only.
class KyScriptPrintBuffer : public QObject
{
    Q_OBJECT

public:
    /// The buffer of \a inWidget, made if need be.
    static KyScriptPrintBuffer& of(QTextEdit& inWidget);

    /// Adds a line at the end of the text, as QTextEdit::append() does: what looks like rich text is taken as
    /// such.
    void append(const QString& inLine);

    /// Puts what is still gathered into the widget.
    void flush();

    /// Bounds the text: once it holds half as many lines or characters again as given, its oldest lines go
    /// and the newest stay, that many of them. A line is never cut. Without a bound a text grows without end.
    void keepNewest(int inLines, int inCharacters);

Q_SIGNALS:
    /// The oldest lines have gone.
    void trimmed();

private:
    explicit KyScriptPrintBuffer(QTextEdit& inWidget);

    void scheduleFlush();
    void writeLines(const QStringList& inLines);
    void insertPlainLines(const QString& inText);
    void trim();
    int firstLineToKeep() const;

    QTextEdit& mWidget;
    QStringList mLines;
    qsizetype mCharacters = 0; ///< of mLines
    int mBurst = 0;            ///< Lines of the present interval.
    QElapsedTimer mSinceDue;   ///< Since the present interval began.
    QTimer mFlushTimer;        ///< Runs while lines are gathered.
    int mMaxLines = 0;
    int mMaxCharacters = 0;
};
