#pragma once

#include <QString>

/// What the trial of a library tells its parent process, one line each.
struct TrialNote
{
    enum class Kind : char
    {
        Call = 'c',   // a call begins
        Read = 'l',   // a call that reads a card begins
        Return = 'r', // the call has returned
        Fault = 'd',
        Remark = 'n',
        Fact = 'i' // the place is the label
    };

    Kind kind = Kind::Return;
    QString place;
    QString text;
};

[[nodiscard]] QByteArray encodeTrialNote(const TrialNote& note);

/// Decodes a line without its end.
[[nodiscard]] TrialNote decodeTrialNote(QByteArrayView line);

/// Writes notes to a pipe. When a write fails, the process ends, because no process reads the pipe any more.
class TrialNotes
{
public:
    /// The descriptor must stay open.
    explicit TrialNotes(int descriptor)
        : m_descriptor(descriptor)
    {
    }

    void write(TrialNote::Kind kind, const QString& place, const QString& text = {}) const;
    void fault(const QString& place, const QString& reason) const { write(TrialNote::Kind::Fault, place, reason); }
    void remark(const QString& text) const { write(TrialNote::Kind::Remark, {}, text); }
    void fact(const QString& label, const QString& value) const { write(TrialNote::Kind::Fact, label, value); }

private:
    int m_descriptor;
};
