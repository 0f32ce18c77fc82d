#pragma once

#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QStringList>
#include <QtQml/QJSValue>

#include <memory>

class KyScriptAbstractEngine;
class KyRunTestErrors;

/// `kyrun --test FILES`: runs the tests that script files define with test(), and tells their results in the
/// Test Anything Protocol, version 14, on standard output.
///
/// Each file runs on an engine of its own, which ends with the file. Each test is a run of its own, in the
/// event loop, and over when its function has returned, when the promise that it returned is settled, or when
/// it has called the function that it takes as its argument. A test fails by what it throws, by an error in a
/// handler that comes while it runs, and when it takes longer than its limit. A file fails that cannot be
/// read, ends with an error, or defines no test.
class KyRunTests : public QObject
{
    Q_OBJECT

public:
    explicit KyRunTests(const QStringList& inFiles);
    ~KyRunTests() override;

    /// Runs all tests, in the event loop. Gives 0 when all passed, otherwise 1, or what the script side exits
    /// with.
    int exec();

private:
    void nextFile();
    void define(const QString& inSource);
    void endFile();
    void nextTest();
    void startTest();
    void watchTest();
    void endTest();

    QJSValue ask(const char* inQuestion, const QJSValueList& inArguments = {}) const;
    void tell(bool inIsOk, const QString& inName, const QString& inDirective = QString());
    void tellReasons(const QJSValue& inFailures);
    void tellReason(const QString& inMessage, const QString& inPlace, const QStringList& inOthers = {});
    void failFile(const QString& inReason, const QString& inPlace = QString());

    const QStringList mFiles;
    qsizetype mFile = -1;
    KyScriptAbstractEngine* mFacade = nullptr;
    QJSValue mFramework;
    int mTest = -1;
    QElapsedTimer mTime;
    std::shared_ptr<KyRunTestErrors> mErrors;
    int mTold = 0;
    int mFailed = 0;
};
