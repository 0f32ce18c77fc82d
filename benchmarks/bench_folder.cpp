// Opening a folder of 2000 CT instances against DCMTK's own loader in a plain loop over the same files.
//
// The yardstick starts from a list of paths that is ready; the study source also finds the files, groups and
// sorts the instances and builds the study objects.

#include "RatioReport.h"

#include <ovwebservice/DicomDirectoryEntry.h>
#include <ovwebservice/FolderStudySource.h>

#include "dcmtk/config/osconfig.h"
#include "dcmtk/dcmdata/dctk.h"

#include <benchmark/benchmark.h>

#include <QCoreApplication>
#include <QDirIterator>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>

#include <cstdio>
#include <vector>

namespace {

constexpr int instances = 2000;

std::vector<QByteArray> filesBelow(const QString& inFolder)
{
    std::vector<QByteArray> files;
    QDirIterator it(inFolder, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext())
        files.push_back(QFile::encodeName(it.next()));
    return files;
}

void openFolder(benchmark::State& ioState, const QString& inFolder)
{
    for (auto _ : ioState) {
        const Ovg::StudySourceResult result = Ovg::FolderStudySource(inFolder).load();
        if (result.instances != instances)
            ioState.SkipWithError("not all instances were found");
    }
}

void loadFiles(benchmark::State& ioState, const std::vector<QByteArray>& inFiles)
{
    for (auto _ : ioState) {
        for (const QByteArray& file : inFiles) {
            DcmFileFormat format;
            if (format.loadFile(file.constData()).bad())
                ioState.SkipWithError("a file could not be read");
        }
    }
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QTemporaryDir folder;
    const QString path = folder.path();
    if (QProcess::execute(QStringLiteral(KYSAMPLE),
                          {QStringLiteral("--instances"), QString::number(instances), path}) != 0)
    {
        std::fputs("the sample can't be written\n", stderr);
        return 1;
    }
    const std::vector<QByteArray> files = filesBelow(path);
    benchmark::RegisterBenchmark("folder of 2000 instances<=0.7", [path](benchmark::State& state) {
        openFolder(state, path);
    })->UseRealTime();
    benchmark::RegisterBenchmark("folder of 2000 instances/yardstick", [files](benchmark::State& state) {
        loadFiles(state, files);
    })->UseRealTime();
    return runWithRatios(argc, argv);
}
