// Another client: site_locks_sample KIND ADDRESS USER takes the locks of the studies 0 to 99, one after the
// other, once a line comes on its standard input, and prints the numbers of those that it has won.

#include <kysite/KySqlReportLockStore.h>
#include <ovwebservice/WorklistEntry.h>

#include <QtCore/QCoreApplication>

#include <cstdio>
#include <iostream>

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = QCoreApplication::arguments();
    KyDatabaseSettings settings;
    settings.timeoutSeconds = 60;
    settings.name = arguments.value(2);
    if (arguments.value(1) == QLatin1String("postgres")) {
        settings.kind = KyDatabaseSettings::Kind::Postgres;
        settings.host = QStringLiteral("127.0.0.1");
        settings.port = arguments.value(2).toInt();
        settings.name = QStringLiteral("postgres");
        settings.user = QStringLiteral("ky");
    }
    KySqlReportLockStore locks(settings);
    std::puts("ready");
    std::fflush(stdout);
    std::string line;
    std::getline(std::cin, line);
    std::string won;
    for (int i = 0; i < 100; ++i) {
        Ovg::WorklistEntry entry;
        entry.studyInstanceUid = "1.2." + std::to_string(i);
        const RnResult result = locks.lock(entry, arguments.value(3));
        if (result.isOk())
            won += " " + std::to_string(i);
        else if (!result.text().str().starts_with("Locked by "))
            won += " error:" + result.text().str();
    }
    std::printf("won%s\n", won.c_str());
    return 0;
}
