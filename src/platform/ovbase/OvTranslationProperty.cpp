#include "OvTranslationProperty.h"

#include "OvObservers.h"

#include <QCoreApplication>
#include <QHash>

namespace {

using Labels = QHash<QString, QByteArray>; // UTF-8, as QCoreApplication::translate() takes it
using Observers = OvObservers<const QString&>;

// Reached while static objects are built, and by statics that end later than those of this file.
Labels& labels()
{
    static auto* sLabels = new Labels;
    return *sLabels;
}

Observers& observers()
{
    static auto* sObservers = new Observers;
    return *sObservers;
}

QString pathOf(const char* inKey, const char* inContext)
{
    const QString key = QString::fromLatin1(inKey);
    return inContext ? QString::fromLatin1(inContext) + QLatin1Char('.') + key : key;
}

} // namespace

const char* OvTranslationProperty::translate(const char* inKey, const char* inText, const char* inContext)
{
    if (!inKey || !inText)
        return inKey;
    const QString path = pathOf(inKey, inContext);
    const QByteArray text(inText);
    const auto present = labels().constFind(path);
    if (present != labels().constEnd() && *present == text)
        return inKey;
    labels().insert(path, text);
    observers().tell(path);
    return inKey;
}

QString OvTranslationProperty::label(const QString& inPath)
{
    const QByteArray text = labels().value(inPath);
    return text.isEmpty() ? QString() : QCoreApplication::translate("OvTranslationProperty", text);
}

void OvTranslationProperty::observeLabels(const QObject* inContext, LabelFunction inFunction)
{
    observers().add(inContext, std::move(inFunction));
}
