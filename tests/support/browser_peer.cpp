// The other end of a browser's pipe, for tests: a program that does what its arguments and orders tell it to.
// Without Qt, and with a view of its own of the protocol. It ends when the pipe does, and after a minute
// anyway.
//
//   --named-pipe=NAME     the pipe to connect to; of several the last one counts
//   --log=FILE            (or KY_BROWSER_LOG in the environment) what comes through the pipe goes to FILE,
//   its arguments to FILE.args, its id to FILE.pid
//   --control=PATH        a socket from which it takes orders, and which it answers by "ok", a line each
//   --exit=CODE           ends at once
//   --hold=FILE           connects only when FILE has come into being
//   --leave               ends as soon as it has connected
//   --fork                leaves the connection to a child, and ends well
//   --twice               connects a second time
//   --hangup              closes the pipe and stays
//   --deaf                reads nothing from the pipe
//   --stay                stays when the pipe ends
//   --answer=TEXT         what it sends for each "ISHIDDEN;"
//
// Orders: "send TEXT" (with \n for the end of a write, \m for a megabyte of x), "exit CODE", and
// anything else for an answer.

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

namespace {

constexpr unsigned LongestLife = 60;
constexpr std::size_t Megabyte = 1 << 20;

std::map<std::string, std::string> sOptions;

bool has(const std::string& inName)
{
    return sOptions.count(inName) != 0;
}

int connectTo(const std::string& inPath)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (inPath.size() >= sizeof address.sun_path)
        return -1;
    std::strcpy(address.sun_path, inPath.c_str());
    const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
    if (connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
        return -1;
    return fd;
}

std::string pipePath()
{
    const char* folder = std::getenv("TMPDIR");
    return std::string(folder ? folder : "/tmp") + "/" + sOptions["named-pipe"];
}

void append(const std::string& inFile, const std::string& inText)
{
    const int fd = open(inFile.c_str(), O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0600);
    const char* text = inText.data();
    for (std::size_t rest = inText.size(); rest > 0;) {
        const ssize_t written = write(fd, text, rest);
        if (written <= 0)
            break;
        text += written;
        rest -= std::size_t(written);
    }
    close(fd);
}

/// Each write is one message.
void sendText(int inFd, std::string inText)
{
    for (std::size_t at; (at = inText.find("\\m")) != std::string::npos;)
        inText.replace(at, 2, std::string(Megabyte, 'x'));
    std::size_t start = 0;
    while (start < inText.size()) {
        const std::size_t end = std::min(inText.find("\\n", start), inText.size());
        const char* text = inText.data() + start;
        for (std::size_t rest = end - start; rest > 0;) {
            const ssize_t written = send(inFd, text, rest, MSG_NOSIGNAL);
            if (written <= 0)
                return;
            text += written;
            rest -= std::size_t(written);
        }
        start = end + 2;
    }
}

class Peer
{
public:
    Peer(int inPipe, int inControl)
        : mPipe(inPipe)
        , mControl(inControl)
    {}

    int run()
    {
        for (;;) {
            pollfd ends[2] = {{has("deaf") ? -1 : mPipe, POLLIN, 0}, {mControl, POLLIN, 0}};
            if (poll(ends, 2, -1) < 0)
                return 1;
            if (ends[0].revents != 0)
                readPipe();
            if (ends[1].revents != 0)
                readOrders();
            if (mIsOver)
                return mExitCode;
        }
    }

private:
    void readPipe()
    {
        char bytes[65536];
        const ssize_t count = read(mPipe, bytes, sizeof bytes);
        if (count <= 0) {
            mPipe = -1;
            mIsOver = !has("stay");
            return;
        }
        const std::string text(bytes, std::size_t(count));
        append(sOptions["log"], text);
        mCommand += text;
        for (std::size_t end; (end = mCommand.find(';')) != std::string::npos; mCommand.erase(0, end + 1)) {
            if (has("answer") && mCommand.compare(0, end, "ISHIDDEN") == 0)
                sendText(mPipe, sOptions["answer"]);
        }
    }

    void readOrders()
    {
        char bytes[65536];
        const ssize_t count = read(mControl, bytes, sizeof bytes);
        if (count <= 0) {
            mControl = -1;
            return;
        }
        mOrders.append(bytes, std::size_t(count));
        for (std::size_t end; (end = mOrders.find('\n')) != std::string::npos; mOrders.erase(0, end + 1)) {
            follow(mOrders.substr(0, end));
            sendText(mControl, std::string("ok\n"));
        }
    }

    void follow(const std::string& inOrder)
    {
        if (inOrder.compare(0, 5, "send ") == 0)
            sendText(mPipe, inOrder.substr(5));
        else if (inOrder.compare(0, 5, "exit ") == 0) {
            mIsOver = true;
            mExitCode = std::atoi(inOrder.c_str() + 5);
        }
    }

    int mPipe;
    int mControl;
    std::string mCommand;
    std::string mOrders;
    bool mIsOver = false;
    int mExitCode = 0;
};

void readOptions(const std::vector<std::string>& inArguments)
{
    for (const std::string& argument : inArguments) {
        const std::size_t equals = argument.find('=');
        if (argument.compare(0, 2, "--") == 0)
            sOptions[argument.substr(2, equals == std::string::npos ? equals : equals - 2)] =
                equals == std::string::npos ? std::string() : argument.substr(equals + 1);
    }
}

void tellOfStart(const std::vector<std::string>& inArguments)
{
    std::string text = "start\n";
    for (const std::string& argument : inArguments)
        text += argument + '\n';
    append(sOptions["log"] + ".args", text);
    append(sOptions["log"] + ".pid", std::to_string(getpid()) + '\n');
}

} // namespace

int main(int argc, char** argv)
{
    alarm(LongestLife);
    const std::vector<std::string> arguments(argv + 1, argv + argc);
    if (const char* log = std::getenv("KY_BROWSER_LOG"))
        sOptions["log"] = log;
    readOptions(arguments);
    tellOfStart(arguments);
    if (has("exit"))
        return std::atoi(sOptions["exit"].c_str());
    if (has("fork") && fork() != 0)
        return 0;
    while (has("hold") && !std::filesystem::exists(sOptions["hold"]))
        usleep(2000);
    const int control = connectTo(sOptions["control"]);
    const int pipe = connectTo(pipePath());
    if (pipe < 0)
        return 1;
    if (has("twice"))
        connectTo(pipePath());
    if (has("leave"))
        return 0;
    if (has("hangup")) {
        close(pipe);
        return Peer(-1, control).run();
    }
    return Peer(pipe, control).run();
}
