#include "KyTestMain.h"

#include <QApplication>
#include <QMetaMethod>
#include <QTest>

namespace {

/// The options of QtTest that take their value from the next argument.
const QStringList& optionsWithValue()
{
    static const QStringList options{
        QStringLiteral("-o"),           QStringLiteral("-maxwarnings"),  QStringLiteral("-eventdelay"),
        QStringLiteral("-keydelay"),    QStringLiteral("-mousedelay"),   QStringLiteral("-repeat"),
        QStringLiteral("-perfcounter"), QStringLiteral("-minimumvalue"), QStringLiteral("-minimumtotal"),
        QStringLiteral("-iterations"),  QStringLiteral("-median"),
    };
    return options;
}

/// The functions that QtTest calls around the tests.
bool isFixture(const QString& inName)
{
    static const QStringList fixtures{QStringLiteral("initTestCase"), QStringLiteral("cleanupTestCase"),
                                      QStringLiteral("init"), QStringLiteral("cleanup")};
    return fixtures.contains(inName) || inName.endsWith(QLatin1String("_data"));
}

} // namespace

int KyTestMain::run(int& ioArgc, char** ioArgv, const Factory& inMakeTest)
{
    QApplication application(ioArgc, ioArgv);
    QApplication::setOrganizationName(QStringLiteral("Ky"));
    QApplication::setApplicationName(QStringLiteral("kytest"));

    const std::unique_ptr<QObject> test = inMakeTest();
    const QStringList given = QApplication::arguments();
    const QStringList all = functions(*test->metaObject());
    const QStringList skipped = qEnvironmentVariable("KY_TEST_SKIP").split(u',', Qt::SkipEmptyParts);
    const QStringList chosen = arguments(given, all, skipped);
    const bool skipsAll = !all.isEmpty() && !skipped.isEmpty() && !namesFunction(chosen);
    return skipsAll ? 0 : QTest::qExec(test.get(), chosen);
}

QStringList KyTestMain::arguments(const QStringList& inGiven, const QStringList& inFunctions,
                                  const QStringList& inSkipped)
{
    if (inSkipped.isEmpty() || namesFunction(inGiven))
        return inGiven;
    QStringList result = inGiven;
    for (const QString& function : inFunctions)
        if (!inSkipped.contains(function))
            result.append(function);
    return result;
}

QStringList KyTestMain::functions(const QMetaObject& inClass)
{
    QStringList names;
    for (int i = inClass.methodOffset(); i < inClass.methodCount(); ++i) {
        const QMetaMethod method = inClass.method(i);
        const QString name = QString::fromLatin1(method.name());
        const bool isTest = method.methodType() == QMetaMethod::Slot &&
                            method.access() == QMetaMethod::Private && method.parameterCount() == 0;
        if (isTest && !isFixture(name))
            names.append(name);
    }
    return names;
}

bool KyTestMain::namesFunction(const QStringList& inArguments)
{
    for (qsizetype i = 1; i < inArguments.size(); ++i) {
        if (!inArguments[i].startsWith(u'-'))
            return true;
        if (optionsWithValue().contains(inArguments[i]))
            ++i;
    }
    return false;
}
