#include "KyScriptGlobalLink.h"

#include "KyScriptGlobal.h"
#include "KyScriptLog.h"

#include <QtCore/QDateTime>
#include <QtQml/QJSEngine>

namespace {

// The builtins are taken at the start, since scripts may replace them.
constexpr auto ScriptSide = R"((function() {
    var assign = Object.assign, keys = Object.keys, define = Object.defineProperty;
    var call = Function.prototype.call.bind(Function.prototype.call);
    var ownNames = Object.getOwnPropertyNames, isEnumerable = Object.prototype.propertyIsEnumerable;
    var hasOwn = Object.prototype.hasOwnProperty, tag = Object.prototype.toString;
    var byteLength = Object.getOwnPropertyDescriptor(ArrayBuffer.prototype, 'byteLength').get;
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
    // A tag can be forged, the getter knows.
    function isBuffer(object) {
        try {
            return call(tag, object) === '[object ArrayBuffer]' && call(byteLength, object) >= 0;
        } catch (e) { return false; }
    }
    // Qt asks the left operand, and a class of the host on that side equals everything.
    function collect(object, base) {
        var names = namesOf(object), out = [], n = 0;
        for (var i = 0, count = names.length; i < count; ++i) {
            var name = names[i], value = read(object, name);
            if (failed === value)
                continue;
            if (base) {
                var known = base[name];
                if (known === value && (value !== 0 || 1 / value === 1 / known))
                    continue;
            }
            out[n++] = name;
            out[n++] = plain(value);
        }
        return out;
    }
    return {
        copy: function(base) {
            if (!call(hasOwn, base, '__proto__'))
                return assign({}, base);
            for (var object = {}, names = keys(base), i = 0; i < names.length; ++i)
                define(object, names[i],
                       {value: base[names[i]], writable: true, enumerable: true, configurable: true});
            return object;
        },
        differ: function(object, base) { return isBuffer(object) ? [] : collect(object, base); },
        entries: function(object) { return isBuffer(object) ? null : collect(object); }
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
    double values = 0;
    bool tooLarge = false;

    /// An object that the walk is inside of.
    class Step
    {
    public:
        Step(Walk& ioWalk, const QJSValue& inObject)
            : mWalk(ioWalk)
        {
            mWalk.ancestors.push_back(inObject);
        }
        ~Step() { mWalk.ancestors.pop_back(); }
        Step(const Step&) = delete;
        Step& operator=(const Step&) = delete;

    private:
        Walk& mWalk;
    };

    /// False when the limits are passed. An array counts its length too: its holes cost as much as values.
    bool count(double inValues)
    {
        values += inValues;
        tooLarge = tooLarge || values > MaxValues || ancestors.size() > MaxDepth;
        return !tooLarge;
    }

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
}

KyScriptGlobalLink::~KyScriptGlobalLink() = default;

void KyScriptGlobalLink::load(QJSValue& ioGlobalObject)
{
    synchronise();
    QJSValue global = mCopy.call({mBase});
    for (const QString& key : std::as_const(mHoles)) {
        const QJSValue value = script(mStore.values().value(key));
        if (value.isUndefined())
            global.deleteProperty(key); // not for this engine: its run must not take the key from the others
        else
            global.setProperty(key, value);
    }
    ioGlobalObject.setProperty(QStringLiteral("Global"), global);
}

void KyScriptGlobalLink::save(const QJSValue& inGlobalObject)
{
    const QJSValue global = inGlobalObject.property(QStringLiteral("Global"));
    if (!isMapLike(global))
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
    if (!ioWalk.count(1) || inValue.isUndefined() || inValue.isCallable() || inValue.isQMetaObject())
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
    return inValue.isArray() ? storedList(inValue, ioWalk) : storedObject(inValue, ioWalk);
}

QVariant KyScriptGlobalLink::storedList(const QJSValue& inArray, Walk& ioWalk) const
{
    QVariantList list;
    const double length = inArray.property(QStringLiteral("length")).toNumber();
    if (ioWalk.contains(inArray) || !ioWalk.count(length))
        return list;

    list.resize(qsizetype(length));
    const Walk::Step step(ioWalk, inArray);
    const QJSValue entries = mEntries.call({inArray});
    const quint32 count = entries.property(QStringLiteral("length")).toUInt();
    for (quint32 i = 0; i + 1 < count; i += 2) {
        bool isIndex = false;
        const uint index = entries.property(i).toString().toUInt(&isIndex);
        if (isIndex && qsizetype(index) < list.size())
            list[qsizetype(index)] = stored(entries.property(i + 1), ioWalk);
    }
    return list;
}

QVariant KyScriptGlobalLink::storedObject(const QJSValue& inObject, Walk& ioWalk) const
{
    QVariantMap map;
    if (ioWalk.contains(inObject))
        return map;

    const Walk::Step step(ioWalk, inObject);
    const QJSValue entries = mEntries.call({inObject});
    if (entries.isNull()) { // an ArrayBuffer
        const QByteArray bytes = inObject.toVariant().toByteArray();
        return bytes.isNull() ? QByteArray("") : bytes; // a null array would come back as a broken buffer
    }
    const quint32 count = entries.isArray() ? entries.property(QStringLiteral("length")).toUInt() : 0;
    for (quint32 i = 0; i + 1 < count; i += 2) {
        const QJSValue value = entries.property(i + 1);
        const QVariant kept = stored(value, ioWalk);
        if (kept.isValid() || (value.isUndefined() && !ioWalk.tooLarge))
            map.insert(entries.property(i).toString(), kept);
    }
    return map;
}

QJSValue KyScriptGlobalLink::script(const QVariant& inValue) const
{
    if (inValue.typeId() == QMetaType::QByteArray && inValue.toByteArray().isNull())
        return mEngine.toScriptValue(QByteArray("")); // a null one would be a broken buffer
    if (!holdsHostObject(inValue))
        return mEngine.toScriptValue(inValue);

    QJSValue container = mEngine.toScriptValue(inValue);
    if (inValue.typeId() == QMetaType::QVariantMap) {
        const QVariantMap map = inValue.toMap();
        for (auto it = map.begin(); it != map.end(); ++it) {
            if (holdsHostObject(*it))
                container.setProperty(it.key(), script(*it));
        }
        return container;
    }
    if (inValue.typeId() == QMetaType::QVariantList) {
        const QVariantList list = inValue.toList();
        for (qsizetype i = 0; i < list.size(); ++i) {
            if (holdsHostObject(list.at(i)))
                container.setProperty(quint32(i), script(list.at(i)));
        }
        return container;
    }
    return script(inValue.value<KyScriptHostObject>());
}

QJSValue KyScriptGlobalLink::script(const KyScriptHostObject& inHostObject) const
{
    // Another engine's collector could delete the object under the engine that made it.
    QObject* object = inHostObject.object;
    if (!object ||
        (qjsEngine(object) != &mEngine && QJSEngine::objectOwnership(object) != QJSEngine::CppOwnership))
        return QJSValue();
    const QJSValue wrapper = mEngine.toScriptValue(object);
    return wrapper.isNull() ? QJSValue() : wrapper; // null for one that a collection has doomed
}
