#pragma once

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

/// The main function of the test programs: a QApplication of the organization "Ky" and the name "kytest",
/// around the test object.
///
/// The environment variable KY_TEST_SKIP holds the names of test functions, separated by commas, that a run
/// leaves out unless the command line names functions itself. Those are the functions that need a process of
/// their own.
class KyTestMain
{
public:
    using Factory = std::function<std::unique_ptr<QObject>()>;

    /// Makes the application, then the object, runs its tests, and gives the exit status.
    static int run(int& ioArgc, char** ioArgv, const Factory& inMakeTest);

    /// The arguments for QTest::qExec: \a inGiven, the program's name first, followed by the name of each
    /// test function that is not one of \a inSkipped. Unchanged when it names functions, or nothing is
    /// skipped.
    static QStringList arguments(const QStringList& inGiven, const QStringList& inFunctions,
                                 const QStringList& inSkipped);

    /// The names of the test functions of a class, in the order of declaration: its private slots without
    /// arguments, less the data functions and those that QtTest calls around the tests.
    static QStringList functions(const QMetaObject& inClass);

    /// Whether \a inArguments, the program's name first, name a test function.
    static bool namesFunction(const QStringList& inArguments);
};
