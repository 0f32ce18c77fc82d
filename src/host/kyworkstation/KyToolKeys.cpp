#include "KyToolKeys.h"

#include <kybase/KyToolRegistry.h>
#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvTranslationProperty.h>
#include <rnlib/RnLogFile.h>

#include <QtGui/QKeySequence>

namespace {

using Entries = QList<QString>;

bool isUsable(const QKeySequence& inKeys)
{
    for (int i = 0; i < inKeys.count(); ++i) {
        if (inKeys[uint(i)].key() == Qt::Key_unknown)
            return false;
    }
    return true;
}

/// Gives what is wrong with the entry, or nothing.
const char* applyEntry(const QString& inEntry)
{
    const qsizetype sign = inEntry.indexOf(QLatin1Char('='));
    if (sign < 0)
        return "it is not ID=KEYS";
    const QString id = inEntry.left(sign).trimmed();
    const auto tool = KyToolRegistry::getToolByDecorationKey<KyTool>(id.toLatin1().constData(), true);
    if (!tool)
        return "there is no such tool";
    const QKeySequence keys(inEntry.mid(sign + 1).trimmed(), QKeySequence::PortableText);
    if (!isUsable(keys))
        return "there are no such keys";
    tool->setHotKey(keys.toString(QKeySequence::PortableText).toStdString());
    return nullptr;
}

} // namespace

void KyToolKeys::registerProperties()
{
    OvTranslationProperty::translate(PropertyId, "Keys of Tools, as Site.MyTool=Ctrl+Shift+M", nullptr);
    OvPropertyPool::addRegisterProperties([](OvPropertyPool& ioPool) {
        ioPool.property<Entries>(PropertyId, Entries(), ioPool.defaultSerializer());
    });
}

void KyToolKeys::apply()
{
    const OvPropertyPool* pool = OvPropertyPool::instance();
    const auto* property = pool ? dynamic_cast<OvProperty<Entries>*>(pool->variant(PropertyId)) : nullptr;
    for (const QString& entry : property ? property->value : Entries()) {
        if (const char* problem = applyEntry(entry))
            getTheLogInstance().tracef(2, "Tools", "Keys of tools: \"%s\" is left out: %s",
                                       entry.toUtf8().constData(), problem);
    }
}
