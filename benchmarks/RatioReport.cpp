#include "RatioReport.h"

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

namespace {

constexpr const char* Yardstick = "/yardstick";

/// Gathers the times of all repetitions and prints one line for each pair.
class RatioReporter final : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }

    void ReportRuns(const std::vector<Run>& inRuns) override
    {
        for (const Run& run : inRuns) {
            if (run.run_type != Run::RT_Iteration)
                continue;
            const std::string& name = run.run_name.function_name;
            if (mTimes.find(name) == mTimes.end())
                mNames.push_back(name);
            mTimes[name].push_back(run.GetAdjustedRealTime());
        }
    }

    void Finalize() override
    {
        std::printf("%-52s %12s %12s %7s %6s\n", "subject", "time/us", "yardstick/us", "ratio", "goal");
        std::sort(mNames.begin(), mNames.end());
        for (const std::string& name : mNames) {
            const auto yardstick = mTimes.find(withoutGoal(name) + Yardstick);
            if (yardstick != mTimes.end())
                print(name, median(mTimes[name]), median(yardstick->second));
        }
    }

private:
    static std::string withoutGoal(const std::string& inName) { return inName.substr(0, inName.find("<=")); }

    static double median(std::vector<double>& ioTimes)
    {
        std::nth_element(ioTimes.begin(), ioTimes.begin() + long(ioTimes.size() / 2), ioTimes.end());
        return ioTimes[ioTimes.size() / 2];
    }

    static void print(const std::string& inName, double inTime, double inYardstick)
    {
        const auto goal = inName.find("<=");
        std::printf("%-52s %12.2f %12.2f %7.3f %6s\n", withoutGoal(inName).c_str(), inTime / 1000,
                    inYardstick / 1000, inTime / inYardstick,
                    goal == std::string::npos ? "" : inName.substr(goal + 2).c_str());
    }

    std::vector<std::string> mNames;
    std::map<std::string, std::vector<double>> mTimes;
};

} // namespace

int runWithRatios(int inArgc, char** inArgv)
{
    static char interleave[] = "--benchmark_enable_random_interleaving=true";
    static char repetitions[] = "--benchmark_repetitions=11";
    static char minTime[] = "--benchmark_min_time=0.1";
    std::vector<char*> arguments = {inArgv[0], interleave, repetitions, minTime};
    arguments.insert(arguments.end(), inArgv + 1, inArgv + inArgc);
    int count = int(arguments.size());
    benchmark::Initialize(&count, arguments.data());
    RatioReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    benchmark::Shutdown();
    return 0;
}
