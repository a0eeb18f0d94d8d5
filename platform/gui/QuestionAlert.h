#pragma once

#include <QString>

/// A question with two buttons and a box to tick, shown by itself, in no window.
struct QuestionAlert
{
    QString title;
    QString text;
    /// The default button.
    QString acceptText;
    /// The button that Escape stands for, and closing the alert.
    QString declineText;
    /// The box's text.
    QString suppressionText;
};

/// What the user has answered.
struct QuestionAnswer
{
    bool isAccepted;
    bool isSuppressionOn;
};

/// Whether the user works with this program now.
[[nodiscard]] bool isApplicationActive();

/// Asks, and waits for the answer; in front of the other programs' windows when asked to. Main thread, and only where
/// nothing else can happen meanwhile: before the program has set anything up.
[[nodiscard]] QuestionAnswer askQuestion(const QuestionAlert& alert, bool comesToTheFront);

/// Shows a title with a default button, and waits for it to be pressed, under the same conditions.
void showAlert(const QString& title);
