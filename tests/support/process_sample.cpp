// A program for tests to start. Without Qt, so that it starts at once; ends by itself after a minute.
//
//   exit CODE              ends with this exit status
//   crash                  ends by a signal
//   write FILE [ARG...]    writes its folder and its arguments, a line each, to FILE
//   wait FILE [ARG...]     writes its process id to FILE, and ends when FILE has gone
//   read FILE              waits for the end of its input, then writes the number of bytes to FILE
//   print BYTES FILE       prints BYTES to the output and to the error output, then writes to FILE

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <thread>
#include <vector>

#include <unistd.h>

namespace {

constexpr unsigned LongestLife = 60;

/// FILE comes into being with its whole content.
void write(const std::string& inFile, const std::string& inText)
{
    {
        std::ofstream stream(inFile + ".part", std::ios::binary);
        stream << inText;
    }
    std::filesystem::rename(inFile + ".part", inFile);
}

int print(unsigned long long inBytes, const std::string& inFile)
{
    const std::string block(1 << 16, 'x');
    for (unsigned long long printed = 0; printed < inBytes; printed += block.size()) {
        if (std::fwrite(block.data(), 1, block.size(), stdout) != block.size())
            return 1;
        if (std::fwrite(block.data(), 1, block.size(), stderr) != block.size())
            return 1;
    }
    write(inFile, "printed");
    return 0;
}

int readInput(const std::string& inFile)
{
    unsigned long long count = 0;
    while (std::fgetc(stdin) != EOF)
        ++count;
    write(inFile, std::to_string(count));
    return 0;
}

int waitForRemoval(const std::string& inFile)
{
    write(inFile, std::to_string(getpid()));
    while (std::filesystem::exists(inFile))
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    return 0;
}

int writeArguments(const std::vector<std::string>& inArguments)
{
    std::string text = std::filesystem::current_path().string() + '\n';
    for (std::size_t i = 2; i < inArguments.size(); ++i)
        text += inArguments[i] + '\n';
    write(inArguments[1], text);
    return 0;
}

} // namespace

int main(int argc, char** argv)
{
    alarm(LongestLife);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (arguments.empty())
        return 0;
    if (arguments[0] == "crash")
        std::abort();
    if (arguments.size() > 1 && arguments[0] == "exit")
        return std::atoi(arguments[1].c_str());
    if (arguments.size() > 1 && arguments[0] == "write")
        return writeArguments(arguments);
    if (arguments.size() > 1 && arguments[0] == "wait")
        return waitForRemoval(arguments[1]);
    if (arguments.size() > 1 && arguments[0] == "read")
        return readInput(arguments[1]);
    if (arguments.size() > 2 && arguments[0] == "print")
        return print(std::stoull(arguments[1]), arguments[2]);
    return 2;
}
