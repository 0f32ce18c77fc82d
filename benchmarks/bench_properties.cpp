// What properties cost a script, beside a bare QObject's of the same type, and how that grows with their
// number.

#include "RatioReport.h"

#include <kyscript/KyScriptEngine.h>

#include <ovbase/OvPropertyPool.h>
#include <ovbase/OvRegistryFileStore.h>

#include <benchmark/benchmark.h>

#include <QtCore/QTemporaryDir>
#include <QtWidgets/QApplication>

#include <memory>

namespace {

/// Properties as Qt has them.
class Bare : public QObject
{
    Q_OBJECT
    Q_PROPERTY(bool flag MEMBER mFlag NOTIFY changed)
    Q_PROPERTY(int number MEMBER mNumber NOTIFY changed)
    Q_PROPERTY(double fraction MEMBER mFraction NOTIFY changed)
    Q_PROPERTY(QString text MEMBER mText NOTIFY changed)
    Q_PROPERTY(QStringList list MEMBER mList NOTIFY changed)

Q_SIGNALS:
    void changed();

private:
    bool mFlag = false;
    int mNumber = 0;
    double mFraction = 0;
    QString mText;
    QStringList mList;
};

struct World
{
    explicit World(std::shared_ptr<OvRegistryStore> inStore = nullptr, int inMore = 0)
        : registry(std::move(inStore))
    {
        OvSerializer* serializer = pool.defaultSerializer();
        pool.property<bool>("B.flag", false, serializer);
        pool.property<int>("B.number", 0, serializer);
        pool.property<double>("B.fraction", 0, serializer);
        pool.property<QString>("B.text", QString(), serializer);
        pool.property<QList<QString>>("B.list", {}, serializer);
        for (int i = 0; i < inMore; ++i)
            pool.property<int>("More.Group" + std::to_string(i % 100) + ".Property" + std::to_string(i), i,
                               serializer);
        QJSEngine::setObjectOwnership(&bare, QJSEngine::CppOwnership);
        engine.globalObject().setProperty(QStringLiteral("bare"), engine.newQObject(&bare));
    }

    OvRegistry registry;
    OvPropertyPool pool;
    Bare bare;
    KyScriptEngine engine{nullptr, ScriptOrvane};
};

/// A script that does \a inStatement a thousand times, with i counting.
QJSValue thousandTimes(World& ioWorld, const QString& inStatement)
{
    return ioWorld.engine.evaluate(
        QStringLiteral("(function() { for (var i = 0; i < 1000; ++i) { %1; } })").arg(inStatement));
}

void add(const std::string& inName, const std::shared_ptr<World>& inWorld, const QString& inStatement)
{
    benchmark::RegisterBenchmark(inName.c_str(), [=](benchmark::State& state) {
        const QJSValue function = thousandTimes(*inWorld, inStatement);
        for (auto _ : state) {
            const QJSValue value = function.call();
            if (value.isError())
                state.SkipWithError(qPrintable(value.toString()));
        }
    });
}

void addType(const std::shared_ptr<World>& inWorld, const char* inProperty, const QString& inValue)
{
    const QString name = QString::fromLatin1(inProperty);
    const std::string read = "1000 reads, " + name.toStdString();
    add(read, inWorld, QStringLiteral("Orvane.propertyVariant('B.%1')").arg(name));
    add(read + "/yardstick", inWorld, QStringLiteral("bare.%1").arg(name));
    const std::string write = "1000 writes, " + name.toStdString();
    add(write, inWorld, QStringLiteral("Orvane.setPropertyVariant('B.%1', %2)").arg(name, inValue));
    add(write + "/yardstick", inWorld, QStringLiteral("bare.%1 = %2").arg(name, inValue));
}

/// The same in a world of few properties and in one of many.
void addNumber(const std::string& inName, const QString& inStatement, const std::shared_ptr<World>& inFew,
               const std::shared_ptr<World>& inMany)
{
    add(inName + "<=1.5", inMany, inStatement);
    add(inName + "/yardstick", inFew, inStatement);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    const auto few = std::make_shared<World>(nullptr, 5);
    addType(few, "flag", QStringLiteral("i % 2 === 0"));
    addType(few, "number", QStringLiteral("i"));
    addType(few, "fraction", QStringLiteral("i + 0.5"));
    addType(few, "text", QStringLiteral("'text ' + i"));
    addType(few, "list", QStringLiteral("['a', 'text ' + i]"));

    const auto many = std::make_shared<World>(nullptr, 9995);
    addNumber("1000 reads among 10 000 properties", QStringLiteral("Orvane.propertyVariant('B.number')"), few,
              many);
    addNumber("1000 writes among 10 000 properties",
              QStringLiteral("Orvane.setPropertyVariant('B.number', i)"), few, many);

    const QTemporaryDir folder;
    const auto filed = std::make_shared<World>(
        std::make_shared<OvRegistryFileStore>(folder.filePath(QStringLiteral("settings"))), 5);
    add("1000 writes to the settings file", filed,
        QStringLiteral("Orvane.setPropertyVariant('B.number', i)"));
    add("1000 writes to the settings file/yardstick", few,
        QStringLiteral("Orvane.setPropertyVariant('B.number', i)"));
    return runWithRatios(argc, argv);
}

#include "bench_properties.moc"
