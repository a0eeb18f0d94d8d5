#pragma once

#include <QString>

/// A question with two buttons and a check box, in a window of its own.
struct QuestionAlert
{
    QString title;
    QString text;
    QString acceptText;
    /// Also the answer of Escape and of closing the window.
    QString declineText;
    /// The check box.
    QString suppressionText;
};

struct QuestionAnswer
{
    bool isAccepted;
    bool isSuppressionOn;
};

/// Whether a window of this program has the focus.
[[nodiscard]] bool isApplicationActive();

/// Asks and waits for the answer, on request in front of other programs' windows. Runs an event loop: only for the time
/// before the program has set anything up. Main thread.
[[nodiscard]] QuestionAnswer askQuestion(const QuestionAlert& alert, bool comesToTheFront);

/// Shows a title with a default button and waits for it, under the same conditions.
void showAlert(const QString& title);
