#pragma once

#include "KyScriptBrowserCtrl.h"

#include <rnlib/RnContract.h>

#include <QtQml/QJSEngine>

#include <type_traits>
#include <variant>

class KyScriptDialog;

/// Publishes the class \a T as a constructor under the global name \a className and checks that scripts can
/// use it. A check that fails is a contract report; the name stays all the same.
///
/// The check makes one object, which the garbage collector takes: an argument-less constructor must be cheap
/// and without effects. A dialog builds a window, so only its constructor is looked at; a browser control is
/// made without the control behind it.
template <class T>
void addGlobalObjectFromMetaObject(QJSEngine& inEngine, const QString& className)
{
    inEngine.globalObject().setProperty(className, inEngine.newQMetaObject(&T::staticMetaObject));
    if constexpr (std::is_same_v<T, KyScriptDialog>) {
        dbc_holds(inEngine.evaluate(QStringLiteral("typeof %1;").arg(className)).toString() ==
                  QStringLiteral("function"));
    } else {
        [[maybe_unused]] std::conditional_t<std::is_same_v<T, KyScriptBrowserCtrl>,
                                            KyScriptBrowserCtrl::Uncontrolled, std::monostate>
            check;
        dbc_holds(inEngine.evaluate(QStringLiteral("typeof new %1();").arg(className)).toString() ==
                  QStringLiteral("object"));
    }
}
