#include "Declarations.h"

#include <interop/Peers.h>

#include <QJsonDocument>
#include <QProcess>
#include <QProcessEnvironment>

Declarations::Declarations(const QString& inFile)
{
    QProcess node;
    node.setEnvironment(QProcess::systemEnvironment() + Peers::nodeEnvironment());
    node.start(Peers::node(), {DECLARATION_TESTS "/declared.js", inFile});
    if (!node.waitForFinished(120000) || node.exitCode() != 0)
        mError = node.errorString() + '\n' + QString::fromUtf8(node.readAllStandardError());
    else
        mAnswer = QJsonDocument::fromJson(node.readAllStandardOutput()).object();
}

QStringList Declarations::texts(const QString& inPart) const
{
    return list(mAnswer.value(inPart));
}

QStringList Declarations::hostTypes() const
{
    QStringList names;
    const QJsonObject all = types();
    for (auto type = all.begin(); type != all.end(); ++type) {
        if (type.value().toObject().value("isHost").toBool())
            names.append(type.key());
    }
    return names;
}

QStringList Declarations::list(const QJsonValue& inArray)
{
    QStringList texts;
    for (const QJsonValue element : inArray.toArray())
        texts.append(element.toString());
    return texts;
}
