#include "KyScriptGlobalLink.h"

#include "KyScriptGlobal.h"
#include "KyScriptLog.h"

#include <QtCore/QDateTime>
#include <QtQml/QJSEngine>

namespace {

// The builtins are taken at the start, since scripts may replace them.
constexpr auto ScriptSide = R"((function() {
    var assign = Object.assign, keys = Object.keys, tag = Object.prototype.toString;
    var call = Function.prototype.call.bind(Function.prototype.call);
    var ownNames = Object.getOwnPropertyNames, isEnumerable = Object.prototype.propertyIsEnumerable;
    var failed = {};
    function read(object, name) {
        try { return object[name]; } catch (e) { return failed; }
    }
    // Qt's Object.keys calls getters, and throws what they throw.
    function namesOf(object) {
        try { return keys(object); } catch (e) {
            return ownNames(object).filter(function(name) { return call(isEnumerable, object, name); });
        }
    }
    function plain(value) { return typeof value === 'symbol' ? undefined : value; }
    return {
        copy: function(base) { return assign({}, base); },
        differ: function(object, base) {
            var names = namesOf(object), out = [], n = 0;
            for (var i = 0, count = names.length; i < count; ++i) {
                var name = names[i], value = read(object, name);
                if (value === failed || value === base[name] && (value !== 0 || 1 / value === 1 / base[name]))
                    continue;
                out[n++] = name;
                out[n++] = plain(value);
            }
            return out;
        },
        entries: function(object) {
            var names = namesOf(object), out = [], n = 0;
            for (var i = 0, count = names.length; i < count; ++i) {
                var value = read(object, names[i]);
                if (value === failed)
                    continue;
                out[n++] = names[i];
                out[n++] = plain(value);
            }
            return out;
        },
        kind: function(object) { return call(tag, object); }
    };
}))";

constexpr int MaxDepth = 500;
constexpr int MaxValues = 1000000;

bool isPlain(const QVariant& inValue)
{
    switch (inValue.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::Double:
    case QMetaType::QString:
    case QMetaType::Nullptr:
        return true;
    default:
        return false;
    }
}

bool holdsHostObject(const QVariant& inValue)
{
    if (inValue.metaType() == QMetaType::fromType<KyScriptHostObject>())
        return true;
    if (inValue.typeId() == QMetaType::QVariantList) {
        const auto& list = *static_cast<const QVariantList*>(inValue.constData());
        return std::any_of(list.begin(), list.end(), holdsHostObject);
    }
    if (inValue.typeId() == QMetaType::QVariantMap) {
        const auto& map = *static_cast<const QVariantMap*>(inValue.constData());
        return std::any_of(map.begin(), map.end(), holdsHostObject);
    }
    return false;
}

/// Whether a script may replace `Global` by it and still have it saved.
bool isMapLike(const QJSValue& inValue)
{
    return inValue.isObject() && !inValue.isArray() && !inValue.isCallable() && !inValue.isDate() &&
           !inValue.isRegExp() && !inValue.isQObject() && !inValue.isQMetaObject() && !inValue.isVariant() &&
           !inValue.isUrl();
}

} // namespace

/// One value on its way into the store: how deep it goes, how much it holds, and what it stands in.
struct KyScriptGlobalLink::Walk
{
    std::vector<QJSValue> ancestors;
    int values = 0;
    bool tooLarge = false;

    bool contains(const QJSValue& inValue) const
    {
        return std::any_of(ancestors.begin(), ancestors.end(),
                           [&](const QJSValue& ancestor) { return ancestor.strictlyEquals(inValue); });
    }
};

KyScriptGlobalLink::KyScriptGlobalLink(QJSEngine& inEngine)
    : mEngine(inEngine)
    , mStore(KyScriptGlobal::instance())
    , mHole(inEngine.newObject())
{
    const QJSValue side = inEngine.evaluate(QString::fromLatin1(ScriptSide)).call();
    mCopy = side.property(QStringLiteral("copy"));
    mDiffer = side.property(QStringLiteral("differ"));
    mEntries = side.property(QStringLiteral("entries"));
    mKind = side.property(QStringLiteral("kind"));
}

KyScriptGlobalLink::~KyScriptGlobalLink() = default;

void KyScriptGlobalLink::load(QJSValue& ioGlobalObject)
{
    synchronise();
    QJSValue global = mCopy.call({mBase});
    for (const QString& key : std::as_const(mHoles))
        global.setProperty(key, script(mStore.values().value(key)));
    ioGlobalObject.setProperty(QStringLiteral("Global"), global);
}

void KyScriptGlobalLink::save(const QJSValue& inGlobalObject)
{
    const QJSValue global = inGlobalObject.property(QStringLiteral("Global"));
    if (!isMapLike(global) || kindOf(global) == QLatin1String("[object ArrayBuffer]"))
        return;

    synchronise();
    const QJSValue changes = mDiffer.call({global, mBase});
    const int count = changes.isArray() ? changes.property(QStringLiteral("length")).toInt() : 0;
    for (int i = 0; i + 1 < count; i += 2)
        keep(changes.property(quint32(i)).toString(), changes.property(quint32(i + 1)));
}

/// Makes mBase anew when the store has other keys, or values from elsewhere, than when it was made.
void KyScriptGlobalLink::synchronise()
{
    if (mRevision == mStore.revision())
        return;

    mHoles.clear();
    QVariantMap plain = mStore.values();
    for (auto it = plain.begin(); it != plain.end(); ++it) {
        if (isPlain(*it))
            continue;
        *it = QVariant::fromValue(nullptr);
        mHoles.insert(it.key());
    }
    mBase = mEngine.toScriptValue(plain);
    for (const QString& key : std::as_const(mHoles))
        mBase.setProperty(key, mHole);
    mRevision = mStore.revision();
}

void KyScriptGlobalLink::keep(const QString& inKey, const QJSValue& inValue)
{
    Walk walk;
    const QVariant value = stored(inValue, walk);
    if (walk.tooLarge) {
        KyScriptLog::line(2, QStringLiteral("Global.%1 is too deep or too large to be kept").arg(inKey));
        return;
    }

    // A plain value in the place of a plain value keeps the order of keys, so that mBase can follow at once.
    const bool wasPlain = mRevision == mStore.revision() && isPlain(value) && !mHoles.contains(inKey) &&
                          mStore.values().contains(inKey);
    mStore.setValue(inKey, value);
    if (!wasPlain)
        return;
    mBase.setProperty(inKey, inValue);
    mRevision = mStore.revision();
}

QVariant KyScriptGlobalLink::stored(const QJSValue& inValue, Walk& ioWalk) const
{
    if (++ioWalk.values > MaxValues || ioWalk.ancestors.size() > MaxDepth)
        ioWalk.tooLarge = true;
    if (ioWalk.tooLarge || inValue.isUndefined() || inValue.isCallable() || inValue.isQMetaObject())
        return QVariant();
    if (inValue.isNull() || inValue.isBool() || inValue.isNumber() || inValue.isString())
        return inValue.toVariant();
    if (inValue.isQObject()) {
        QObject* object = inValue.toQObject();
        return object ? QVariant::fromValue(KyScriptHostObject{object}) : QVariant();
    }
    if (inValue.isDate() || inValue.isRegExp() || inValue.isUrl() || inValue.isVariant())
        return inValue.toVariant();
    if (!inValue.isObject())
        return QVariant();
    if (kindOf(inValue) == QLatin1String("[object ArrayBuffer]")) {
        const QByteArray bytes = inValue.toVariant().toByteArray();
        return bytes.isNull() ? QByteArray("") : bytes; // a null array would come back as a broken buffer
    }
    return inValue.isArray() ? storedList(inValue, ioWalk) : storedMap(inValue, ioWalk);
}

QVariant KyScriptGlobalLink::storedList(const QJSValue& inArray, Walk& ioWalk) const
{
    QVariantList list;
    if (ioWalk.contains(inArray))
        return list;
    const double length = inArray.property(QStringLiteral("length")).toNumber();
    if (length > MaxValues) {
        ioWalk.tooLarge = true;
        return list;
    }

    ioWalk.ancestors.push_back(inArray);
    list.resize(qsizetype(length));
    const QJSValue entries = mEntries.call({inArray});
    const quint32 count = entries.property(QStringLiteral("length")).toUInt();
    for (quint32 i = 0; i + 1 < count; i += 2) {
        bool isIndex = false;
        const uint index = entries.property(i).toString().toUInt(&isIndex);
        if (isIndex && qsizetype(index) < list.size())
            list[qsizetype(index)] = stored(entries.property(i + 1), ioWalk);
    }
    ioWalk.ancestors.pop_back();
    return list;
}

QVariant KyScriptGlobalLink::storedMap(const QJSValue& inObject, Walk& ioWalk) const
{
    QVariantMap map;
    if (ioWalk.contains(inObject))
        return map;

    ioWalk.ancestors.push_back(inObject);
    const QJSValue entries = mEntries.call({inObject});
    const quint32 count = entries.isArray() ? entries.property(QStringLiteral("length")).toUInt() : 0;
    for (quint32 i = 0; i + 1 < count; i += 2) {
        const QJSValue value = entries.property(i + 1);
        const QVariant kept = stored(value, ioWalk);
        if (kept.isValid() || (value.isUndefined() && !ioWalk.tooLarge))
            map.insert(entries.property(i).toString(), kept);
    }
    ioWalk.ancestors.pop_back();
    return map;
}

QJSValue KyScriptGlobalLink::script(const QVariant& inValue) const
{
    if (!holdsHostObject(inValue))
        return mEngine.toScriptValue(inValue);

    if (inValue.typeId() == QMetaType::QVariantMap) {
        QJSValue object = mEngine.newObject();
        const QVariantMap map = inValue.toMap();
        for (auto it = map.begin(); it != map.end(); ++it)
            object.setProperty(it.key(), script(*it));
        return object;
    }
    if (inValue.typeId() == QMetaType::QVariantList) {
        const QVariantList list = inValue.toList();
        QJSValue array = mEngine.newArray(uint(list.size()));
        for (qsizetype i = 0; i < list.size(); ++i)
            array.setProperty(quint32(i), script(list.at(i)));
        return array;
    }

    // Another engine's collector could delete the object under the engine that made it.
    QObject* object = inValue.value<KyScriptHostObject>().object;
    if (!object || (qjsEngine(object) != &mEngine &&
                    QJSEngine::objectOwnership(object) != QJSEngine::CppOwnership))
        return QJSValue();
    return mEngine.toScriptValue(object);
}

QString KyScriptGlobalLink::kindOf(const QJSValue& inValue) const
{
    return mKind.call({inValue}).toString();
}
