#pragma once

#include "service/embedded/CardContent.h"
#include "service/pcsc/CardTransport.h"

#include <functional>
#include <optional>
#include <utility>

/// A card of files with any content. Missing files are refused. It answers at once, like a T=1 card.
class FileCard final : public CardTransport
{
public:
    /// An event before a command, counted from 1: a change of the card, or a fault of the transport.
    using Event = std::function<std::optional<CardFault>(FileCard& card, int number)>;

    explicit FileCard(CardContent files, Event event = {})
        : m_files(std::move(files))
        , m_event(std::move(event))
    {
    }

    std::expected<QByteArray, CardFault> transmit(QByteArrayView command) override
    {
        ++m_commands;
        if (m_event) {
            if (const std::optional<CardFault> fault = m_event(*this, m_commands))
                return std::unexpected(*fault);
        }
        const auto instruction = static_cast<quint8>(command[1]);
        if (instruction == 0xA4)
            return command[2] == 4 ? selectApplication(command.sliced(5)) : selectFile(command.sliced(5));
        return read((static_cast<quint8>(command[2]) << 8) + static_cast<quint8>(command[3]));
    }

    /// Replaces the card by another one, on which nothing is selected.
    void swapFor(CardContent files)
    {
        m_files = std::move(files);
        m_application.reset();
        m_file.reset();
    }

    [[nodiscard]] int commands() const { return m_commands; }

private:
    QByteArray selectApplication(QByteArrayView name)
    {
        m_file.reset();
        m_application.reset();
        for (const auto& [id, content] : m_files) {
            if (id.application == name)
                m_application = id.application;
        }
        return QByteArray::fromHex(m_application ? "9000" : "6A82");
    }

    QByteArray selectFile(QByteArrayView name)
    {
        m_file.reset();
        const auto file = static_cast<quint16>((static_cast<quint8>(name[0]) << 8) + static_cast<quint8>(name[1]));
        const auto found = m_files.find({m_application.value_or(QByteArray()), file});
        if (found != m_files.end())
            m_file = found->second;
        return QByteArray::fromHex(m_file ? "9000" : "6A82");
    }

    [[nodiscard]] QByteArray read(qsizetype offset) const
    {
        if (!m_file)
            return QByteArray::fromHex("6986");
        return m_file->mid(offset, 256) + QByteArray::fromHex("9000");
    }

    CardContent m_files;
    Event m_event;
    std::optional<QByteArray> m_application;
    std::optional<QByteArray> m_file;
    int m_commands = 0;
};
