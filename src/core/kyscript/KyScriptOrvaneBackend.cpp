#include "KyScriptOrvane.h"

#include "KyScriptEngine.h"
#include "KyScriptLog.h"
#include "KyScriptPendingError.h"
#include "KyScriptVariant.h"

#include <ovbase/OvBackendScriptExecutor.h>
#include <ovbase/OvBackendScriptResponseReceiver.h>
#include <ovbase/OvWebServices.h>
#include <rnlib/RnContract.h>

#include <QtCore/QDateTime>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonDocument>
#include <QtCore/QPointer>
#include <QtQml/QJSEngine>
#include <QtQml/QJSValueIterator>

#include <charconv>
#include <cmath>

namespace {

std::string latin1(const QString& inText)
{
    return inText.toLatin1().toStdString();
}

void throwTypeError(const QObject* inCaller, const QString& inText)
{
    QJSEngine* engine = qjsEngine(inCaller);
    if (engine && !engine->hasError())
        engine->throwError(QJSValue::TypeError, inText);
}

// Parameters of scripts

/// A value of the host, such as a date or a buffer, though scripts see an object.
bool isHostValue(const QJSValue& inValue)
{
    return inValue.isQObject() || inValue.isQMetaObject() ||
           inValue.toVariant(QJSValue::RetainJSObjects).metaType() != QMetaType::fromType<QJSValue>();
}

/// A whole number beyond int, which as a double would cross with an exponent.
QVariant withoutExponent(const QVariant& inValue)
{
    constexpr double limit = 9007199254740992.0;
    const double number = inValue.typeId() == QMetaType::Double ? inValue.toDouble() : 0.5;
    const bool isWhole = number == std::trunc(number) && std::abs(number) <= limit;
    return isWhole ? QVariant(qlonglong(number)) : inValue;
}

/// The properties of an object; what holds further values stays a value of the script, which has no text.
/// What a getter throws must not reach the script.
QVariantMap propertiesOf(const QJSValue& inObject, const QObject* inHost)
{
    QJSEngine* engine = qjsEngine(inHost);
    QVariantMap map;
    QJSValueIterator property(inObject);
    while (property.next()) {
        const QVariant value = property.value().toVariant(QJSValue::RetainJSObjects);
        const bool hasThrown = engine && engine->hasError();
        if (hasThrown)
            engine->catchError();
        map.insert(property.name(), hasThrown ? QVariant() : withoutExponent(value));
    }
    return map;
}

// Stored procedures

OvDatabase::Parameters encoded(const QVariantMap& inParameters)
{
    OvDatabase::Parameters parameters;
    for (auto it = inParameters.cbegin(); it != inParameters.cend(); ++it) {
        std::optional<std::string> value;
        if (!it.value().isNull())
            value = latin1(it.value().toString());
        parameters.emplace(latin1(it.key()), std::move(value));
    }
    return parameters;
}

enum class ColumnKind
{
    Text,
    Bool,
    Int,
    Double,
    DateTime
};

ColumnKind kindOf(const std::string& inTypeWord)
{
    static const std::map<std::string, ColumnKind> kinds = {
        {"bit", ColumnKind::Bool},
        {"smallint", ColumnKind::Int},
        {"int", ColumnKind::Int},
        {"tinyint", ColumnKind::Int},
        {"bigint", ColumnKind::Double},
        {"float", ColumnKind::Double},
        {"real", ColumnKind::Double},
        {"datetime", ColumnKind::DateTime},
        {"smalldatetime", ColumnKind::DateTime},
        {"datetime2", ColumnKind::DateTime},
        {"datetimeoffset", ColumnKind::DateTime},
    };
    const auto kind = kinds.find(inTypeWord);
    return kind == kinds.end() ? ColumnKind::Text : kind->second;
}

/// The number that the whole of \a inText is in its plain form; nothing for other forms, which Qt reads.
template <class Number>
std::optional<Number> plainNumber(const std::string& inText)
{
    Number number{};
    const char* end = inText.data() + inText.size();
    const auto read = std::from_chars(inText.data(), end, number);
    const bool isPlain =
        read.ec == std::errc() && read.ptr == end && (inText.back() >= '0' && inText.back() <= '9');
    return isPlain ? std::optional(number) : std::nullopt;
}

/// The local time of a text in the one form "2026-01-31T14:05:09.120"; nothing for others, which Qt reads.
std::optional<QDateTime> plainDateTime(const std::string& inText)
{
    constexpr std::string_view form = "0000-00-00T00:00:00.000";
    if (inText.size() != form.size())
        return std::nullopt;
    for (std::size_t i = 0; i < form.size(); ++i) {
        const bool fits = form[i] == '0' ? inText[i] >= '0' && inText[i] <= '9' : inText[i] == form[i];
        if (!fits)
            return std::nullopt;
    }
    const auto number = [&inText](std::size_t inAt, std::size_t inDigits) {
        int value = 0;
        for (std::size_t i = inAt; i < inAt + inDigits; ++i)
            value = value * 10 + (inText[i] - '0');
        return value;
    };
    const QDate date(number(0, 4), number(5, 2), number(8, 2));
    const QTime time(number(11, 2), number(14, 2), number(17, 2), number(20, 3));
    return date.isValid() && time.isValid() ? std::optional(QDateTime(date, time)) : std::nullopt;
}

QVariant decoded(const std::optional<std::string>& inValue, ColumnKind inKind)
{
    if (!inValue)
        return QVariant();
    if (inKind == ColumnKind::Int) {
        if (const auto number = plainNumber<int>(*inValue))
            return *number;
    } else if (inKind == ColumnKind::Double) {
        if (const auto number = plainNumber<double>(*inValue))
            return *number;
    } else if (inKind == ColumnKind::DateTime) {
        if (const auto date = plainDateTime(*inValue))
            return *date;
    }
    const QString text = QString::fromLatin1(inValue->data(), qsizetype(inValue->size()));
    switch (inKind) {
    case ColumnKind::Bool:
        return text.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0;
    case ColumnKind::Int:
        return text.toInt();
    case ColumnKind::Double:
        return text.toDouble();
    case ColumnKind::DateTime:
        return QDateTime::fromString(text, Qt::ISODateWithMs);
    case ColumnKind::Text:
        break;
    }
    return text;
}

QVariantList decoded(const OvDatabase::Rows& inRows, const std::vector<std::string>& inTypeWords)
{
    std::vector<ColumnKind> kinds;
    for (const std::string& word : inTypeWords)
        kinds.push_back(kindOf(word));

    QVariantList rows;
    rows.reserve(qsizetype(inRows.size()));
    for (const OvDatabase::Row& values : inRows) {
        QVariantList row;
        row.reserve(qsizetype(values.size()));
        for (std::size_t i = 0; i < values.size(); ++i)
            row.append(decoded(values[i], i < kinds.size() ? kinds[i] : ColumnKind::Text));
        rows.append(QVariant(std::move(row)));
    }
    return rows;
}

// Backend scripts

std::vector<std::string> encoded(const QVariantList& inParameters)
{
    std::vector<std::string> parameters;
    for (const QVariant& parameter : inParameters) {
        const QByteArray json =
            QJsonDocument(QJsonArray{QJsonValue::fromVariant(parameter)}).toJson(QJsonDocument::Compact);
        parameters.push_back(json.mid(1, json.size() - 2).toStdString());
    }
    return parameters;
}

/// What is no JSON gives undefined, and a line in the log.
QJSValue resultOf(const QString& inJson, QJSEngine& ioEngine)
{
    const QByteArray array = QByteArray("[") + inJson.toUtf8() + ']';
    const QJsonArray values = QJsonDocument::fromJson(array).array();
    if (values.isEmpty())
        KyScriptLog::line(2, QStringLiteral("The backend's answer is no JSON: %1").arg(inJson.left(200)));
    return ioEngine.toScriptValue(values.at(0).toVariant());
}

} // namespace

QVariant KyScriptOrvane::execStoredProcedure(QString procedureName, QJSValue parameters)
{
    if (parameters.isObject() && !isHostValue(parameters)) {
        const bool hasNames = !parameters.isArray() && !parameters.isCallable();
        return execStoredProcedure(procedureName, hasNames ? propertiesOf(parameters, this) : QVariantMap());
    }
    throwTypeError(this, QStringLiteral("Orvane.execStoredProcedure: the parameters are no object"));
    return QVariant();
}

QVariant KyScriptOrvane::execStoredProcedure(const QString& procedureName, const QVariantMap& parameters)
{
    const RnHandle<OvWebServices> services(new OvWebServices(nullptr));
    OvDatabase::Rows rows;
    std::vector<std::string> columnTypes;
    const RnResult result =
        services->execStoredProcedure(latin1(procedureName), encoded(parameters), rows, columnTypes);
    if (result.isOk())
        return decoded(rows, columnTypes);

    if (QJSEngine* engine = qjsEngine(this))
        engine->throwError(QString::fromLatin1(result.text().c_str()));
    return QVariant();
}

void KyScriptOrvane::execScriptOnBackend(QString className, QString methodName, QJSValue parameters,
                                         QJSValue onSuccess, QJSValue onError)
{
    const bool isObject = parameters.isObject() && !isHostValue(parameters);
    const QVariant list = isObject && parameters.isArray()
                              ? KyScriptVariant::normalised(QVariant::fromValue(parameters), *this)
                              : QVariant(QVariantList());
    if (isObject && KyScriptVariant::isList(list))
        execScriptOnBackend(className, methodName, list.toList(), onSuccess, onError);
    else
        throwTypeError(this, QStringLiteral("Orvane.execScriptOnBackend: the parameters are no list"));
}

void KyScriptOrvane::execScriptOnBackend(const QString& className, const QString& methodName,
                                         const QVariantList& parameters, const QJSValue& onSuccess,
                                         const QJSValue& onError)
{
    QJSEngine* scriptEngine = qjsEngine(this);
    if (!dbc_holds(scriptEngine))
        return;

    const RnHandle<OvBackendScriptExecutor> executor(new OvBackendScriptExecutor(nullptr));
    const QPointer receiver(new OvBackendScriptResponseReceiver(executor, nullptr));
    connect(receiver, &OvBackendScriptResponseReceiver::succeeded, this,
            [onSuccess, scriptEngine, receiver](const QString& json, bool noResult) {
                const QPointer<OvBackendScriptResponseReceiver> kept = receiver;
                callBack(*scriptEngine, onSuccess, noResult ? QJSValue() : resultOf(json, *scriptEngine));
                if (kept)
                    kept->deleteLater();
            });
    connect(receiver, &OvBackendScriptResponseReceiver::failed, this,
            [onError, scriptEngine, receiver](const QString& message) {
                const QPointer<OvBackendScriptResponseReceiver> kept = receiver;
                callBack(*scriptEngine, onError, message);
                if (kept)
                    kept->deleteLater();
            });
    executor->execScriptOnBackend(className.toStdString(), methodName.toStdString(), encoded(parameters));
}

/// What the callback throws is dropped. It may come while another script waits in an event loop.
void KyScriptOrvane::callBack(QJSEngine& ioEngine, const QJSValue& inCallback, const QJSValue& inArgument)
{
    auto* engine = qobject_cast<KyScriptEngine*>(&ioEngine);
    const KyScriptEngine::PendingError pending(engine);
    if (engine)
        engine->callCounted(inCallback, {inArgument});
    else
        inCallback.call({inArgument});
}
