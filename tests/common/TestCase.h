#pragma once

#include <QObject>
#include <QString>

#include <atomic>

/// The base of every class of tests. A warning or a critical message fails the running test, unless the test has
/// announced it with QTest::ignoreMessage(QtWarningMsg, …), also for a critical one.
class TestCase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // initTestCase() and init() are left to the derived classes, because QtTest would call only theirs.
    void initTestCase_data();
};

/// Announces any number of messages during its life, while QTest::ignoreMessage() announces one. Only one object may
/// exist at a time.
class AnnouncedMessages
{
public:
    /// The messages begin with this text.
    explicit AnnouncedMessages(QString beginning);
    ~AnnouncedMessages();
    Q_DISABLE_COPY_MOVE(AnnouncedMessages)

    /// The number of messages so far.
    [[nodiscard]] int count() const { return m_count; }

private:
    friend class TestMessages;

    QString m_beginning;
    std::atomic<int> m_count = 0;
};
