// Set operations on study lists against those of the standard library on sorted entries.

#include "RatioReport.h"

#include <kyscript/KyScriptStudy.h>

#include <ovwebservice/DicomDirectoryEntry.h>

#include <benchmark/benchmark.h>

#include <QtWidgets/QApplication>

#include <algorithm>
#include <memory>
#include <random>
#include <vector>

namespace {

using Entry = std::shared_ptr<Ovg::DicomDirectoryEntry>;
using Entries = std::vector<Entry>;

Entry study(int inNumber)
{
    Ovg::DicomHeader header;
    header.setText(Ovg::DicomTagPath::fromText(QStringLiteral("PatientName")),
                   QStringLiteral("Patient%1^Name").arg(inNumber / 3, 6, 10, QLatin1Char('0')));
    header.setText(Ovg::DicomTagPath::fromText(QStringLiteral("PatientID")), QString::number(inNumber / 3));
    header.setText(Ovg::DicomTagPath::fromText(QStringLiteral("StudyInstanceUID")),
                   QStringLiteral("1.2.3.%1").arg(inNumber));
    return std::make_shared<Ovg::DicomDirectoryEntry>(header);
}

/// Two lists of \a inCount studies that share half of them.
struct Lists
{
    explicit Lists(int inCount, bool inShuffled)
    {
        Entries all;
        for (int i = 0; i < inCount * 3 / 2; ++i)
            all.push_back(study(i));
        a.assign(all.begin(), all.begin() + inCount);
        b.assign(all.end() - inCount, all.end());
        if (inShuffled) {
            std::mt19937 random(17);
            std::shuffle(a.begin(), a.end(), random);
            std::shuffle(b.begin(), b.end(), random);
        } else {
            std::sort(a.begin(), a.end(), less);
            std::sort(b.begin(), b.end(), less);
        }
        objectsA = wrap(a);
        objectsB = wrap(b);
    }

    static bool less(const Entry& inA, const Entry& inB) { return *inA < *inB; }

    QObjectList wrap(const Entries& inEntries)
    {
        QObjectList objects;
        for (const Entry& entry : inEntries) {
            wrappers.push_back(std::make_unique<KyScriptStudy>(entry));
            objects.append(wrappers.back().get());
        }
        return objects;
    }

    Entries a, b;
    QObjectList objectsA, objectsB;
    std::vector<std::unique_ptr<KyScriptStudy>> wrappers;
};

using Operation = QObjectList (KyScriptStudyList::*)(QObjectList, QObjectList) const;

template <class Reference>
void add(const std::string& inName, Operation inOperation, Reference inReference,
         const std::shared_ptr<Lists>& inLists, bool inSorts)
{
    benchmark::RegisterBenchmark((inName + "<=2.0").c_str(), [=](benchmark::State& state) {
        const KyScriptStudyList list(nullptr);
        for (auto _ : state)
            benchmark::DoNotOptimize((list.*inOperation)(inLists->objectsA, inLists->objectsB));
    });
    benchmark::RegisterBenchmark((inName + "/yardstick").c_str(), [=](benchmark::State& state) {
        for (auto _ : state) {
            Entries result;
            if (inSorts) {
                Entries a = inLists->a, b = inLists->b;
                std::stable_sort(a.begin(), a.end(), Lists::less);
                std::stable_sort(b.begin(), b.end(), Lists::less);
                inReference(a, b, result);
            } else {
                inReference(inLists->a, inLists->b, result);
            }
            benchmark::DoNotOptimize(result);
        }
    });
}

} // namespace

int main(int argc, char** argv)
{
    QApplication application(argc, argv);
    for (const bool shuffled : {false, true}) {
        for (const int count : {10, 1000, 100000}) {
            const auto lists = std::make_shared<Lists>(count, shuffled);
            const std::string of = " of " + std::to_string(count) + (shuffled ? ", unsorted" : ", sorted");
            add(
                "unite" + of, &KyScriptStudyList::unite,
                [](const Entries& a, const Entries& b, Entries& r) {
                    std::set_union(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(r),
                                   Lists::less);
                },
                lists, shuffled);
            add(
                "subtract" + of, &KyScriptStudyList::subtract,
                [](const Entries& a, const Entries& b, Entries& r) {
                    std::set_difference(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(r),
                                        Lists::less);
                },
                lists, shuffled);
            add(
                "intersect" + of, &KyScriptStudyList::intersect,
                [](const Entries& a, const Entries& b, Entries& r) {
                    std::set_intersection(a.begin(), a.end(), b.begin(), b.end(), std::back_inserter(r),
                                          Lists::less);
                },
                lists, shuffled);
        }
    }
    return runWithRatios(argc, argv);
}
