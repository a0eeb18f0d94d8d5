#pragma once

#include <QAnyStringView>
#include <QByteArrayView>
#include <QString>
#include <QStringList>

#include <initializer_list>
#include <optional>

/// What the fake card service does. By default it replies correctly. The names of commands and of reply fields are
/// those of the channel. The names of behaviours are those in fake-card-service.cpp.
class FakeScript
{
public:
    /// How it answers a command; "any" stands for all commands.
    [[nodiscard]] FakeScript doing(QAnyStringView command, QAnyStringView behaviour) const
    {
        return with({"--do", command, behaviour});
    }
    /// What it does before it reads anything.
    [[nodiscard]] FakeScript startingWith(QAnyStringView behaviour) const { return with({"--at-start", behaviour}); }

    /// The card readers that it lists.
    [[nodiscard]] FakeScript readers(const QStringList& names) const
    {
        return with({"--list", "readers_list", "Readers", names.join(u'|')});
    }
    /// A list of readers with items that are not texts; its texts are "A" and "Feitian SCR301".
    [[nodiscard]] FakeScript oddReaders() const { return with({"--odd-list", "readers_list", "Readers"}); }

    /// It answers a command with an error, and with that result code if one is given.
    [[nodiscard]] FakeScript failing(QAnyStringView command, std::optional<int> result = std::nullopt) const
    {
        const FakeScript failed = text(command, "Status", "error");
        return result ? failed.number(command, "Result", *result) : failed;
    }

    // A field of the reply to a command.
    [[nodiscard]] FakeScript text(QAnyStringView command, QAnyStringView key, QAnyStringView value) const
    {
        return with({"--set", command, key, value});
    }
    [[nodiscard]] FakeScript number(QAnyStringView command, QAnyStringView key, int value) const
    {
        return with({"--number", command, key, QString::number(value)});
    }
    [[nodiscard]] FakeScript bytes(QAnyStringView command, QAnyStringView key, QByteArrayView value) const
    {
        return with({"--bytes", command, key, value.toByteArray().toHex()});
    }
    [[nodiscard]] FakeScript list(QAnyStringView command, QAnyStringView key, const QStringList& values) const
    {
        return with({"--list", command, key, values.join(u'|')});
    }
    [[nodiscard]] FakeScript without(QAnyStringView command, QAnyStringView key) const
    {
        return with({"--unset", command, key});
    }

    /// After its reply to a command it reports these states of its reader.
    [[nodiscard]] FakeScript telling(QAnyStringView command, const QStringList& states) const
    {
        return with({"--state", command, states.join(u'|')});
    }

    /// It keeps its replies until it has that many, and then sends them in reverse order.
    [[nodiscard]] FakeScript reversing(int replies) const { return with({"--reverse", QString::number(replies)}); }
    /// It keeps running when its input ends.
    [[nodiscard]] FakeScript ignoringTheEnd() const { return with({"--ignore-end"}); }
    /// It follows the script at that start only, counted from 1. At the others it replies correctly.
    [[nodiscard]] FakeScript onlyAtStart(int start) const { return with({"--starts", QString::number(start)}); }

    /// The script as arguments of the program.
    [[nodiscard]] const QStringList& arguments() const { return m_arguments; }

private:
    [[nodiscard]] FakeScript with(std::initializer_list<QAnyStringView> words) const
    {
        FakeScript longer = *this;
        for (const QAnyStringView word : words)
            longer.m_arguments.append(word.toString());
        return longer;
    }

    QStringList m_arguments;
};
