#include "KyBackendScript.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

namespace {

bool isIdentifier(const QString& inName)
{
    static const QRegularExpression identifier(QStringLiteral("\\A[A-Za-z][A-Za-z0-9_]*\\z"));
    return identifier.match(inName).hasMatch();
}

/// The message of an error, with the place in the class where it came from.
QString textOf(const QJSValue& inError)
{
    const QString file =
        inError.property(QStringLiteral("fileName")).toString().section(QLatin1Char('/'), -1);
    const QString line = inError.property(QStringLiteral("lineNumber")).toString();
    const bool hasPlace = inError.isError() && !file.isEmpty() && file != QLatin1String("undefined");
    return hasPlace ? QStringLiteral("%1 (%2:%3)").arg(inError.toString(), file, line) : inError.toString();
}

OvBackendReply::Answer failure(const QString& inText)
{
    return {false, false, inText};
}

} // namespace

KyBackendScript::KyBackendScript(QString inFolder)
    : mFolder(std::move(inFolder))
    , mParse(mEngine.evaluate(QStringLiteral("JSON.parse")))
    , mStringify(mEngine.evaluate(QStringLiteral("JSON.stringify")))
{
    mEngine.installExtensions(QJSEngine::ConsoleExtension);
}

OvBackendReply::Answer KyBackendScript::call(const OvBackendCall& inCall)
{
    const QString className = QString::fromStdString(inCall.className);
    const QString methodName = QString::fromStdString(inCall.methodName);
    QString error;
    const QJSValue object = instance(className, error);
    if (!error.isEmpty())
        return failure(error);
    const QJSValue function = method(object, methodName);
    if (!function.isCallable())
        return failure(QStringLiteral("The backend class %1 has no method %2").arg(className, methodName));

    QJSValueList arguments;
    for (const std::string& parameter : inCall.parameters) {
        arguments.append(mParse.call({QString::fromStdString(parameter)}));
        if (arguments.last().isError())
            return failure(QStringLiteral("An argument is no JSON"));
    }
    const QJSValue result = function.callWithInstance(object, arguments);
    if (result.isError())
        return failure(textOf(result));
    const QJSValue json = mStringify.call({result});
    if (json.isError())
        return failure(textOf(json));
    return {true, !json.isString(), json.isString() ? json.toString() : QString()};
}

/// What all objects have is no method of the class.
QJSValue KyBackendScript::method(const QJSValue& inObject, const QString& inName) const
{
    const QJSValue ofAll = mEngine.globalObject()
                               .property(QStringLiteral("Object"))
                               .property(QStringLiteral("prototype"))
                               .property(inName);
    const bool isOwn = isIdentifier(inName) && inName != QLatin1String("constructor");
    const QJSValue function = isOwn ? inObject.property(inName) : QJSValue();
    return function.strictlyEquals(ofAll) ? QJSValue() : function;
}

QJSValue KyBackendScript::instance(const QString& inClass, QString& outError)
{
    const QFileInfo info(QDir(mFolder).filePath(inClass + QStringLiteral(".js")));
    if (!isIdentifier(inClass) || !info.isFile()) {
        outError = QStringLiteral("There is no backend class %1").arg(inClass);
        return QJSValue();
    }
    const auto kept = mInstances.constFind(inClass);
    if (kept != mInstances.constEnd() && kept->modified == info.lastModified() && kept->size == info.size())
        return kept->object;
    const QJSValue object = load(inClass, info.absoluteFilePath(), outError);
    if (outError.isEmpty())
        mInstances.insert(inClass, {info.lastModified(), info.size(), object});
    return object;
}

QJSValue KyBackendScript::load(const QString& inClass, const QString& inFile, QString& outError)
{
    QFile file(inFile);
    if (!file.open(QIODevice::ReadOnly)) {
        outError = QStringLiteral("The backend class %1 cannot be read: %2").arg(inClass, file.errorString());
        return QJSValue();
    }
    // In front of its first line, so that places in the file are told rightly.
    const QString text = QStringLiteral("(function() {") + QString::fromUtf8(file.readAll()) +
                         QStringLiteral("\nreturn typeof %1 === 'undefined' ? null : %1; })()").arg(inClass);
    QJSValue made = mEngine.evaluate(text, inFile);
    if (made.isCallable())
        made = made.callAsConstructor();
    if (made.isError())
        outError = textOf(made);
    else if (!made.isObject())
        outError = QStringLiteral("The file %1.js declares no class %1").arg(inClass);
    return made;
}
