#pragma once

#include <QtCore/QObject>

/// Text for a Microsoft Word that is running, published as `new WordCtrl()`.
///
/// It drives Word by names that are looked up at run time, and neither starts it nor opens a document. Each
/// call enters and leaves COM by itself, and nothing is kept between calls. What goes wrong is a line of the
/// log, and nothing to the script. On a system without COM every call ends with its first line. GUI thread
/// only.
class KyScriptWord : public QObject
{
    Q_OBJECT

public:
    Q_INVOKABLE explicit KyScriptWord(QObject* parent = nullptr);

    /// Always true, whether Word is running or not.
    Q_INVOKABLE bool isAvailable() const;

    /// Puts \a text in the place of what is selected in Word, with the insertion point behind it. An empty
    /// one deletes what is selected. Word gets the text up to its first NUL.
    Q_INVOKABLE void insertString(QString text);
};
