// kysample: writes the sample studies, synthetic series of a chest phantom.

#include "SampleStudies.h"

#include <QCommandLineParser>
#include <QCoreApplication>

#include <cstdio>

namespace {

constexpr int exitFailure = 1;
constexpr int exitUsage = 2;

int fail(int inStatus, const QString& inText)
{
    std::fprintf(stderr, "kysample: %s\n", qUtf8Printable(inText));
    return inStatus;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication app(argc, argv);
    QCommandLineParser parser;
    parser.setApplicationDescription(QStringLiteral("Writes synthetic studies for trying out and testing."));
    parser.addHelpOption();
    parser.addPositionalArgument(QStringLiteral("OUTDIR"), QStringLiteral("Folder to write to."));
    const QCommandLineOption instances(
        QStringLiteral("instances"),
        QStringLiteral("Write N instances for measurements instead of the sample."), QStringLiteral("N"));
    const QCommandLineOption fusion(
        QStringLiteral("fusion"),
        QStringLiteral("Add a PET series to one of the CT studies, to be fused into it."));
    parser.addOptions({instances, fusion});
    if (!parser.parse(app.arguments()))
        return fail(exitUsage, parser.errorText());
    if (parser.isSet(QStringLiteral("help")))
        parser.showHelp();
    if (parser.positionalArguments().size() != 1)
        return fail(exitUsage, QStringLiteral("one output folder is needed, see --help"));

    bool ok = true;
    const int count = parser.isSet(instances) ? parser.value(instances).toInt(&ok) : 1;
    if (!ok || count < 1)
        return fail(exitUsage, QStringLiteral("--instances takes a number from 1"));
    std::vector<SampleSeries> all = parser.isSet(instances) ? manyInstances(count) : sampleSeries();
    const std::vector<SampleSeries> more =
        parser.isSet(fusion) ? fusionSeries() : std::vector<SampleSeries>();
    all.insert(all.end(), more.begin(), more.end());
    for (const SampleSeries& series : all) {
        const QString error = writeSampleSeries(series, parser.positionalArguments().constFirst());
        if (!error.isEmpty())
            return fail(exitFailure, error);
    }
    return 0;
}
