#include "Comparison.h"

#include "Declarations.h"

#include <QJsonArray>
#include <QMap>

#include <algorithm>

namespace {

/// Types of Qt and the kinds that stand for them; further ones, which need more than that, are in fits().
const QMap<QString, QString>& kindOf()
{
    static const QMap<QString, QString> table{
        {"void", "void"},
        {"bool", "boolean"},
        {"int", "number"},
        {"uint", "number"},
        {"qlonglong", "number"},
        {"float", "number"},
        {"double", "number"},
        {"QString", "string"},
        {"QStringList", "Array<string>"},
        {"QByteArray", "ArrayBuffer"},
        {"QDate", "Date"},
        {"QDateTime", "Date"},
    };
    return table;
}

/// What a suggestion says for a type.
QString typeScript(const QString& inQtType)
{
    static const QMap<QString, QString> table{
        {"QStringList", "string[]"},
        {"QObject*", "HostObject | null"},
        {"QObjectList", "HostObject[]"},
        {"QVariant", "any /* better: what it takes */"},
        {"QJSValue", "any /* better: what it takes */"},
        {"QVariantList", "any[]"},
        {"QVariantMap", "{ [name: string]: any }"},
    };
    return table.value(inQtType, kindOf().value(inQtType, "any /* " + inQtType + " */"));
}

QString text(const QList<HostArgument>& inArguments, qsizetype inRequired)
{
    QStringList texts;
    for (qsizetype i = 0; i < inArguments.size(); ++i) {
        const HostArgument& argument = inArguments.at(i);
        texts.append(argument.name + (i < inRequired ? ": " : "?: ") + typeScript(argument.type));
    }
    return texts.join(", ");
}

const HostSignature& longest(const QList<HostSignature>& inSignatures)
{
    return *std::max_element(inSignatures.begin(), inSignatures.end(), [](const auto& inA, const auto& inB) {
        return inA.arguments.size() < inB.arguments.size();
    });
}

qsizetype fewest(const QList<HostSignature>& inSignatures)
{
    qsizetype count = longest(inSignatures).arguments.size();
    for (const HostSignature& signature : inSignatures)
        count = std::min(count, signature.arguments.size());
    return count;
}

/// The ways to call what is declared, one for each number of arguments.
QList<QPair<QJsonArray, QStringList>> waysToCall(const QJsonValue& inSignatures)
{
    QList<QPair<QJsonArray, QStringList>> ways;
    for (const QJsonValue signature : inSignatures.toArray()) {
        const QStringList result = Declarations::list(signature["result"]);
        QJsonArray arguments;
        for (const QJsonValue argument : signature["arguments"].toArray()) {
            if (argument["isOptional"].toBool())
                ways.append({arguments, result});
            arguments.append(argument);
        }
        ways.append({arguments, result});
    }
    return ways;
}

QString text(const QJsonArray& inArguments, const QStringList& inResult)
{
    QStringList texts;
    for (const QJsonValue argument : inArguments)
        texts.append(argument["name"].toString() + ": " + Declarations::list(argument["kinds"]).join(" | "));
    return "(" + texts.join(", ") + "): " + inResult.join(" | ");
}

QString text(const HostSignature& inSignature)
{
    QStringList texts;
    for (const HostArgument& argument : inSignature.arguments)
        texts.append(argument.type + " " + argument.name);
    return inSignature.result + " (" + texts.join(", ") + ")";
}

QString kindText(HostMember::Kind inKind)
{
    return QStringList{"property", "method", "signal"}.at(inKind);
}

/// Members of Qt's own classes may be left out: there are many, they are Qt's to change, and few are of use.
const QStringList& classesOfQt()
{
    static const QStringList names{"QWidget", "QDialog", "QAction"};
    return names;
}

/// Members that the engine itself gives each object, beside its meta-object.
const QStringList& membersOfTheEngine()
{
    static const QStringList names{"destroy", "toString"};
    return names;
}

} // namespace

Comparison::Comparison(QStringList inHostTypes, QStringList inExceptions)
    : mHostTypes(std::move(inHostTypes))
    , mExceptions(std::move(inExceptions))
{}

bool Comparison::mayBeMissing(const HostClass& inClass, const QString& inName) const
{
    return classesOfQt().contains(inClass.members.value(inName).declaredBy) ||
           mExceptions.contains(inClass.name + "." + inName);
}

QStringList Comparison::ofClass(const HostClass& inClass, const QString& inType,
                                const QJsonObject& inDeclared) const
{
    if (inDeclared.isEmpty())
        return {QString("%1: declare an interface of this name for objects of the class %2")
                    .arg(inType, inClass.name)};

    QStringList found;
    const QJsonObject declared = inDeclared["members"].toObject();
    for (auto member = inClass.members.begin(); member != inClass.members.end(); ++member) {
        const QString name = inType + "." + member.key();
        if (declared.contains(member.key()))
            found.append(ofMember(*member, name, declared[member.key()].toObject()));
        else if (!mayBeMissing(inClass, member.key()))
            found.append(name + ": the engine has it. Declare it, with a comment:\n    " +
                         suggestion(member.key(), *member));
    }
    for (const QString& name : declared.keys()) {
        if (!inClass.members.contains(name) && !membersOfTheEngine().contains(name))
            found.append(inType + "." + name + ": the engine has no such member. Take the declaration out.");
    }
    found.removeAll(QString());
    return found;
}

QString Comparison::ofMember(const HostMember& inMember, const QString& inName,
                             const QJsonObject& inDeclared) const
{
    if (inDeclared["kind"].toString() != kindText(inMember.kind)) {
        return QString("%1: it is a %2, not a %3. Declare it as\n    %4")
            .arg(inName, kindText(inMember.kind), inDeclared["kind"].toString(),
                 suggestion(inName.section('.', -1), inMember));
    }
    if (inMember.kind == HostMember::Property)
        return ofProperty(inMember, inName, inDeclared);
    if (inMember.kind == HostMember::Method)
        return ofSignatures(inName, inMember.signatures, inDeclared["signatures"]).join('\n');
    // A signal is declared with all of its arguments.
    const QJsonArray arguments = inDeclared["signatures"][0]["arguments"].toArray();
    const HostSignature& whole = longest(inMember.signatures);
    if (matches(whole, arguments, {"void"}))
        return QString();
    return QString("%1: declared is %2, but the engine has %3. Declare\n    %4")
        .arg(inName, text(arguments, {"void"}), text(whole), suggestion(inName.section('.', -1), inMember));
}

QString Comparison::ofProperty(const HostMember& inMember, const QString& inName,
                               const QJsonObject& inDeclared) const
{
    const QStringList kinds = Declarations::list(inDeclared["kinds"]);
    if (!fits(inMember.type, kinds))
        return QString("%1: declared is %2, but the engine has %3")
            .arg(inName, kinds.join(" | "), inMember.type);
    if (inDeclared["isReadonly"].toBool() == inMember.isWritable)
        return QString("%1: it is %2 readonly").arg(inName, inMember.isWritable ? "not" : "");
    return QString();
}

QStringList Comparison::ofSignatures(const QString& inName, const QList<HostSignature>& inSignatures,
                                     const QJsonValue& inDeclared) const
{
    QStringList found;
    const auto ways = waysToCall(inDeclared);
    for (const HostSignature& signature : inSignatures) {
        if (std::none_of(ways.begin(), ways.end(),
                         [&](const auto& inWay) { return matches(signature, inWay.first, inWay.second); }))
            found.append(
                QString("%1: the engine has %2, which is not declared").arg(inName, text(signature)));
    }
    for (const auto& way : ways) {
        if (std::none_of(inSignatures.begin(), inSignatures.end(), [&](const auto& inSignature) {
                return matches(inSignature, way.first, way.second);
            }))
            found.append(QString("%1: declared is %2, which the engine does not have")
                             .arg(inName, text(way.first, way.second)));
    }
    if (!found.isEmpty() && !inSignatures.isEmpty()) {
        HostMember member;
        member.kind = HostMember::Method;
        member.signatures = inSignatures;
        found.append("Declare\n    " + suggestion(inName.section('.', -1), member));
    }
    return found;
}

bool Comparison::matches(const HostSignature& inSignature, const QJsonArray& inArguments,
                         const QStringList& inResult) const
{
    if (inSignature.arguments.size() != inArguments.size())
        return false;
    for (qsizetype i = 0; i < inArguments.size(); ++i) {
        const HostArgument& argument = inSignature.arguments.at(i);
        const bool isNamed = !argument.name.isEmpty(); // some of Qt's are not
        if ((isNamed && argument.name != inArguments[i]["name"].toString()) ||
            !fits(argument.type, Declarations::list(inArguments[i]["kinds"])))
            return false;
    }
    return fits(inSignature.result, inResult);
}

bool Comparison::fits(const QString& inQtType, const QStringList& inKinds) const
{
    if (kindOf().contains(inQtType))
        return inKinds == QStringList{kindOf().value(inQtType)};
    if (inQtType == "QVariant" || inQtType == "QJSValue") // any value: the declaration knows more
        return !inKinds.isEmpty() && !inKinds.contains("void");

    QStringList kinds = inKinds;
    kinds.removeAll("null");
    if (kinds.size() != 1)
        return false;
    const QString& kind = kinds.first();
    if (inQtType == "QObject*")
        return mHostTypes.contains(kind);
    if (inQtType == "QObjectList" || inQtType == "QList<QObject*>")
        return kind.startsWith("Array<") && mHostTypes.contains(kind.mid(6).chopped(1));
    if (inQtType == "QVariantList")
        return kind.startsWith("Array<");
    if (inQtType == "QVariantMap")
        return !kind.startsWith("Array<") && !kindOf().values().contains(kind);
    return false;
}

QString Comparison::suggestion(const QString& inName, const HostMember& inMember)
{
    if (inMember.kind == HostMember::Property)
        return QString("%1%2: %3;")
            .arg(inMember.isWritable ? "" : "readonly ", inName, typeScript(inMember.type));
    const HostSignature& whole = longest(inMember.signatures);
    const qsizetype count = whole.arguments.size();
    if (inMember.kind == HostMember::Signal)
        return QString("readonly %1: Signal%2;")
            .arg(inName, count > 0 ? "<[" + text(whole.arguments, count) + "]>" : QString());
    return QString("%1(%2): %3;")
        .arg(inName, text(whole.arguments, fewest(inMember.signatures)), typeScript(whole.result));
}
