#pragma once

#include <QObject>
#include <QString>

#include <atomic>

/// What every class of tests is. A warning or a critical message fails the test in which it comes, unless the test has
/// announced it: QTest::ignoreMessage(QtWarningMsg, …), for a critical one too.
class TestCase : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    // Not initTestCase() nor init(), which the classes have of their own: QtTest would then call theirs alone.
    void initTestCase_data();
};

/// Announces messages of which any number may come while it lives, where QTest::ignoreMessage() announces one. There is
/// one at a time.
class AnnouncedMessages
{
public:
    /// How each of them begins.
    explicit AnnouncedMessages(QString beginning);
    ~AnnouncedMessages();
    Q_DISABLE_COPY_MOVE(AnnouncedMessages)

    /// How many have come.
    [[nodiscard]] int count() const { return m_count; }

private:
    friend class TestMessages;

    QString m_beginning;
    std::atomic<int> m_count = 0;
};
