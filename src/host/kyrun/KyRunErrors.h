#pragma once

#include <QtCore/QString>

class QJSValue;

/// What kyrun tells of the errors of scripts on standard error.
namespace KyRunErrors {

/// Tells of an uncaught error: \a inPlace with its line, the error, and the backtrace.
void tell(const QJSValue& inError, const QString& inPlace);

} // namespace KyRunErrors
