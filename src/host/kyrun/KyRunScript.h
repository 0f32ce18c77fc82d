#pragma once

#include <QtCore/QString>

#include <optional>

/// Script files as kyrun takes them.
namespace KyRunScript {

/// The text of the script \a inFile, "-" for standard input, in UTF-8, without a byte order mark; nothing,
/// with the reason, when it cannot be read.
std::optional<QString> read(const QString& inFile, QString& outReason);

/// What is wrong with the syntax of \a inSource, as "FILE:LINE: SyntaxError: ..."; empty when it is sound.
/// Runs nothing of it.
QString syntaxError(const QString& inSource, const QString& inFile);

} // namespace KyRunScript
