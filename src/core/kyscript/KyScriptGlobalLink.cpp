#include "KyScriptGlobalLink.h"

#include "KyScriptGlobal.h"
#include "KyScriptLog.h"

#include <QtQml/QJSEngine>

namespace {

// Its arguments are the builtins that it needs, as they were when the engine was made: scripts may replace
// them. Scripts may also give Object.prototype and Array.prototype what they like, accessors included. So
// everything that is read by a name or set here has no prototype.
constexpr auto ScriptSide =
    R"((function(assign, create, setPrototypeOf, objectPrototype, keys, ownNames, define, call,
                                         isEnumerable) {
    var failed = create(null);
    function list() { return setPrototypeOf([], null); }
    function read(object, name) {
        try { return object[name]; } catch (e) { return failed; }
    }
    // Qt's Object.keys calls getters, and throws what they throw.
    function namesOf(object) {
        try { return keys(object); } catch (e) {}
        for (var names = list(), n = 0, all = ownNames(object), i = 0; i < all.length; ++i) {
            if (call(isEnumerable, object, all[i]))
                names[n++] = all[i];
        }
        return names;
    }
    function plain(value) { return typeof value === 'symbol' ? undefined : value; }
    // Qt asks the left operand, and a class of the host on that side equals everything.
    function collect(object, base) {
        var names = namesOf(object), out = list(), n = 0;
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
        copy: function(base) { return setPrototypeOf(assign(create(null), base), objectPrototype); },
        entries: function(object, base) {
            try { return collect(object, base); } catch (e) {}
        },
        publish: function(scope, name, object) {
            var property = create(null);
            property.value = object;
            property.writable = property.enumerable = property.configurable = true;
            define(scope, name, property);
        }
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

/// The value if Qt has a form of its own for it; a QJSValue for objects, functions and symbols. No script
/// runs.
QVariant ownForm(const QJSValue& inValue)
{
    const QVariant form = inValue.toVariant(QJSValue::RetainJSObjects);
    if (form.typeId() == QMetaType::QByteArray && form.toByteArray().isNull())
        return QByteArray(""); // a null one would come back as a broken buffer
    return form;
}

bool isQJSValue(const QVariant& inValue)
{
    return inValue.metaType() == QMetaType::fromType<QJSValue>();
}

/// Whether Qt's form of the value is a QVariantMap: whether a script may replace `Global` by it and have it
/// saved.
bool isMapLike(const QJSValue& inValue)
{
    return inValue.isObject() && !inValue.isArray() && !inValue.isCallable() && !inValue.isQMetaObject() &&
           isQJSValue(ownForm(inValue));
}

/// The builtins that the script side needs, in the order of its arguments.
QJSValueList builtinsOf(const QJSEngine& inEngine)
{
    const QJSValue object = inEngine.globalObject().property(QStringLiteral("Object"));
    const QJSValue prototype = object.property(QStringLiteral("prototype"));
    const QJSValue function = inEngine.globalObject().property(QStringLiteral("Function"));
    const QJSValue functions = function.property(QStringLiteral("prototype"));
    const QJSValue call = functions.property(QStringLiteral("call"));
    const QJSValue callOf = functions.property(QStringLiteral("bind")).callWithInstance(call, {call});
    return {object.property(QStringLiteral("assign")),
            object.property(QStringLiteral("create")),
            object.property(QStringLiteral("setPrototypeOf")),
            prototype,
            object.property(QStringLiteral("keys")),
            object.property(QStringLiteral("getOwnPropertyNames")),
            object.property(QStringLiteral("defineProperty")),
            callOf,
            prototype.property(QStringLiteral("propertyIsEnumerable"))};
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
    , mBuiltins(builtinsOf(inEngine))
    , mHole(inEngine.newObject())
{}

KyScriptGlobalLink::~KyScriptGlobalLink() = default;

/// On first use: most engines of runners need none. Tried again when the stack was exhausted.
void KyScriptGlobalLink::makeScriptSide()
{
    if (mCopy.isCallable())
        return;
    const QJSValue side = mEngine.evaluate(QString::fromLatin1(ScriptSide)).call(mBuiltins);
    mCopy = side.property(QStringLiteral("copy"));
    mEntries = side.property(QStringLiteral("entries"));
    mPublish = side.property(QStringLiteral("publish"));
}

void KyScriptGlobalLink::load(QJSValue& ioGlobalObject)
{
    makeScriptSide();
    synchronise();
    QJSValue global = mCopy.call({mBase});
    if (global.isError() || !global.isObject())
        global = mEngine.toScriptValue(plainValues()); // the stack is exhausted, this needs less of it
    for (const QString& key : std::as_const(mHoles)) {
        const QJSValue value = script(mStore.values().value(key));
        if (value.isUndefined())
            global.deleteProperty(key); // not for this engine: its run must not take the key from the others
        else
            global.setProperty(key, value);
    }

    const QString name = QStringLiteral("Global");
    if (ioGlobalObject.hasOwnProperty(name))
        ioGlobalObject.setProperty(name, global);
    else
        mPublish.call({ioGlobalObject, name, global}); // whatever the prototype has of that name
}

void KyScriptGlobalLink::save(const QJSValue& inGlobalObject)
{
    const QJSValue global = inGlobalObject.property(QStringLiteral("Global"));
    if (!isMapLike(global))
        return;

    synchronise();
    const QJSValue changes = mEntries.call({global, mBase});
    if (!changes.isArray()) {
        KyScriptLog::line(2, QStringLiteral("Global can't be read, its values are not kept"));
        return;
    }
    const int count = changes.property(QStringLiteral("length")).toInt();
    for (int i = 0; i + 1 < count; i += 2)
        keep(changes.property(quint32(i)).toString(), changes.property(quint32(i + 1)));
}

/// The store's values, with null in the place of those that are not plain.
QVariantMap KyScriptGlobalLink::plainValues() const
{
    QVariantMap plain = mStore.values();
    for (const QString& key : mHoles)
        plain[key] = QVariant::fromValue(nullptr);
    return plain;
}

/// Makes mBase anew when the store has other keys, or values from elsewhere, than when it was made.
void KyScriptGlobalLink::synchronise()
{
    if (mRevision == mStore.revision())
        return;

    mHoles.clear();
    const QVariantMap& values = mStore.values();
    for (auto it = values.begin(); it != values.end(); ++it) {
        if (!isPlain(*it))
            mHoles.insert(it.key());
    }
    mBase = mEngine.toScriptValue(plainValues());
    mBase.setPrototype(QJSValue(QJSValue::NullValue));
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
    if (inValue.isQObject()) {
        QObject* object = inValue.toQObject();
        return object ? QVariant::fromValue(KyScriptHostObject{object}) : QVariant();
    }
    if (const QVariant form = ownForm(inValue); !isQJSValue(form))
        return form;
    if (!inValue.isObject())
        return QVariant(); // a symbol
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
    const quint32 count = entries.property(QStringLiteral("length")).toUInt();
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
