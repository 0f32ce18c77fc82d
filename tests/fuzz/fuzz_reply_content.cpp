// Headers and content types as a server may write them: the first line is the content type, the others are
// headers.

#include "FuzzWorld.h"

#include <kyscript/KyScriptReplyContent.h>

extern "C" void fuzzFinish()
{
    FuzzWorld::finish();
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize)
{
    auto& engine = FuzzWorld::instance().engine();
    QList<QByteArray> lines =
        QByteArray(reinterpret_cast<const char*>(inData), static_cast<qsizetype>(inSize)).split('\n');
    const bool isPlain = KyScriptReplyContent::isPlainText(QString::fromUtf8(lines.takeFirst()));

    QList<QNetworkReply::RawHeaderPair> pairs;
    for (const QByteArray& line : lines) {
        const qsizetype colon = line.indexOf(':');
        pairs.append({line.left(colon), colon < 0 ? QByteArray() : line.mid(colon + 1)});
    }
    const QVariantMap map = KyScriptReplyContent::headerMap(pairs);
    if (map.size() > pairs.size())
        qFatal("headers out of nothing");
    for (const QVariant& value : map) {
        if (value.toByteArray().isNull())
            qFatal("a null value");
    }

    // A script can look at all of it.
    static QJSValue look = FuzzWorld::instance().run(
        "(function(header, isPlain) {"
        "    return Object.keys(header).every(function(name) {"
        "        return new Uint8Array(header[name]).length === header[name].byteLength"
        "            && typeof String(header[name]) === 'string';"
        "    }) && typeof isPlain === 'boolean';"
        "})");
    if (!look.call({engine.toScriptValue(map), isPlain}).toBool())
        qFatal("a value that scripts can't read");
    return 0;
}
