#pragma once

#include "KyTestMain.h"

#include <QtTest>

#include <memory>

/// The main function of a test program whose test object is a \a Class; see KyTestMain.
#define KY_TEST_MAIN(Class)                                                                                  \
    int main(int argc, char** argv)                                                                          \
    {                                                                                                        \
        QTEST_SET_MAIN_SOURCE_PATH                                                                           \
        return KyTestMain::run(argc, argv, [] { return std::make_unique<Class>(); });                        \
    }
