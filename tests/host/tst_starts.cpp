// What scripts store, from one start of the real programs to the next, also when they are killed, run at
// once, or can't write.

#include <support/KyTest.h>

#include <ovbase/OvRegistryFileStore.h>

#include <QDir>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <csignal>
#include <memory>

#include <sys/resource.h>
#include <unistd.h>

namespace {

constexpr int Wait = 60'000;

constexpr uid_t Nobody = 65534;

bool othersMayRun(const QString& inProgram)
{
    for (QFileInfo path(inProgram); !path.isRoot(); path = QFileInfo(path.path())) {
        if (!path.permission(QFile::ExeOther))
            return false;
    }
    return true;
}

} // namespace

class tst_starts : public QObject
{
    Q_OBJECT

private slots:
    void init();

    void valueOfAScriptIsThereAtTheNextStart();
    void removalRestoresWhatLayUnderneath();
    void settingOfTheSessionHidesTheScripts();
    void registeredPropertyHasItsValueAgain();
    void killedWorkstationLosesNoCommittedValue();
    void programsAtOnceNeitherLoseNorMixValues();
    void registryValuesAreThereAtTheNextStart();
    void registryValuesStayInTheProfile();
    void withoutAProfileNothingIsLeftBehind();
    void settingsThatCannotBeWrittenKeepTheOldValues_data();
    void settingsThatCannotBeWrittenKeepTheOldValues();
    void truncatedSettingsKeepWhatCanBeRead();

private:
    QString write(const QString& inName, const QString& inText) const;
    /// Starts the workstation with a script, and gives it when the script has written its last line.
    std::unique_ptr<QProcess> startWorkstation(const QString& inSource, const QStringList& inOptions = {});
    /// What the script of one start of the workstation says.
    QString start(const QString& inSource, const QStringList& inOptions = {});
    void end(QProcess& ioProgram) const;
    /// What kyrun prints.
    QString run(const QString& inSource, const QStringList& inOptions = {}) const;
    QString settings() const { return mProfile->filePath("settings"); }

    std::unique_ptr<QTemporaryDir> mProfile;
    QTemporaryDir mFolder;
    int mStarts = 0;
};

void tst_starts::init()
{
    mProfile = std::make_unique<QTemporaryDir>();
}

QString tst_starts::write(const QString& inName, const QString& inText) const
{
    const QString path = mFolder.filePath(inName);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(inText.toUtf8()) < 0)
        qFatal("no room for %s", qPrintable(path));
    return path;
}

std::unique_ptr<QProcess> tst_starts::startWorkstation(const QString& inSource, const QStringList& inOptions)
{
    const QString script = write(QStringLiteral("start%1.js").arg(++mStarts), inSource);
    auto program = std::make_unique<QProcess>();
    program->setReadChannel(QProcess::StandardError);
    program->start(KYWORKSTATION,
                   QStringList{"--profile", mProfile->path(), "--log", "-", "--run", script} + inOptions);
    return program;
}

QString tst_starts::start(const QString& inSource, const QStringList& inOptions)
{
    const auto program = startWorkstation(
        QStringLiteral("function say(text) { Message.error('<' + text + '>', 'Test'); }\n") + inSource,
        inOptions);
    QString log;
    QRegularExpressionMatch said;
    const auto hasSaid = [&] {
        log += QString::fromUtf8(program->readAllStandardError());
        said = QRegularExpression("\\[Test\\] <(.*)>\n").match(log);
        return said.hasMatch();
    };
    [&] { QTRY_VERIFY2_WITH_TIMEOUT(hasSaid(), qPrintable(log), Wait); }();
    end(*program);
    return said.captured(1);
}

void tst_starts::end(QProcess& ioProgram) const
{
    ioProgram.terminate();
    QVERIFY(ioProgram.waitForFinished(Wait));
}

QString tst_starts::run(const QString& inSource, const QStringList& inOptions) const
{
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(KYRUN,
                  QStringList{"--profile", mProfile->path()} + inOptions + QStringList{"-p", "-e", inSource});
    if (!program.waitForFinished(Wait) || program.exitStatus() != QProcess::NormalExit)
        return "crashed or hung: " + program.readAll();
    return QString::fromUtf8(program.readAll()).trimmed();
}

void tst_starts::valueOfAScriptIsThereAtTheNextStart()
{
    QCOMPARE(start("var id = 'Scripting.LogNumLines'; var before = Orvane.propertyVariant(id);"
                   "Orvane.setPropertyVariant(id, 7); say(before + ' ' + Orvane.propertyVariant(id));"),
             QStringLiteral("1 7"));
    QCOMPARE(start("say(Orvane.propertyVariant('Scripting.LogNumLines'))"), QStringLiteral("7"));
}

void tst_starts::removalRestoresWhatLayUnderneath()
{
    {
        // What the user has chosen.
        OvRegistryFileStore store(settings());
        QVERIFY(store.apply({"Scripting.LogNumLines", 1000, OvRegistryValue{"3", "test"}}));
    }
    QCOMPARE(start("var id = 'Scripting.LogNumLines'; var before = Orvane.propertyVariant(id);"
                   "Orvane.setPropertyValue(id, '9'); say(before + ' ' + Orvane.propertyVariant(id));"),
             QStringLiteral("3 9"));
    QCOMPARE(start("var id = 'Scripting.LogNumLines'; var before = Orvane.propertyVariant(id);"
                   "Orvane.removePropertyValue(id); say(before + ' ' + Orvane.propertyVariant(id));"),
             QStringLiteral("9 3"));
    QCOMPARE(start("say(Orvane.propertyVariant('Scripting.LogNumLines'))"), QStringLiteral("3"));
    OvRegistryFileStore store(settings());
    QCOMPARE(store.content().value("Scripting.LogNumLines").size(), std::size_t(1));
}

void tst_starts::settingOfTheSessionHidesTheScripts()
{
    QCOMPARE(start("Orvane.setPropertyVariant('Scripting.LogNumLines', 7); say('set')"),
             QStringLiteral("set"));
    const QStringList options{"--property", "Scripting.LogNumLines=2"};
    QCOMPARE(start("say(Orvane.propertyVariant('Scripting.LogNumLines'))", options), QStringLiteral("2"));
    QCOMPARE(start("say(Orvane.propertyVariant('Scripting.LogNumLines'))"), QStringLiteral("7"));
}

void tst_starts::registeredPropertyHasItsValueAgain()
{
    const QString registration = "Orvane.registerProperty('My.Names', 'Mine.Names', ['none']);";
    QCOMPARE(start(registration +
                   QStringLiteral("Orvane.setPropertyVariant('My.Names', ['\u65e5\u672c', 'a,b', '']);"
                                  "say(Orvane.propertyValue('My.Names'))")),
             QStringLiteral("??,\"a,b\",\"\""));
    QCOMPARE(start("say(typeof Orvane.propertyVariant('My.Names'))"), QStringLiteral("undefined"));
    QCOMPARE(start(registration + "say(JSON.stringify(Orvane.propertyVariant('My.Names').map(escape)))"),
             QStringLiteral("[\"%u65E5%u672C\",\"a%2Cb\",\"\"]"));
    QCOMPARE(
        start(registration + "Orvane.removePropertyValue('My.Names'); say(Orvane.propertyValue('My.Names'))"),
        QStringLiteral("none"));
}

/// Each number is told when its write has returned; all that were told must be there.
void tst_starts::killedWorkstationLosesNoCommittedValue()
{
    const auto program = startWorkstation(
        "Orvane.registerProperty('Kill.Number', 'Kill.Number', 0);\n"
        "var t = new Timer(), i = 0;\n"
        "for (var k = 0; k < 40; ++k) Orvane.registerProperty('Kill.N' + k, 'Kill.N' + k, 0);\n"
        "t.timeout.connect(function() {\n"
        "    for (var end = i + 200; i < end;) {\n"
        "        ++i;\n"
        "        Orvane.setPropertyVariant('Kill.N' + i % 40, i);\n"
        "        Message.error('stored ' + i, 'Test');\n"
        "    }\n"
        "});\n"
        "t.start(0);\n");
    QByteArray told;
    QTRY_VERIFY2_WITH_TIMEOUT((told += program->readAllStandardError()).count("stored ") > 700, told, Wait);
    QCOMPARE(program->state(), QProcess::Running);
    program->kill();
    QVERIFY(program->waitForFinished(Wait));
    QCOMPARE(program->exitStatus(), QProcess::CrashExit);
    told += program->readAllStandardError();
    // The last line may have been cut.
    const auto last = told.lastIndexOf("stored ", told.lastIndexOf('\n'));
    const int stored = told.mid(last + 7, told.indexOf('\n', last) - last - 7).toInt();
    QVERIFY2(stored > 700, told.right(300));

    const QString found = start("var found = [];"
                                "for (var k = 0; k < 40; ++k) {"
                                "    Orvane.registerProperty('Kill.N' + k, 'Kill.N' + k, 0);"
                                "    found.push(Orvane.propertyVariant('Kill.N' + k));"
                                "} say(found.join())");
    const QStringList numbers = found.split(',');
    QCOMPARE(numbers.size(), 40);
    for (int k = 0; k < 40; ++k) {
        // The newest number of this place that was told, or a newer one.
        const int newest = stored - (stored - k + 40) % 40;
        const int number = numbers[k].toInt();
        QVERIFY2(number >= newest && number % 40 == k,
                 qPrintable(found + " after " + QString::number(stored)));
    }
}

void tst_starts::programsAtOnceNeitherLoseNorMixValues()
{
    constexpr int Count = 150;
    const QStringList names{"A", "B", "C"};
    std::vector<std::unique_ptr<QProcess>> programs;
    for (const QString& name : names) {
        const QString script =
            QStringLiteral(
                "var name = '%1'; for (var i = 0; i < %2; ++i) {"
                "    var own = 'At.Once.' + name + i;"
                "    Orvane.registerProperty(own, own, ''); Orvane.setPropertyVariant(own, name + i);"
                "    if (i % 3 === 0) Orvane.removePropertyValue(own);"
                "    Orvane.registerProperty('At.Shared', 'At.Shared', '');"
                "    Orvane.setPropertyVariant('At.Shared', name + i);"
                "}")
                .arg(name)
                .arg(Count);
        programs.push_back(std::make_unique<QProcess>());
        programs.back()->start(KYRUN, {"--profile", mProfile->path(), write("once" + name + ".js", script)});
    }
    for (const auto& program : programs) {
        QVERIFY(program->waitForFinished(Wait));
        QCOMPARE(program->readAllStandardError(), QByteArray());
        QCOMPARE(program->exitCode(), 0);
    }
    OvRegistryFileStore store(settings());
    const OvRegistryStore::Content content = store.content();
    for (const QString& name : names) {
        for (int i = 0; i < Count; ++i) {
            const QString id = QStringLiteral("At.Once.%1%2").arg(name).arg(i);
            QCOMPARE(content.contains(id), i % 3 != 0);
            if (i % 3 != 0)
                QCOMPARE(content.value(id).at(3000).value, QStringLiteral("%1%2").arg(name).arg(i));
        }
    }
    const QString shared = content.value("At.Shared").at(3000).value;
    QVERIFY2(names.contains(shared.left(1)) && shared.mid(1).toInt() == Count - 1, qPrintable(shared));
}

void tst_starts::registryValuesAreThereAtTheNextStart()
{
    QCOMPARE(
        start("Orvane.setRegistryValue('Mine/List', ['a', 'b']); Orvane.setRegistryValue('Mine/Text', "
              "'\\u65e5');"
              "Orvane.setRegistryValue('HKEY_CURRENT_USER\\\\Software\\\\Mine\\\\Number', 42); say('set')"),
        QStringLiteral("set"));
    QCOMPARE(start("say([Orvane.getRegistryValue('Mine/List').join('+'), "
                   "escape(Orvane.getRegistryValue('Mine/Text')),"
                   "Orvane.getRegistryValue('HKEY_CURRENT_USER/Software/Mine/Number') * 2,"
                   "Orvane.registryKeys('HKEY_CURRENT_USER').join('+'), "
                   "Orvane.registryKeys('Mine').join('+')].join())"),
             QStringLiteral("a+b,%u65E5,84,Software/Mine/Number,List+Text"));
}

void tst_starts::registryValuesStayInTheProfile()
{
    const QTemporaryDir home;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.insert("XDG_CONFIG_HOME", home.filePath("config"));
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(home.path());
    program.start(KYRUN, {"--profile", mProfile->path(), "-e",
                          "Orvane.setRegistryValue('a', 1); Orvane.setRegistryValue('\\\\A\\\\b', 1)"});
    QVERIFY(program.waitForFinished(Wait));
    QCOMPARE(program.exitCode(), 0);
    QVERIFY(!QFile::exists(home.filePath("config/Ky")));
    QVERIFY(QDir(home.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
    QVERIFY(QFile::exists(mProfile->filePath("Ky/Workstation.conf")));
    QVERIFY(QFile::exists(mProfile->filePath("Ky/Registry.ini")));
}

void tst_starts::withoutAProfileNothingIsLeftBehind()
{
    const QTemporaryDir home;
    QProcess program;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("HOME", home.path());
    environment.remove("XDG_CONFIG_HOME");
    QVERIFY(QDir(home.path()).mkdir("tmp"));
    environment.insert("TMPDIR", home.filePath("tmp"));
    program.setProcessEnvironment(environment);
    program.setWorkingDirectory(home.path());
    program.start(KYRUN, {"-p", "-e",
                          "Orvane.setRegistryValue('a', 'x'); Orvane.setRegistryValue('/A/b', 'y');"
                          "Orvane.getRegistryValue('a') + Orvane.getRegistryValue('/A/b')"});
    QVERIFY(program.waitForFinished(Wait));
    QCOMPARE(program.readAllStandardOutput(), QByteArray("xy\n"));
    QVERIFY(!QFile::exists(home.filePath(".config/Ky")));
    QCOMPARE(QDir(home.filePath("tmp")).entryList({"ky-*"}, QDir::AllEntries | QDir::Hidden), QStringList());
    QVERIFY(QDir(home.path()).entryList(QDir::Files | QDir::Hidden).isEmpty());
}

void tst_starts::settingsThatCannotBeWrittenKeepTheOldValues_data()
{
    QTest::addColumn<QString>("obstacle");
    QTest::addColumn<QString>("told");
    QTest::newRow("no room for more") << "size"
                                      << "can't be written (File too large)";
    QTest::newRow("no rights") << "rights"
                               << "Permission denied";
}

void tst_starts::settingsThatCannotBeWrittenKeepTheOldValues()
{
    QFETCH(QString, obstacle);
    QFETCH(QString, told);
    const QString registration = "Orvane.registerProperty('Full.Text', 'Full.Text', 'default');";
    QCOMPARE(run(registration +
                 "Orvane.setPropertyVariant('Full.Text', 'old'); Orvane.propertyValue('Full.Text')"),
             QStringLiteral("old"));
    const auto size = QFileInfo(settings()).size();

    QProcess program;
    const bool needsNobody = obstacle == "rights" && geteuid() == 0;
    if (needsNobody && !othersMayRun(KYRUN))
        QSKIP("another user can't run the program here");
    if (obstacle == "rights") {
        QFile::setPermissions(settings(), QFile::Permissions(0x4444));
        QFile::setPermissions(settings() + ".lock", QFile::Permissions(0x4444));
        // The session log tells for itself when it can't be written.
        QFile::setPermissions(mProfile->filePath("session.log"), QFile::Permissions(0x6666));
        QFile::setPermissions(mProfile->path(), QFile::Permissions(0x7777));
    }
    program.setChildProcessModifier([&] {
        std::signal(SIGXFSZ, SIG_IGN);
        const rlimit bounds{rlim_t(size + 20), rlim_t(size + 20)};
        if (obstacle == "size")
            setrlimit(RLIMIT_FSIZE, &bounds);
        if (needsNobody && setuid(Nobody) != 0)
            _exit(99);
    });
    program.start(KYRUN, {"--profile", mProfile->path(), "-p", "-e",
                          registration +
                              "for (var i = 0; i < 5; ++i) Orvane.setPropertyVariant('Full.Text', 'new' + i);"
                              "Orvane.propertyValue('Full.Text')"});
    QVERIFY(program.waitForFinished(Wait));
    QCOMPARE(program.exitCode(), 0);
    QCOMPARE(program.readAllStandardOutput(), QByteArray("new4\n")); // it holds in this process
    const QByteArray log = program.readAllStandardError();
    QCOMPARE(log.count('\n'), 1);
    QVERIFY2(log.contains("settings file \"") && log.contains(told.toUtf8()), log);

    QFile::setPermissions(settings() + ".lock", QFile::Permissions(0x6666));
    QFile::setPermissions(settings(), QFile::Permissions(0x6666));
    QCOMPARE(run(registration + "Orvane.propertyValue('Full.Text')"), QStringLiteral("old"));
}

void tst_starts::truncatedSettingsKeepWhatCanBeRead()
{
    const QString registration = "Orvane.registerProperty('Cut.A', 'Cut.A', 'default');"
                                 "Orvane.registerProperty('Cut.B', 'Cut.B', 'default');";
    run(registration + "Orvane.setPropertyVariant('Cut.A', 'a'); Orvane.setPropertyVariant('Cut.B', 'b')");
    QFile file(settings());
    QVERIFY(file.resize(file.size() - 5));
    const QString found =
        run(registration + "Orvane.propertyValue('Cut.A') + ' ' + Orvane.propertyValue('Cut.B')");
    QVERIFY2(found.endsWith("a default"), qPrintable(found));
    QCOMPARE(found.count("damaged, unreadable lines: 1"), 1);
    QCOMPARE(found.count('\n'), 1);
    QCOMPARE(run(registration + "Orvane.setPropertyVariant('Cut.B', 'c'); Orvane.propertyValue('Cut.B')"),
             QStringLiteral("c"));
    QCOMPARE(run(registration + "Orvane.propertyValue('Cut.A') + Orvane.propertyValue('Cut.B')"),
             QStringLiteral("ac"));
}

KY_TEST_MAIN(tst_starts)
#include "tst_starts.moc"
