#pragma once

#include "platform/Error.h"

#include <QMessageBox>
#include <QObject>
#include <QPointer>
#include <QString>

#include <deque>

class QWidget;

/// The alerts of one window, shown over it one after another, each until its "OK" is pressed. They never stack up: one
/// that is shown or waits already is not shown again. Main thread only; the window must outlive the queue.
class AlertQueue final : public QObject
{
    Q_OBJECT

public:
    explicit AlertQueue(QWidget* window);
    AlertQueue(const AlertQueue&) = delete;
    AlertQueue& operator=(const AlertQueue&) = delete;
    /// Closes the alert that is shown; those that wait are dropped.
    ~AlertQueue() override;

    /// The standard error alert: the error's text as it stands.
    void presentError(const Error& error);

    /// An alert with a title and a text.
    void presentMessage(const QString& title, const QString& text);

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    struct Alert
    {
        QMessageBox::Icon icon;
        QString title;
        QString text;

        friend bool operator==(const Alert&, const Alert&) = default;
    };

    void present(Alert alert);
    void showFirstOnceWindowIsPlaced();
    void showFirst();
    void removeFirst();

    QWidget* m_window;
    // The first one is shown, the others wait.
    std::deque<Alert> m_alerts;
    QPointer<QMessageBox> m_box;
};
