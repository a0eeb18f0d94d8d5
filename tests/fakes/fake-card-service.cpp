// A card service program that behaves as its arguments say:
//   --record FILE            writes its process number, the requests (as JSON) and the end of its input to this file,
//                            which exists, a line each
//   --do COMMAND BEHAVIOUR   how it answers a command ("any" stands for all); the behaviours are in the table below
//   --at-start BEHAVIOUR     what it does before it reads anything
//   --set COMMAND KEY TEXT   a text in the reply to a command; --unset COMMAND KEY leaves a field out
//   --number COMMAND KEY N, --list COMMAND KEY A|B|C, --bytes COMMAND KEY HEX   the same with other types
//   --odd-list COMMAND KEY   an array of a number, a text, null and another text
//   --state COMMAND A|B      after the reply to COMMAND it reports these states of its reader
//   --reverse N              it keeps its replies until it has N, and then sends them in reverse order
//   --ignore-end             it keeps running when its input ends
//   --starts N,N             it follows the arguments at these starts with that record, counted from 1; at the others
//                            it replies correctly
#include "card/wire/ServiceMessage.h"
#include "card/wire/ServiceVocabulary.h"

#include <QCborArray>
#include <QFile>
#include <QHash>
#include <QJsonDocument>
#include <QJsonObject>
#include <QList>
#include <QStringList>

#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <functional>
#include <thread>

#include <sys/resource.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

constexpr auto slowness = std::chrono::milliseconds(100);

void writeAll(int descriptor, QByteArrayView bytes)
{
    while (!bytes.isEmpty()) {
        const ssize_t count = write(descriptor, bytes.data(), static_cast<std::size_t>(bytes.size()));
        if (count <= 0)
            _exit(3);
        bytes = bytes.sliced(count);
    }
}

void say(const QByteArray& bytes)
{
    writeAll(STDOUT_FILENO, bytes);
}

void sayToErrors(const QByteArray& bytes)
{
    writeAll(STDERR_FILENO, bytes);
}

QByteArray unsolicited()
{
    return encodeServiceMessage({.number = 0, .body = QCborMap{{u"Event"_s, u"something"_s}}});
}

QByteArray hugeItem()
{
    const QCborMap body{{u"Status"_s, u"success"_s}, {u"Vitale"_s, QString(5 * 1024 * 1024, u'x')}};
    return encodeServiceMessage({.number = 1, .body = body});
}

[[noreturn]] void waitForDeath()
{
    while (true)
        pause();
}

[[noreturn]] void floodErrors()
{
    const QByteArray wave = QByteArray("bruit\n").repeated(1000);
    while (true)
        sayToErrors(wave);
}

/// Writes lines that fit into a pipe but need more than one read, and one line without an end.
void sayLastWords()
{
    sayToErrors(QByteArray("une ligne de quarante-neuf lettres, ou presque...\n").repeated(1000) + "derniers mots");
}

/// Starts a child process that uses the pipes. It ends by itself, later than a test needs it.
void leaveAChild(void (*work)())
{
    constexpr unsigned childLife = 20; // seconds
    if (fork() == 0) {
        alarm(childLife);
        work();
    }
}

/// The behaviours: what each does with the reply (empty at start).
using Behaviour = std::function<void(const QByteArray& reply)>;

const QHash<QString, Behaviour>& behaviours()
{
    static const QHash<QString, Behaviour> table{
        {u"normal"_s, say},
        {u"silent"_s, [](const QByteArray&) {}},
        {u"slow"_s,
         [](const QByteArray& reply) {
             std::this_thread::sleep_for(slowness);
             say(reply);
         }},
        {u"in-pieces"_s,
         [](const QByteArray& reply) {
             for (const char byte : reply)
                 say(QByteArray(1, byte));
         }},
        {u"twice"_s, [](const QByteArray& reply) { say(reply + reply); }},
        {u"unknown-reply"_s,
         [](const QByteArray& reply) { say(encodeServiceMessage({.number = 4711, .body = QCborMap{}}) + reply); }},
        {u"unknown-reply-often"_s,
         [](const QByteArray& reply) {
             say(encodeServiceMessage({.number = 4711, .body = QCborMap{}}).repeated(100'000) + reply);
         }},
        {u"garbage"_s, [](const QByteArray&) { say("Segmentation fault\n"); }},
        {u"half"_s, [](const QByteArray& reply) { say(reply.first(reply.size() / 2)); }},
        {u"huge"_s, [](const QByteArray&) { say(hugeItem()); }},
        {u"crash"_s, [](const QByteArray&) { std::raise(SIGKILL); }},
        {u"segfault"_s,
         [](const QByteArray&) {
             const rlimit noCore{};
             setrlimit(RLIMIT_CORE, &noCore);
             std::signal(SIGSEGV, SIG_DFL);
             std::raise(SIGSEGV);
         }},
        {u"crash-midway"_s,
         [](const QByteArray& reply) {
             say(reply.first(reply.size() / 2));
             std::raise(SIGKILL);
         }},
        {u"crash-after"_s,
         [](const QByteArray& reply) {
             say(reply);
             std::raise(SIGKILL);
         }},
        {u"exit"_s, [](const QByteArray&) { _exit(0); }},
        {u"exit-with-3"_s, [](const QByteArray&) { _exit(3); }},
        {u"chatter"_s, [](const QByteArray& reply) { say("Lecteur branché\n" + reply); }},
        {u"chatter-on-errors"_s,
         [](const QByteArray& reply) {
             sayToErrors("Lecteur branché\nligne\x1b[31m rouge\n" + QByteArray(5000, 'x') + "\nsans fin de ligne");
             say(reply);
         }},
        {u"unsolicited"_s, [](const QByteArray& reply) { say(unsolicited() + reply); }},
        {u"unsolicited-null"_s,
         [](const QByteArray& reply) { say(encodeServiceMessage({.number = 0, .body = std::nullopt}) + reply); }},
        {u"burst"_s, [](const QByteArray& reply) { say(unsolicited().repeated(100'000) + reply); }},
        {u"flood"_s,
         [](const QByteArray&) {
             const QByteArray wave = unsolicited().repeated(1000);
             while (true)
                 say(wave);
         }},
        {u"flood-on-errors"_s,
         [](const QByteArray& reply) {
             say(reply);
             floodErrors();
         }},
        {u"last-words"_s,
         [](const QByteArray&) {
             sayLastWords();
             _exit(0);
         }},
        {u"last-words-and-leave-a-child"_s,
         [](const QByteArray&) {
             leaveAChild(waitForDeath);
             sayLastWords();
             _exit(0);
         }},
        {u"die-and-leave-a-noisy-child"_s,
         [](const QByteArray&) {
             leaveAChild(floodErrors);
             _exit(0);
         }},
        {u"close-output"_s,
         [](const QByteArray&) {
             close(STDOUT_FILENO);
             waitForDeath();
         }},
        {u"close-input"_s,
         [](const QByteArray&) {
             close(STDIN_FILENO);
             waitForDeath();
         }},
        {u"die-and-leave-a-child"_s,
         [](const QByteArray&) {
             leaveAChild(waitForDeath);
             _exit(0);
         }},
        {u"stop-reading"_s, [](const QByteArray&) { waitForDeath(); }},
    };
    return table;
}

/// What the arguments ask for.
struct Script
{
    QFile record;
    QHash<QString, QString> behaviours; // by command
    QHash<QString, QCborMap> replies;   // by command
    QHash<QString, QStringList> states; // reported after the reply, by command
    QString atStart;
    int reverse = 0;
    QStringList starts; // empty: all starts
    bool ignoresEnd = false;

    /// How often a service was started with that record before.
    int earlierStarts() const
    {
        QFile notes(record.fileName());
        return notes.open(QIODevice::ReadOnly) ? static_cast<int>(notes.readAll().count("pid ")) : 0;
    }

    void note(const QByteArray& line)
    {
        if (record.isOpen()) {
            record.write(line + '\n');
            record.flush();
        }
    }
};

void setStandardReplies(Script& script)
{
    for (const auto command : {ServiceWord::init, ServiceWord::readersList, ServiceWord::setReaders,
                               ServiceWord::informationsCommand, ServiceWord::vitaleRead})
        script.replies[command] = {{ServiceWord::status, ServiceWord::success}};
    script.replies[ServiceWord::init].insert(ServiceWord::embedded, u"true"_s);
    script.replies[ServiceWord::readersList].insert(ServiceWord::readers, QCborArray{u"Feitian SCR301"_s});
    script.replies[ServiceWord::informationsCommand].insert(
        ServiceWord::informations,
        u"<informations><apiLecVitale><version>1.2.3</version></apiLecVitale></informations>"_s);
    script.replies[ServiceWord::vitaleRead].insert(
        ServiceWord::vitale,
        u"<T_AsnDonneesVitale><tech><numSerie>42</numSerie></tech><listeBenef><T_AsnBeneficiaire><ident><nomUsuel>"
        "SPECIMEN</nomUsuel></ident></T_AsnBeneficiaire></listeBenef></T_AsnDonneesVitale>"_s);
    script.replies[ServiceWord::vitaleRead].insert(ServiceWord::fundCodeLibelle, u"CPAM SPECIMEN"_s);
}

/// Removes one option and its values from the list. False when the option is unknown or invalid.
bool takeOption(QStringList& arguments, Script& script)
{
    const QString option = arguments.takeFirst();
    if (option == u"--ignore-end") {
        script.ignoresEnd = true;
        return true;
    }
    const QString first = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (option == u"--record") {
        script.record.setFileName(first);
        return script.record.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::ExistingOnly);
    }
    if (option == u"--at-start") {
        script.atStart = first;
        return behaviours().contains(first);
    }
    if (option == u"--reverse") {
        script.reverse = first.toInt();
        return script.reverse > 0;
    }
    if (option == u"--starts") {
        script.starts = first.split(u',', Qt::SkipEmptyParts);
        return !script.starts.isEmpty();
    }
    const QString second = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (option == u"--do") {
        script.behaviours.insert(first, second);
        return second == u"null" || behaviours().contains(second);
    }
    if (option == u"--state") {
        script.states.insert(first, second.split(u'|'));
        return true;
    }
    QCborMap& reply = script.replies[first];
    if (option == u"--unset") {
        reply.remove(second);
        return true;
    }
    if (option == u"--odd-list") {
        reply.insert(second, QCborArray{7, u"A"_s, QCborValue::Null, u"Feitian SCR301"_s});
        return true;
    }
    const QString third = arguments.isEmpty() ? QString() : arguments.takeFirst();
    if (option == u"--set")
        reply.insert(second, third);
    else if (option == u"--number")
        reply.insert(second, third.toLongLong());
    else if (option == u"--bytes")
        reply.insert(second, QByteArray::fromHex(third.toLatin1()));
    else if (option == u"--list")
        reply.insert(second, QCborArray::fromStringList(third.split(u'|', Qt::SkipEmptyParts)));
    else
        return false;
    return true;
}

void answer(Script& script, const ServiceMessage& request, QList<QByteArray>& held)
{
    const QCborMap fields = request.body.value_or(QCborMap());
    script.note(QJsonDocument(fields.toJsonObject()).toJson(QJsonDocument::Compact));

    const QString command = fields.value(ServiceWord::command).toString();
    const QString behaviour = script.behaviours.value(command, script.behaviours.value(u"any"_s, u"normal"_s));
    const bool isNull = behaviour == u"null";
    const std::optional<QCborMap> body = isNull ? std::nullopt : std::optional(script.replies.value(command));
    const QByteArray reply = encodeServiceMessage({.number = request.number, .body = body});
    if (script.reverse > 0) {
        held.prepend(reply);
        if (held.size() == script.reverse)
            say(std::exchange(held, {}).join());
    } else {
        behaviours().value(isNull ? u"normal"_s : behaviour)(reply);
    }
    for (const QString& state : script.states.value(command))
        say(encodeServiceMessage({.number = 0, .body = QCborMap{{u"Event"_s, u"reader"_s}, {u"State"_s, state}}}));
}

void serve(Script& script)
{
    ServiceMessageReader reader;
    QList<QByteArray> held;
    std::array<char, 65536> slice{};
    while (true) {
        const ssize_t count = read(STDIN_FILENO, slice.data(), slice.size());
        if (count <= 0)
            return;
        reader.append({slice.data(), count});
        while (true) {
            const auto request = reader.next();
            if (!request)
                _exit(4);
            if (!*request)
                break;
            answer(script, **request, held);
        }
    }
}

} // namespace

int main(int argc, char* argv[])
{
    Script script;
    setStandardReplies(script);
    QStringList arguments;
    for (int index = 1; index < argc; ++index)
        arguments.append(QString::fromLocal8Bit(argv[index]));
    while (!arguments.isEmpty()) {
        if (!takeOption(arguments, script)) {
            sayToErrors("fake-card-service: bad argument\n");
            return 2;
        }
    }
    if (!script.starts.isEmpty() && !script.starts.contains(QString::number(script.earlierStarts() + 1))) {
        script.behaviours.clear();
        script.states.clear();
        setStandardReplies(script);
    }
    script.note("pid " + QByteArray::number(getpid()));
    if (!script.atStart.isEmpty())
        behaviours().value(script.atStart)({});
    serve(script);
    script.note("end of input");
    if (script.ignoresEnd)
        waitForDeath();
    return 0;
}
