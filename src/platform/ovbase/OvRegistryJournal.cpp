#include "OvRegistryJournal.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QUuid>

namespace {

constexpr QLatin1String FormatKey("format");
constexpr QLatin1String FormatName("OvRegistry");
constexpr QLatin1String VersionKey("version");
constexpr int Version = 1;
constexpr QLatin1String WritingKey("writing");

constexpr QLatin1String IdKey("id");
constexpr QLatin1String LayerKey("layer");
constexpr QLatin1String ValueKey("value");
constexpr QLatin1String SourceKey("source");
constexpr QLatin1String RemovedKey("removed");

QByteArray lineOf(const QJsonObject& inObject)
{
    QByteArray line = QJsonDocument(inObject).toJson(QJsonDocument::Compact) + '\n';
    // Qt's reader takes U+FEFF at the start of a string for a byte order mark and drops it.
    return line.replace("\xef\xbb\xbf", "\\ufeff");
}

bool isHeader(const QByteArray& inLine)
{
    const QJsonObject header = QJsonDocument::fromJson(inLine).object();
    return header.value(FormatKey).toString() == FormatName && header.value(VersionKey).toInt() == Version;
}

std::optional<OvRegistryStore::Change> changeOf(const QByteArray& inLine)
{
    const QJsonObject object = QJsonDocument::fromJson(inLine).object();
    const QJsonValue id = object.value(IdKey);
    const QJsonValue value = object.value(ValueKey);
    OvRegistryStore::Change change{id.toString(), object.value(LayerKey).toInt(), std::nullopt};
    if (value.isString())
        change.value = OvRegistryValue{value.toString(), object.value(SourceKey).toString()};
    const bool isComplete = value.isString() || object.value(RemovedKey).toBool();
    return id.isString() && change.priority > 0 && isComplete ? std::optional(change) : std::nullopt;
}

} // namespace

QByteArray OvRegistryJournal::newHeader()
{
    return lineOf({{FormatKey, FormatName},
                   {VersionKey, Version},
                   {WritingKey, QUuid::createUuid().toString(QUuid::WithoutBraces)}});
}

QByteArray OvRegistryJournal::line(const OvRegistryStore::Change& inChange)
{
    QJsonObject object{{IdKey, inChange.id}, {LayerKey, inChange.priority}};
    if (inChange.value) {
        object.insert(ValueKey, inChange.value->value);
        object.insert(SourceKey, inChange.value->source);
    } else {
        object.insert(RemovedKey, true);
    }
    return lineOf(object);
}

QByteArray OvRegistryJournal::text(const QByteArray& inHeader, const OvRegistryStore::Content& inContent)
{
    QStringList ids = inContent.keys();
    ids.sort();
    QByteArray text = inHeader;
    for (const QString& id : std::as_const(ids)) {
        for (const auto& [priority, value] : *inContent.constFind(id))
            text += line({id, priority, value});
    }
    return text;
}

OvRegistryJournal::Reading OvRegistryJournal::read(const QByteArray& inText,
                                                   const OvRegistryStore::Content& inBase)
{
    Reading reading;
    const qsizetype headerEnd = inText.indexOf('\n');
    if (!isHeader(headerEnd < 0 ? inText : inText.left(headerEnd)))
        return reading;
    reading.content = inBase;
    reading.endsWithBreak = inText.endsWith('\n');
    for (qsizetype at = headerEnd; at >= 0 && at + 1 < inText.size();) {
        const qsizetype end = inText.indexOf('\n', at + 1);
        const QByteArray line = inText.mid(at + 1, end < 0 ? -1 : end - at - 1).trimmed();
        at = end;
        if (line.isEmpty())
            continue;
        const std::optional<OvRegistryStore::Change> change = changeOf(line);
        ++(change ? reading.lines : reading.badLines);
        if (change)
            OvRegistryStore::merge(*change, reading.content);
    }
    reading.state = reading.badLines > 0 ? State::Damaged : State::Sound;
    return reading;
}
