#pragma once

#include "KyScriptExport.h"

#include <jxbase/JxTopLevelWidget.h>

#include <QtCore/QPointer>
#include <QtCore/QTimer>

#include <functional>
#include <memory>
#include <vector>

class JxRunOnKeyPress;
class KyScriptInterface;

namespace Ui {
class KyScriptingWindowBase;
}

/// The console of one named engine: JavaScript above, what it prints and gives below.
///
/// KyScriptInterface::showConsole() makes one for each engine name, which it keeps for the life of the
/// process; closing it only hides it. The engine is the named one, made if need be; when it has ended,
/// evaluating does nothing until a new one is asked for. GUI thread only: an evaluation blocks it.
class KyScriptingWindow : public JxTopLevelWidget
{
    Q_OBJECT

public:
    enum Engine
    {
        JavaScriptEngine = 1 ///< The one of QJSEngine.
    };

    KyScriptingWindow(const QString& inName, Engine inKind);
    ~KyScriptingWindow() override;

    /// Labels and registers the console's properties, for the start of the library.
    static void registerProperties();

    /// Evaluates \a inInput in place of what the user has typed. Gives the text of the output.
    Q_INVOKABLE QString evaluate(QString inInput);

public Q_SLOTS:
    /// Runs the selection, or without one the whole input, at the top level of the engine, and shows the
    /// printed lines with the value below them, or only the error. Does nothing but clearing the output when
    /// the engine has ended, and nothing at all while an evaluation of this console is still running.
    void slotEvaluate();

    /// Ends the engine, with its globals and all that its scripts have opened, and binds a fresh one of the
    /// same name. While a script of the engine is running, that waits until it has ended.
    ///
    /// A facade that other modules hold for the name is bound to the old engine and stays without one.
    void slotNewEngine();

    /// Turns the keys that indent on or off; without them the input is a plain text editor.
    void slotAutoIndentation(bool isOn);

private:
    void connectEngine();
    void makeKeyFilters();
    void followProperty();
    void setFonts();
    QString source() const;
    void run(const QString& inSource);
    void showError(const class QJSValue& inError);

    void indent();
    void unindent();
    void breakLine();
    void deleteBackward();

    const std::unique_ptr<Ui::KyScriptingWindowBase> mUi;
    QPointer<KyScriptInterface> mEngine;
    const Engine mKind;
    const QString mName;
    JxRunOnKeyPress* mTabFilter = nullptr;
    JxRunOnKeyPress* mBacktabFilter = nullptr;
    JxRunOnKeyPress* mReturnFilter = nullptr;
    JxRunOnKeyPress* mBackspaceFilter = nullptr;
    bool mIsRunning = false; ///< Within an evaluation of this console.
    QTimer mNewEngineRetry;  ///< Runs while a new engine is asked for.
};

/// An event filter that runs a function in place of a key press.
class JxRunOnKeyPress : public QObject
{
    Q_OBJECT

public:
    /// \a inKeys are values of Qt::Key, whatever the modifiers.
    JxRunOnKeyPress(QObject* inParent, std::vector<int> inKeys, std::function<void()> inFunction);

    bool eventFilter(QObject* inObject, QEvent* inEvent) override;

private:
    const std::vector<int> mKeys;
    const std::function<void()> mFunction;
};
