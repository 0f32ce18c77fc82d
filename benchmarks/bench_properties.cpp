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

public:
    Q_INVOKABLE QVariant value(const QString&) const { return mNumber; }
    Q_INVOKABLE bool setValue(const QString&, const QVariant& inValue)
    {
        mNumber = inValue.toInt();
        return true;
    }

Q_SIGNALS:
    void changed();

private:
    bool mFlag = false;
    int mNumber = 0;
    double mFraction = 0;
    QString mText;
    QStringList mList;
};

enum class Store
{
    Memory,
    File,
};

/// One at a time: the newest pool is that of the scripts.
struct World
{
    World(int inMore, Store inStore)
        : registry(inStore == Store::File
                       ? std::make_shared<OvRegistryFileStore>(folder.filePath(QStringLiteral("settings")))
                       : nullptr)
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

    QTemporaryDir folder;
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

struct Setting
{
    int more = 5; ///< Properties beside the five that are used.
    Store store = Store::Memory;
};

void add(const std::string& inName, const QString& inStatement, Setting inSetting = {})
{
    benchmark::RegisterBenchmark(inName.c_str(), [=](benchmark::State& state) {
        World world(inSetting.more, inSetting.store);
        const QJSValue function = thousandTimes(world, inStatement);
        for (auto _ : state) {
            const QJSValue value = function.call();
            if (value.isError())
                state.SkipWithError(qPrintable(value.toString()));
        }
    });
}

void addType(const char* inProperty, const QString& inValue)
{
    const QString name = QString::fromLatin1(inProperty);
    const std::string read = "1000 reads, " + name.toStdString();
    add(read, QStringLiteral("Orvane.propertyVariant('B.%1')").arg(name));
    add(read + "/yardstick", QStringLiteral("bare.%1").arg(name));
    const std::string write = "1000 writes, " + name.toStdString();
    add(write, QStringLiteral("Orvane.setPropertyVariant('B.%1', %2)").arg(name, inValue));
    add(write + "/yardstick", QStringLiteral("bare.%1 = %2").arg(name, inValue));
}

/// The same with other properties, or another store, and in a plain world.
void addAgainstPlain(const std::string& inName, const std::string& inGoal, const QString& inStatement,
                     Setting inSetting)
{
    add(inName + inGoal, inStatement, inSetting);
    add(inName + "/yardstick", inStatement);
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    addType("flag", QStringLiteral("i % 2 === 0"));
    addType("number", QStringLiteral("i"));
    addType("fraction", QStringLiteral("i + 0.5"));
    addType("text", QStringLiteral("'text ' + i"));
    addType("list", QStringLiteral("['a', 'text ' + i]"));

    const QString read = QStringLiteral("Orvane.propertyVariant('B.number')");
    const QString write = QStringLiteral("Orvane.setPropertyVariant('B.number', i)");
    add("1000 reads, against a bare call<=1.5", read);
    add("1000 reads, against a bare call/yardstick", QStringLiteral("bare.value('B.number')"));
    add("1000 writes, against a bare call", write);
    add("1000 writes, against a bare call/yardstick", QStringLiteral("bare.setValue('B.number', i)"));
    addAgainstPlain("1000 reads among 10 000 properties", "<=1.5", read, {9995, Store::Memory});
    addAgainstPlain("1000 writes among 10 000 properties", "<=1.5", write, {9995, Store::Memory});
    addAgainstPlain("1000 writes to the settings file", "", write, {5, Store::File});
    return runWithRatios(argc, argv);
}

#include "bench_properties.moc"
