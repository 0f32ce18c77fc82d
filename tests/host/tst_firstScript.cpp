// The page for beginners, followed literally: its files are written, its commands run by a shell, and each
// has to print what the page shows.

#include <support/KyTest.h>

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

class tst_firstScript : public QObject
{
    Q_OBJECT

private slots:
    void pageIsFollowedLiterally();

private:
    struct Step
    {
        QString name;
        QString text;
    };
    static QList<Step> steps();
    void makeClone();
    QString follow(const QList<Step>& inSteps);
    void put(const QString& inName, const QByteArray& inText);

    QTemporaryDir mClone;
};

/// The blocks of the page in their order: files by their names, and commands without one.
QList<tst_firstScript::Step> tst_firstScript::steps()
{
    QFile page(PAGE);
    if (!page.open(QIODevice::ReadOnly))
        return {};
    const QRegularExpression block("```(js|xml|console)\n(.*?)```",
                                   QRegularExpression::DotMatchesEverythingOption);
    const QRegularExpression named("^(?:// |<!-- )(\\S+)");
    QList<Step> steps;
    for (const auto& match : block.globalMatch(QString::fromUtf8(page.readAll()))) {
        const QString text = match.captured(2);
        steps.append({match.captured(1) == "console" ? QString() : named.match(text).captured(1), text});
    }
    return steps;
}

void tst_firstScript::put(const QString& inName, const QByteArray& inText)
{
    const QString path = QDir(mClone.path()).filePath(inName);
    QVERIFY(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly) && file.write(inText) == inText.size());
    QVERIFY(file.setPermissions(file.permissions() | QFile::ExeOwner));
}

/// What the first command leaves behind in a clone, with the programs of this build.
void tst_firstScript::makeClone()
{
    const QDir clone(mClone.path());
    QVERIFY(clone.mkpath("build/release/bin") && clone.mkpath("examples"));
    QVERIFY(QFile::link(KYRUN, clone.filePath("build/release/bin/kyrun")));
    QVERIFY(QFile::link(SCRIPTS, clone.filePath("examples/scripts")));
    QCOMPARE(QProcess::execute(KYSAMPLE, {"--fusion", clone.filePath("build/sample")}), 0);
    put("scripts/run",
        "#!/bin/sh\nexec build/release/bin/kyrun --studies build/sample examples/scripts/list_studies.js\n");
}

/// One shell for all. What each block prints stands between marks.
QString tst_firstScript::follow(const QList<Step>& inSteps)
{
    QString script = "set -u\n";
    for (const Step& step : inSteps) {
        if (!step.name.isEmpty()) {
            put("my-scripts/" + step.name, step.text.toUtf8());
            continue;
        }
        script += "printf '<<<\\n'\n";
        for (const QString& line : step.text.split('\n')) {
            if (line.startsWith("$ "))
                script += "{ " + line.mid(2) + "; } 2>&1\n";
        }
    }
    QProcess shell;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("LC_ALL", "C.UTF-8");
    shell.setProcessEnvironment(environment);
    shell.setWorkingDirectory(mClone.path());
    shell.start("bash", {"-c", script});
    if (!shell.waitForFinished(120'000))
        return "hung";
    return QString::fromUtf8(shell.readAllStandardOutput() + shell.readAllStandardError());
}

void tst_firstScript::pageIsFollowedLiterally()
{
    const QList<Step> page = steps();
    QStringList shown;
    for (const Step& step : page) {
        if (!step.name.isEmpty())
            continue;
        QStringList lines = step.text.split('\n');
        lines.removeIf([](const QString& line) { return line.startsWith("$ "); });
        shown.append(lines.join('\n'));
    }
    QVERIFY(shown.size() >= 6 && page.size() - shown.size() >= 4);
    makeClone();
    QStringList printed = follow(page).split("<<<\n");
    QCOMPARE(printed.takeFirst(), QString());
    QCOMPARE(printed, shown);
}

KY_TEST_MAIN(tst_firstScript)

#include "tst_firstScript.moc"
