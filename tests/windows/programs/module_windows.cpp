// The half of the module's process that knows Windows and nothing of Qt.

#include "module.h"

#include <rnwin/RnWin32Com.h>
#include <rnwin/RnWin32Windows.h>

#ifndef NOMINMAX
#define NOMINMAX
#endif
#include <windows.h>

namespace {

struct Arguments
{
    int count;
    char** texts;
    int status;
};

DWORD WINAPI run(void* ioArguments)
{
    auto& arguments = *static_cast<Arguments*>(ioArguments);
    RnWin32Windows windows;
    RnWin32Com com;
    arguments.status = runScripts(arguments.count, arguments.texts);
    return 0;
}

} // namespace

/// The first thread has a stack of 1 MB, too small for the script engine to see the end of.
int main(int argc, char** argv)
{
    Arguments arguments{argc, argv, 1};
    const HANDLE thread =
        CreateThread(nullptr, SIZE_T(64) << 20, run, &arguments, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    WaitForSingleObject(thread, INFINITE);
    return arguments.status;
}
