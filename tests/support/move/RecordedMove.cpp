#include "tests/support/move/RecordedMove.h"

using namespace Qt::StringLiterals;

namespace {

std::expected<void, QString> endOf(const std::optional<QString>& failure)
{
    if (failure)
        return std::unexpected(*failure);
    return {};
}

QStringList wordsOf(const MoveCommand& command)
{
    return QStringList(command.program) + command.arguments;
}

} // namespace

void RecordedMove::note(const QString& operation, const QStringList& details)
{
    record.append((QStringList(operation) + details).join(" | "_L1));
}

bool RecordedMove::isQuestionSuppressed()
{
    note(u"suppressed?"_s);
    return suppressed;
}

void RecordedMove::suppressQuestion()
{
    note(u"suppress"_s);
}

MoveOperations::ItemFacts RecordedMove::factsOf(const QString& path)
{
    note(u"facts?"_s, {path});
    return facts.value(path, ItemFacts{false, false, false});
}

QStringList RecordedMove::entriesOf(const QString& folder)
{
    note(u"entries?"_s, {folder});
    return entries.value(folder);
}

QString RecordedMove::resolvingSymbolicLinks(const QString& path)
{
    note(u"resolve"_s, {path});
    return links.value(path, path);
}

std::optional<MoveOperations::Volume> RecordedMove::volumeOf(const QString& folder)
{
    note(u"volume?"_s, {folder});
    return volume;
}

std::expected<void, QString> RecordedMove::copyItem(const QString& source, const QString& destination)
{
    note(u"copy"_s, {source, destination});
    return endOf(copyFailure);
}

std::expected<void, QString> RecordedMove::removeItem(const QString& path)
{
    note(u"remove"_s, {path});
    return endOf(removeFailure);
}

bool RecordedMove::trashItem(const QString& path)
{
    note(u"trash"_s, {path});
    return trashes;
}

bool RecordedMove::recycleItem(const QString& name, const QString& parentFolder)
{
    note(u"recycle"_s, {name, parentFolder});
    return recycles;
}

QByteArray RecordedMove::mountedImages()
{
    note(u"images?"_s);
    return images;
}

QStringList RecordedMove::runningBundles()
{
    note(u"running?"_s);
    return running;
}

std::optional<int> RecordedMove::run(const MoveCommand& command)
{
    note(u"run"_s, wordsOf(command));
    return 0;
}

void RecordedMove::start(const MoveCommand& command)
{
    note(u"start"_s, wordsOf(command));
}

bool RecordedMove::isApplicationActive()
{
    note(u"active?"_s);
    return active;
}

void RecordedMove::activateApplication()
{
    note(u"activate"_s);
}

MoveOperations::Answer RecordedMove::ask(const MoveQuestion& asked)
{
    note(u"ask"_s);
    question = asked;
    return answer;
}

void RecordedMove::showAlert(const QString& title)
{
    note(u"alert"_s, {title});
}

MoveOperations::Right RecordedMove::requestRight()
{
    note(u"request"_s);
    return right;
}

std::optional<int> RecordedMove::runAuthorized(const MoveCommand& command)
{
    note(u"run authorized"_s, wordsOf(command));
    return authorizedEnds.isEmpty() ? 0 : authorizedEnds.takeFirst();
}

void RecordedMove::freeAuthorization()
{
    note(u"free authorization"_s);
}

void RecordedMove::log(LogLevel level, const QString& line)
{
    const QStringList levels{u"info"_s, u"warning"_s, u"error"_s};
    note(u"log "_s + levels.at(static_cast<qsizetype>(level)), {line});
}
