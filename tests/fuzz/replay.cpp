// Gives a fuzz target the files of a folder, and variations of each that are the same every time:
// PROGRAM FOLDER [VARIATIONS]

#include <QByteArray>
#include <QDir>
#include <QFile>

#include <cstdint>
#include <cstdio>
#include <random>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* inData, std::size_t inSize);
extern "C" void fuzzFinish();

namespace {

void give(const QByteArray& inBytes)
{
    LLVMFuzzerTestOneInput(reinterpret_cast<const std::uint8_t*>(inBytes.constData()),
                           static_cast<std::size_t>(inBytes.size()));
}

/// Changes, leaves out, or doubles a part.
QByteArray varied(QByteArray inBytes, std::mt19937& ioRandom)
{
    const auto below = [&](qsizetype inEnd) {
        return inEnd > 0 ? static_cast<qsizetype>(ioRandom() % static_cast<unsigned>(inEnd)) : 0;
    };
    for (auto changes = 1 + below(4); changes > 0; --changes) {
        const qsizetype at = below(inBytes.size()), length = below(inBytes.size() - at);
        switch (below(4)) {
        case 0:
            if (!inBytes.isEmpty())
                inBytes[at] = static_cast<char>(ioRandom());
            break;
        case 1:
            inBytes.remove(at, length);
            break;
        case 2:
            inBytes.insert(at, inBytes.mid(below(inBytes.size()), below(64)));
            break;
        default:
            inBytes.truncate(at);
            break;
        }
    }
    return inBytes;
}

} // namespace

int main(int argc, char** argv)
{
    const QDir folder(QString::fromLocal8Bit(argc > 1 ? argv[1] : "."));
    const int variations = argc > 2 ? std::atoi(argv[2]) : 20;
    const QStringList names = folder.entryList(QDir::Files, QDir::Name);
    for (const QString& name : names) {
        QFile file(folder.filePath(name));
        if (!file.open(QIODevice::ReadOnly))
            return 2;
        const QByteArray bytes = file.readAll();
        std::mt19937 random(1);
        give(bytes);
        for (int i = 0; i < variations; ++i)
            give(varied(bytes, random));
    }
    fuzzFinish();
    std::printf("%d files, %d variations of each\n", static_cast<int>(names.size()), variations);
    return names.isEmpty() ? 1 : 0;
}
