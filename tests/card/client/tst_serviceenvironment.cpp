#include "card/client/ServiceProcess.h"
#include "tests/common/RunnableTests.h"
#include "tests/common/TestCase.h"

#include <QTest>

#include <array>
#include <map>

#include <poll.h>
#include <stdlib.h> // NOLINT(modernize-deprecated-headers): setenv is POSIX's
#include <unistd.h>

namespace {

using Variables = std::map<QByteArray, QByteArray>;

/// The standard output of a program.
QByteArray outputOf(const ServiceProcess& process)
{
    QByteArray output;
    std::array<char, 4096> slice{};
    while (true) {
        pollfd ready{.fd = process.standardOutput(), .events = POLLIN, .revents = 0};
        if (::poll(&ready, 1, -1) < 0)
            continue;
        const ssize_t count = ::read(process.standardOutput(), slice.data(), slice.size());
        if (count <= 0)
            return output;
        output.append(slice.data(), count);
    }
}

/// The environment of a program that is started as a card service.
Variables environmentOfAService()
{
    const auto process = ServiceProcess::start({"/usr/bin/env", "-0"});
    Variables variables;
    if (!process)
        return variables;
    for (const QByteArray& variable : outputOf(*process).split('\0')) {
        const qsizetype end = variable.indexOf('=');
        if (end > 0)
            variables[variable.first(end)] = variable.sliced(end + 1);
    }
    return variables;
}

} // namespace

class tst_ServiceEnvironment : public TestCase
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase()
    {
        QCOMPARE(::clearenv(), 0);
        for (const char* name : {"HOME", "PATH", "LANG", "LC_ALL", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS",
                                 "PCSCLITE_CSOCK_NAME", "DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY",
                                 "XAUTHORITY", "SSH_AUTH_SOCK", "XDG_RUNTIME_DIR", "LC", "HOMEPAGE"})
            QCOMPARE(::setenv(name, "a value = of its own", 1), 0);
    }

    void aServiceGetsTheVariablesForLanguageFoldersAndPcsc()
    {
        const Variables variables = environmentOfAService();
        for (const char* name :
             {"HOME", "PATH", "LANG", "LC_ALL", "XDG_CONFIG_HOME", "XDG_CONFIG_DIRS", "PCSCLITE_CSOCK_NAME"})
            QVERIFY2(variables.contains(name) && variables.at(name) == "a value = of its own", name);
    }

    void aServiceGetsNoOtherVariables()
    {
        const Variables variables = environmentOfAService();
        for (const char* name : {"DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "WAYLAND_DISPLAY", "XAUTHORITY",
                                 "SSH_AUTH_SOCK", "XDG_RUNTIME_DIR", "LC", "HOMEPAGE"})
            QVERIFY2(!variables.contains(name), name);
        QCOMPARE(variables.size(), 7U);
    }
};

template class RunnableTests<tst_ServiceEnvironment, void>;
#include "tst_serviceenvironment.moc"
