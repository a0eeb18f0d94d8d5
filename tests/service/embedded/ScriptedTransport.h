#pragma once

#include "service/pcsc/CardTransport.h"

#include <QList>

/// A card that gives prepared answers, one for each command.
class ScriptedTransport final : public CardTransport
{
public:
    using Answer = std::expected<QByteArray, CardFault>;

    /// Answers in hexadecimal digits, or faults.
    explicit ScriptedTransport(QList<Answer> answers)
        : m_answers(std::move(answers))
    {
    }

    std::expected<QByteArray, CardFault> transmit(QByteArrayView command) override
    {
        m_commands.append(command.toByteArray().toHex().toUpper());
        if (m_answers.isEmpty())
            return std::unexpected(CardFault::Unexpected);
        const Answer answer = m_answers.takeFirst();
        return answer ? Answer(QByteArray::fromHex(*answer)) : answer;
    }

    /// The sent commands, in hexadecimal digits.
    QList<QByteArray> commands() const { return m_commands; }

private:
    QList<Answer> m_answers;
    QList<QByteArray> m_commands;
};
