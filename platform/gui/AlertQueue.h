#pragma once

#include "platform/Error.h"

#include <QMessageBox>
#include <QPointer>
#include <QString>

#include <deque>
#include <vector>

class QWidget;

/// Plain text.
struct AlertText
{
    QString title;
    QString text;
};

/// Shows the alerts of one window one after another, each until its "OK" is pressed. An error that is already shown or
/// queued is not shown again. The window must outlive the queue. Main thread only.
class AlertQueue final : public QObject
{
    Q_OBJECT

public:
    explicit AlertQueue(QWidget* window);
    Q_DISABLE_COPY(AlertQueue)
    /// Closes the shown alert; queued ones are dropped.
    ~AlertQueue() override;

    /// Shows the error's text, and its detail below. With a topic, a button asks for help about it.
    void presentError(const Error& error, const QString& helpTopic = {});

    /// Not shown again when it is the last alert of the queue.
    void presentMessage(const QString& title, const QString& text);
    /// The same with a warning after it.
    void presentMessageThenWarning(const AlertText& message, const AlertText& warning);

Q_SIGNALS:
    void helpRequested(const QString& topic);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Alert
    {
        QMessageBox::Icon icon;
        QString title;
        QString text;
        QString detail;    // shown below the text; may be empty
        QString helpTopic; // empty when there is no help

        friend bool operator==(const Alert&, const Alert&) = default;
    };

    void appendUnlessLast(const std::vector<Alert>& alerts);
    void append(const std::vector<Alert>& alerts);
    void showFirstOnceWindowIsPlaced();
    void showFirst();
    void addHelpButton(const QString& topic);
    void removeFirst();

    QWidget* m_window;
    // The first one is shown.
    std::deque<Alert> m_alerts;
    QPointer<QMessageBox> m_box;
};
