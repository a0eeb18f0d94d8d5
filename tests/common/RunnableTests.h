#pragma once

#include <QTest>

#include <type_traits>

/// Runs a class of tests; the arguments are QtTest's, the program first. Gives the number of tests that failed.
using TestRun = int (*)(int argc, char** argv);

/// Makes a class of tests one that its program runs when it is asked for by its name, in any case of letters.
/// Called while the program's constants are made. Always true.
bool addRunnableTests(const char* name, TestRun run);

/// Adds a class of tests to its program: `template class RunnableTests<tst_Name, QCoreApplication>;` Application is
/// what the tests need around them; void is nothing.
template <typename Tests, typename Application>
class RunnableTests
{
private:
    static int run(int argc, char** argv)
    {
        if constexpr (std::is_void_v<Application>) {
            Tests tests;
            return QTest::qExec(&tests, argc, argv);
        } else {
            const Application application(argc, argv);
            Tests tests;
            return QTest::qExec(&tests, argc, argv);
        }
    }

    static const bool isAdded;
};

template <typename Tests, typename Application>
const bool RunnableTests<Tests, Application>::isAdded = addRunnableTests(Tests::staticMetaObject.className(), &run);
