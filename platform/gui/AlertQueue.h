#pragma once

#include "platform/Error.h"

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QString>

#include <deque>
#include <vector>

class QWidget;

/// What an alert says; never markup.
struct AlertText
{
    QString title;
    QString text;
};

/// The alerts of one window, shown over it one after another, each until its "OK" is pressed. They never stack up: an
/// error that is shown or waits already is not shown again. Main thread only; the window must outlive the queue.
class AlertQueue final : public QObject
{
    Q_OBJECT

public:
    explicit AlertQueue(QWidget* window);
    AlertQueue(const AlertQueue&) = delete;
    AlertQueue& operator=(const AlertQueue&) = delete;
    /// Closes the alert that is shown; those that wait are dropped.
    ~AlertQueue() override;

    /// The standard error alert: the error's text as it stands, and its detail below.
    void presentError(const Error& error);

    /// An alert with a title and a text; not shown again when it is the last one already.
    void presentMessage(const QString& title, const QString& text);
    /// The same, and once it is closed a warning that puts it right; not shown again when they are the last two
    /// already.
    void presentMessageThenWarning(const AlertText& message, const AlertText& warning);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Alert
    {
        QMessageBox::Icon icon;
        QString title;
        QString text;
        QString detail; // in smaller letters below it, if any

        friend bool operator==(const Alert&, const Alert&) = default;
    };

    [[nodiscard]] bool endsWith(const std::vector<Alert>& alerts) const;
    void append(const std::vector<Alert>& alerts);
    void showFirstOnceWindowIsPlaced();
    void showFirst();
    void removeFirst();

    QWidget* m_window;
    // The first one is shown, the others wait.
    std::deque<Alert> m_alerts;
    QPointer<QMessageBox> m_box;
};
