#pragma once

#include <QObject>

/// What every class of tests is. A warning or a critical message fails the test in which it comes, unless the test has
/// announced it: QTest::ignoreMessage(QtWarningMsg, …), for a critical one too.
class TestCase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Not initTestCase() nor init(), which the classes have of their own: QtTest would then call theirs alone.
    void initTestCase_data();
};
