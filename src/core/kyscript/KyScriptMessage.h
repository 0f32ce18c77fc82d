#pragma once

#include <QtCore/QObject>
#include <QtQml/QJSValue>

/// The global `Message`: message boxes and log lines for scripts. Owned by the engine. An application without
/// windows shows no boxes, and nobody chooses.
class KyScriptMessage : public QObject
{
    Q_OBJECT

public:
    explicit KyScriptMessage(QObject* parent);

    /// Shows a box with \a inMessage and an OK button, and returns when it is closed. The application goes on
    /// meanwhile.
    Q_INVOKABLE void show(QString inMessage);

    /// Closes the innermost box of show(), of whatever engine; nothing without one.
    Q_INVOKABLE void hide();

    /// Asks the user to choose among \a inButtons, in their order, and gives the text of the chosen one;
    /// empty when the box was closed without a choice. Enter chooses \a inDefaultButton, if it is one of
    /// them; of equal texts the last. \a inButtons is a list of texts, see KyScriptTexts; without one the
    /// call is a TypeError of the script.
    Q_INVOKABLE QString question(QString inMessage, QJSValue inButtons, QString inDefaultButton = QString());

    /// A line in the server's session log; lost when no server peer is there. For this and the two below, an
    /// empty \a inContext stands for "Script Interface".
    Q_INVOKABLE void trace(QString inMessage, QString inContext = QString());
    /// A line of level 2 in the log of the process.
    Q_INVOKABLE void warn(QString inMessage, QString inContext = QString());
    /// A line of level 3 in the log of the process.
    Q_INVOKABLE void error(QString inMessage, QString inContext = QString());
};
